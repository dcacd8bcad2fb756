#include "foundation/core/qrtPrefs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace QRT_0_81 {
namespace {

TEST(Prefs, hasConstantsWhoseTextIsTheirName) {
    EXPECT_STREQ(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES.c_str(), "PRODUCER_CACHE_NB_HEAD_FRAMES");
    EXPECT_STREQ(Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES.c_str(), "PRODUCER_CACHE_NB_TAIL_FRAMES");
}

TEST(Prefs, isDestroyedThroughTheInterface) {
    struct Flagging final : Prefs {
        explicit Flagging(bool& flag) : gone(flag) {}
        ~Flagging() override { gone = true; }
        Status setPref(String const&, int) override { return {}; }
        Status getPref(String const&, int&) const override { return {}; }
        Status getPrefs(Vector<String>&) const override { return {}; }
        bool& gone;
    };
    bool gone = false;
    std::unique_ptr<Prefs> prefs = std::make_unique<Flagging>(gone);
    prefs.reset();
    EXPECT_TRUE(gone);
}

}  // namespace
}  // namespace QRT_0_81
