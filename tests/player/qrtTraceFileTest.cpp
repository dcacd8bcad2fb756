#include "qrtTraceFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QTemporaryDir>
#include <cerrno>
#include <string>

#include "harness/qrtFileSizeLimit.h"
#include "harness/qrtTraceDocument.h"

namespace QRT_0_81 {

namespace {

constexpr int64 second = 1'000'000'000;

class TraceFiles : public ::testing::Test {
protected:
    [[nodiscard]] std::string text() const { return TraceDocument::textOf(path); }
    /// What is in the file, with the end of the array that is still missing.
    [[nodiscard]] std::string soFar() const { return text() + "\n]\n"; }

    const QTemporaryDir folder;
    const std::string path = folder.filePath("trace.json").toStdString();
    TraceFile file;
};

}  // namespace

TEST_F(TraceFiles, areArrays) {
    ASSERT_EQ(file.open(path.c_str(), "1"), 0);
    EXPECT_EQ(file.append("2", 0), 0);
    EXPECT_EQ(file.append("3", 0), 0);
    EXPECT_EQ(file.close(), 0);
    EXPECT_EQ(text(), "[\n1,\n2,\n3\n]\n");
    EXPECT_EQ(file.append("4", 0), 0);
    EXPECT_EQ(file.flush(), 0);
    EXPECT_EQ(text(), "[\n1,\n2,\n3\n]\n") << "what comes after the end is dropped";
}

TEST_F(TraceFiles, replaceWhatWasThere) {
    ASSERT_EQ(file.open(path.c_str(), "1111111111"), 0);
    ASSERT_EQ(file.open(path.c_str(), "2"), 0);
    EXPECT_EQ(file.close(), 0);
    EXPECT_EQ(text(), "[\n2\n]\n");
}

TEST_F(TraceFiles, areWholeButForTheEndAtAnyTime) {
    ASSERT_EQ(file.open(path.c_str(), "1"), 0);
    EXPECT_EQ(soFar(), "[\n1\n]\n");
    EXPECT_EQ(file.append("2", second), 0);
    EXPECT_EQ(soFar(), "[\n1\n]\n") << "it waits for others";
    EXPECT_EQ(file.append("3", second + second / 5), 0);
    EXPECT_EQ(soFar(), "[\n1\n]\n");
    EXPECT_EQ(file.append("4", second + second / 4), 0);
    EXPECT_EQ(soFar(), "[\n1,\n2,\n3,\n4\n]\n") << "it has waited long enough";
    EXPECT_EQ(file.append("5", 3 * second), 0);
    EXPECT_EQ(file.flush(), 0);
    EXPECT_EQ(soFar(), "[\n1,\n2,\n3,\n4,\n5\n]\n");
    (void)file.close();
}

TEST_F(TraceFiles, areWrittenInPiecesOfWholeValues) {
    constexpr int count = 4000;
    const std::string filling(100, 'x');
    ASSERT_EQ(file.open(path.c_str(), "0"), 0);
    std::string expected = "[\n0";
    for (int i = 1; i < count; ++i) {
        const std::string value = '"' + filling + std::to_string(i) + '"';
        ASSERT_EQ(file.append(value, 0), 0);
        expected += ",\n" + value;
        if (i % 601 == 0) {
            EXPECT_EQ(text(), expected.substr(0, text().size()));
        }
    }
    EXPECT_GT(text().size(), expected.size() - 64 * 1024) << "and no more than a buffer is kept back";
    EXPECT_EQ(file.close(), 0);
    EXPECT_EQ(text(), expected + "\n]\n");
}

TEST_F(TraceFiles, areNotOpenedWhereNoneCanBe) {
    EXPECT_EQ(file.open(folder.filePath("none/trace.json").toLocal8Bit(), "1"), ENOENT);
    EXPECT_EQ(file.open(folder.path().toLocal8Bit(), "1"), EISDIR);
    EXPECT_EQ(file.open("/dev/null", "1"), EINVAL);
    const std::string pipe = folder.filePath("pipe").toStdString();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(file.open(pipe.c_str(), "1"), ENXIO) << "without waiting for a reader";
    EXPECT_EQ(file.append("2", 0), 0);
}

TEST_F(TraceFiles, areNotTakenFromWhoWritesThem) {
    TraceFile other;
    ASSERT_EQ(other.open(path.c_str(), "1"), 0);
    EXPECT_EQ(file.open(path.c_str(), "2"), EBUSY);
    EXPECT_EQ(other.close(), 0);
    EXPECT_EQ(text(), "[\n1\n]\n");
    EXPECT_EQ(file.open(path.c_str(), "2"), 0);
    (void)file.close();
}

TEST_F(TraceFiles, thatCannotGrowEndBehindTheLastWholeValue) {
    const FileSizeLimit limit(10'000);
    ASSERT_EQ(file.open(path.c_str(), "1"), 0);
    EXPECT_EQ(file.append("2", 0), 0);
    EXPECT_EQ(file.flush(), 0);
    EXPECT_EQ(file.append('"' + std::string(20'000, 'x') + '"', 0), 0);
    EXPECT_EQ(file.flush(), EFBIG);
    EXPECT_EQ(file.append("3", 0), 0) << "told once";
    EXPECT_EQ(file.flush(), 0);
    EXPECT_EQ(file.close(), 0);
    EXPECT_EQ(soFar(), "[\n1,\n2\n]\n");
}

}  // namespace QRT_0_81
