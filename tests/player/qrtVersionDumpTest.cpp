// The version line that the library writes when it is loaded.
#include "qrtVersionDump.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QProcess>
#include <QProcessEnvironment>
#include <string>

namespace QRT_0_81 {

namespace {

using ::testing::MatchesRegex;

constexpr char variable[] = "TOLLAN_DUMP_VERSION_INFO";
constexpr char hostsOutput[] = "frame 24\n";

struct Output {
    int exitStatus;
    std::string standardOutput;
    std::string standardError;
};

/// Runs a host of the player's library with the variable set to `value`, or unset for null.
Output runHost(char const* value, bool isErrorClosed = false) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(variable);
    if (value) environment.insert(variable, value);
    process.setProcessEnvironment(environment);
    const QString host = QStringLiteral(QRT_VERSION_PROBE);
    if (isErrorClosed) {
        process.start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QStringLiteral("exec \"$0\" 2>&-"), host});
    } else {
        process.start(host, QStringList());
    }
    EXPECT_TRUE(process.waitForFinished(-1)) << process.errorString().toStdString();
    const bool isNormal = process.exitStatus() == QProcess::NormalExit;
    return {isNormal ? process.exitCode() : -1, process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
}

}  // namespace

TEST(VersionDump, isOneLineOnStandardErrorWhenTheLibraryIsLoaded) {
    const Output output = runHost("1");
    EXPECT_EQ(output.exitStatus, 0);
    EXPECT_EQ(output.standardOutput, hostsOutput);
    EXPECT_EQ(output.standardError, versionLine() + "\n");
}

TEST(VersionDump, isOffWhenTheVariableIsUnset) {
    const Output output = runHost(nullptr);
    EXPECT_EQ(output.exitStatus, 0);
    EXPECT_EQ(output.standardOutput, hostsOutput);
    EXPECT_EQ(output.standardError, "");
}

TEST(VersionDump, isOffWhenTheVariableIsNoNumberOtherThanZero) {
    for (char const* const value : {"0", "abc", "", " ", "0x1", "-0"}) {
        EXPECT_EQ(runHost(value).standardError, "") << '"' << value << '"';
    }
}

TEST(VersionDump, isOnForEveryTextThatBeginsWithANumberOtherThanZero) {
    for (char const* const value : {"2", "-1", " 7", "1abc"}) {
        EXPECT_EQ(runHost(value).standardError, versionLine() + "\n") << '"' << value << '"';
    }
}

TEST(VersionDump, doesNoHarmWhenStandardErrorIsClosed) {
    const Output output = runHost("1", true);
    EXPECT_EQ(output.exitStatus, 0);
    EXPECT_EQ(output.standardOutput, hostsOutput);
    EXPECT_EQ(output.standardError, "");
}

TEST(VersionDump, namesTheModuleInAFieldOf16AndThenTheVersionText) {
    EXPECT_EQ(versionLine(), "       qrtPlayer: " + versionText());
}

TEST(VersionDump, theTextIsTheRecordOfTheBuild) {
    EXPECT_THAT(versionText(),
                MatchesRegex("qrt version [0-9]+\\.[0-9]+\\.[0-9]+ \\([^,]+, build [0-9]+, commit [^, ]+, branch .+"));
    const std::string commit = ", commit ";
    const size_t begin = versionText().find(commit) + commit.size();
    EXPECT_EQ(versionText().find(", branch ") - begin, 7u);  // "unknown" has as many characters as is shown of a commit
}

TEST(VersionDump, isWantedByTheNumberThatTheTextBeginsWith) {
    EXPECT_FALSE(isVersionDumpWanted(nullptr));
    EXPECT_FALSE(isVersionDumpWanted(""));
    EXPECT_FALSE(isVersionDumpWanted("0"));
    EXPECT_FALSE(isVersionDumpWanted("yes"));
    EXPECT_TRUE(isVersionDumpWanted("1"));
    EXPECT_TRUE(isVersionDumpWanted("-1"));
}

}  // namespace QRT_0_81
