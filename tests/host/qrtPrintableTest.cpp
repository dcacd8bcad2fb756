#include "base/qrtPrintable.h"

#include <gtest/gtest.h>

#include "base/qrtOutcome.h"

namespace qrtplay {
namespace {

TEST(Printable, leavesWordsAlone) {
    for (const std::string text :
         {"", "plate.####.exr", "Grüße, 日本 и 🎬", "\u00a0\u07ff\u0800\uffff\U00010000\U0010ffff"})
        EXPECT_EQ(printable(text), text);
}

TEST(Printable, replacesWhatControlsATerminal) {
    EXPECT_EQ(printable("na\x1b]0;title\ame\r\n\tend\x7f"), "na?]0;title?me???end?");
    EXPECT_EQ(printable(std::string("a\0b", 3)), "a?b");
    EXPECT_EQ(printable("\u009b31m \u0085 \u0080\u009f"), "?31m ? ??");
    EXPECT_EQ(printable("two\u2028lines\u2029"), "two?lines?");
}

TEST(Printable, replacesEachByteThatIsNoUtf8) {
    EXPECT_EQ(printable("\x9b"
                        "31m"),
              "?31m");
    EXPECT_EQ(printable("Gr\xfc\xdf"
                        "e"),
              "Gr??e");
    EXPECT_EQ(printable("\xc1\x9b \xe0\x82\x9b \xf0\x80\x82\x9b"), "?? ??? ????") << "longer forms than need be";
    EXPECT_EQ(printable("\xed\xa0\x80 \xf4\x90\x80\x80 \xf8\x88\x80\x80\x80"), "??? ???? ?????") << "no characters";
    EXPECT_EQ(printable("\xe2\x82 \xf0\x9f\x8e"), "?? ???") << "cut off";
    EXPECT_EQ(printable("\xe2\x82\x1b["), "???[");
}

TEST(Outcomes, areOneLineWhateverTheyName) {
    EXPECT_EQ(Outcome::failure("a\x1b[2J\nb: no such file").message(), "a?[2J?b: no such file");
}

}  // namespace
}  // namespace qrtplay
