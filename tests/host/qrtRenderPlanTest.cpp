#include "render/qrtRenderPlan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace qrtplay {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class Plans : public ::testing::Test {
protected:
    RenderOptions options(std::string const& output, std::string const& frames) {
        RenderOptions options;
        const std::string path = folder.path().toStdString() + "/" + output;
        EXPECT_TRUE(OutputPattern::parse(path, options.output).success());
        EXPECT_TRUE(chooseOutputFormat(path, {}, options.format).success());
        if (!frames.empty()) {
            EXPECT_TRUE(parseFrameRanges(frames, options.frames).success());
        }
        return options;
    }
    void put(QString const& name, QByteArray const& bytes = "x") {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    static RenderPlan planned(RenderOptions const& options, int64 frameCount) {
        RenderPlan plan;
        const Outcome outcome = planRender(options, frameCount, plan);
        EXPECT_TRUE(outcome.success()) << outcome.message();
        return plan;
    }

    QTemporaryDir folder;
};

TEST_F(Plans, renderAllThatIsAskedFor) {
    put("3.png");
    const RenderPlan plan = planned(options("#.png", "2-"), 10);
    EXPECT_THAT(plan.frames, ElementsAre(FrameRange{2, 9, 1}));
    EXPECT_THAT(plan.skipped, IsEmpty());
}

TEST_F(Plans, leaveOutFramesThatAreThere) {
    for (const char* const name : {"3.png", "4.png", "8.png"})
        put(name);
    put("6.png", "");  // no picture: somebody has reserved the name
    RenderOptions skipping = options("#.png", "9-0,0-8x4");
    skipping.skipExisting = true;
    const RenderPlan plan = planned(skipping, 10);
    EXPECT_THAT(plan.frames,
                ElementsAre(FrameRange{9, 9, -1}, FrameRange{7, 5, -1}, FrameRange{2, 0, -1}, FrameRange{0, 0, 4}));
    ASSERT_EQ(plan.skipped.size(), 5u);
    EXPECT_EQ(plan.skipped[0].frame, 8);
    EXPECT_EQ(plan.skipped[0].path, folder.path().toStdString() + "/8.png");
}

TEST_F(Plans, leaveOutAMovieThatIsThereAsAWhole) {
    RenderOptions movie = options("a.mp4", "");
    movie.skipExisting = true;
    EXPECT_FALSE(planned(movie, 10).isWholeMovieThere);
    put("a.mp4");
    EXPECT_TRUE(planned(movie, 10).isWholeMovieThere);
    EXPECT_THAT(planned(movie, 10).frames, IsEmpty());
    movie.skipExisting = false;
    EXPECT_THAT(planned(movie, 10).frames, ElementsAre(FrameRange{0, 9, 1}));
}

TEST_F(Plans, failWithWhatDoesNotFit) {
    RenderPlan plan;
    EXPECT_THAT(planRender(options("#.png", "5-10"), 10, plan).message(), HasSubstr("frames '5-10': outside"));
    EXPECT_THAT(planRender(options("one.png", "1-2"), 10, plan).message(), HasSubstr("add '####'"));
    EXPECT_TRUE(planRender(options("one.png", "1"), 10, plan).success());
    EXPECT_TRUE(planRender(options("one.mkv", "1-2"), 10, plan).success());
}

}  // namespace
}  // namespace qrtplay
