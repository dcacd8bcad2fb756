#include "options/qrtShellWords.h"

#include <gtest/gtest.h>

#include <QProcess>

namespace qrtplay {
namespace {

TEST(ShellWords, leavesPlainWordsAlone) {
    EXPECT_EQ(shellCommand({"qrtplay", "render", "--frames=0-9,20", "out/a.%04d.png"}),
              "qrtplay render --frames=0-9,20 out/a.%04d.png");
}

TEST(ShellWords, areReadBackByAShell) {
    const std::vector<std::string> words{"it's", "a b", "$HOME", "x.####.png", "", "`id`", "a\"b\\", "~", "!", "*"};
    QProcess shell;
    shell.start("sh", {"-c", QString::fromStdString("printf '%s\\n' " + shellCommand(words))});
    ASSERT_TRUE(shell.waitForFinished());
    std::string expected;
    for (std::string const& word : words)
        expected += word + "\n";
    EXPECT_EQ(shell.readAllStandardOutput().toStdString(), expected);
}

}  // namespace
}  // namespace qrtplay
