#include "encode/qrtMovieWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <QDir>
#include <QTemporaryDir>
#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstring>

#include "host/qrtDecodedFile.h"

namespace qrtplay {
namespace {

using ::testing::HasSubstr;

constexpr int width = 64;
constexpr int height = 48;
constexpr int frames = 10;
constexpr int impulseAt = 5000;

class Movies : public ::testing::Test {
protected:
    std::string path(std::string const& name) const { return folder.path().toStdString() + "/" + name; }
    QStringList names() const {
        return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
    }

    static MovieSettings settingsOf(std::string const& name, FormatWishes const& wishes = {}) {
        MovieSettings settings;
        const Outcome outcome = chooseOutputFormat(name, wishes, settings.format);
        EXPECT_TRUE(outcome.success()) << outcome.message();
        settings.width = width;
        settings.height = height;
        settings.rate = Rational(24000, 1001);
        settings.hasSound = true;
        settings.timecode = "01:02:03:04";
        return settings;
    }

    /// The sound of a frame: silence but for one sample.
    static std::vector<float> soundOf(int frame, Rational const& rate) {
        const auto begin = [&rate](int number) {
            return std::llround(number * double{movieSampleRate} / rate.getValue());
        };
        std::vector<float> sound(static_cast<size_t>(begin(frame + 1) - begin(frame)) * 2);
        const auto at = impulseAt - begin(frame);
        if (at >= 0 && at * 2 < static_cast<int64>(sound.size())) sound[static_cast<size_t>(at) * 2] = 0.5F;
        return sound;
    }

    void write(std::string const& name, MovieSettings const& settings,
               PixelBlock (*picture)(int, int, PixelFormat, int)) {
        std::unique_ptr<MovieWriter> writer;
        const Outcome opened = MovieWriter::open(path(name), settings, writer);
        ASSERT_TRUE(opened.success()) << opened.message();
        for (int i = 0; i < frames; ++i)
            writer->write(i, picture(width, height, settings.format.depth, i), soundOf(i, settings.rate));
        EXPECT_FALSE(names().contains(QString::fromStdString(name)));
        const Outcome finished = writer->finish();
        EXPECT_TRUE(finished.success()) << finished.message();
        EXPECT_EQ(writer->takeResults().size(), size_t{frames});
        EXPECT_EQ(names(), QStringList{QString::fromStdString(name)});
    }

    static PixelBlock noise(int w, int h, PixelFormat format, int number) {
        return noiseBlock(w, h, format, static_cast<unsigned>(number));
    }

    QTemporaryDir folder;
};

TEST_F(Movies, keepEveryBitWithFfv1) {
    for (const PixelFormat depth : {PixelFormat::rgba8, PixelFormat::rgba16}) {
        const MovieSettings settings = settingsOf("a.mkv", {VideoCodec::ffv1, depth, {}});
        ASSERT_NO_FATAL_FAILURE(write("a.mkv", settings, noise));
        const DecodedFile file(path("a.mkv"));
        ASSERT_EQ(file.pictures.size(), size_t{frames});
        for (int i = 0; i < frames; ++i) {
            const PixelBlock block = noise(width, height, depth, i);
            const PixelBlock read = blockOf(*file.pictures[static_cast<size_t>(i)], depth);
            EXPECT_EQ(std::memcmp(read.row(0), block.row(0), block.sizeInBytes()), 0) << i;
        }
        ASSERT_TRUE(QFile::remove(folder.filePath("a.mkv")));
    }
}

struct LossyCase {
    const char* name;
    const char* file;
    VideoCodec codec;
    PixelFormat depth;
    std::optional<int> quality;
    double tolerance;
    AVPixelFormat stored;
};
class LossyMovies : public Movies, public ::testing::WithParamInterface<LossyCase> {};

TEST_P(LossyMovies, keepTheColoursAndSayWhatTheyMean) {
    LossyCase const& lossy = GetParam();
    ASSERT_NO_FATAL_FAILURE(
        write(lossy.file, settingsOf(lossy.file, {lossy.codec, lossy.depth, lossy.quality}), gradientBlock));
    const DecodedFile file(path(lossy.file));
    ASSERT_EQ(file.pictures.size(), size_t{frames});
    AVCodecParameters const& stored = *file.stream(AVMEDIA_TYPE_VIDEO)->codecpar;
    EXPECT_EQ(stored.format, lossy.stored);
    EXPECT_EQ(stored.color_space, AVCOL_SPC_BT709);
    EXPECT_EQ(stored.color_primaries, AVCOL_PRI_BT709);
    EXPECT_EQ(stored.color_trc, AVCOL_TRC_BT709);
    for (int i = 0; i < frames; ++i) {
        AVFrame& picture = *file.pictures[static_cast<size_t>(i)];
        EXPECT_NE(picture.color_range, AVCOL_RANGE_JPEG);
        picture.colorspace = AVCOL_SPC_BT709;
        EXPECT_LE(largestDifference(blockOf(picture, lossy.depth), gradientBlock(width, height, lossy.depth, i)),
                  lossy.tolerance)
            << i;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Codecs, LossyMovies,
    ::testing::Values(
        LossyCase{"h264", "a.mp4", VideoCodec::h264, PixelFormat::rgba8, 90, 6, AV_PIX_FMT_YUV420P},
        LossyCase{"h264Deep", "a.mkv", VideoCodec::h264, PixelFormat::rgba16, 90, 6, AV_PIX_FMT_YUV420P},
        LossyCase{"prores", "a.mov", VideoCodec::prores, PixelFormat::rgba16, {}, 4, AV_PIX_FMT_YUV422P10},
        LossyCase{"proresOf8Bits", "a.mov", VideoCodec::prores, PixelFormat::rgba8, {}, 4, AV_PIX_FMT_YUV422P10}),
    [](const auto& caseInfo) { return std::string(caseInfo.param.name); });

class Containers : public Movies, public ::testing::WithParamInterface<const char*> {};

TEST_P(Containers, haveTheExactRateLengthAndTimecode) {
    ASSERT_NO_FATAL_FAILURE(write(GetParam(), settingsOf(GetParam()), gradientBlock));
    const DecodedFile file(path(GetParam()));
    EXPECT_EQ(file.pictures.size(), size_t{frames});
    const AVRational rate =
        av_guess_frame_rate(file.format.get(), const_cast<AVStream*>(file.stream(AVMEDIA_TYPE_VIDEO)), nullptr);
    EXPECT_EQ(rate.num, 24000);
    EXPECT_EQ(rate.den, 1001);
    EXPECT_EQ(file.tag("timecode"), "01:02:03:04");
    EXPECT_NEAR(static_cast<double>(file.format->duration) / AV_TIME_BASE, frames * 1001 / 24000.0, 0.002);
}

TEST_P(Containers, haveTheSoundToTheSample) {
    ASSERT_NO_FATAL_FAILURE(write(GetParam(), settingsOf(GetParam()), gradientBlock));
    const DecodedFile file(path(GetParam()));
    constexpr size_t samples = frames * 1001 * 2;  // 48000 / (24000 / 1001) a frame
    AVStream const* const stream = file.stream(AVMEDIA_TYPE_AUDIO);
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(stream->codecpar->sample_rate, movieSampleRate);
    const bool isAac = stream->codecpar->codec_id == AV_CODEC_ID_AAC;
    if (isAac) {
        // Its decoder puts out whole packets; the container says where the sound ends.
        EXPECT_EQ(av_rescale_q(stream->duration, stream->time_base, {1, movieSampleRate}), int64{samples});
        EXPECT_GE(file.left.size(), samples);
    } else {
        EXPECT_EQ(file.left.size(), samples);
    }
    const auto loudest = std::max_element(file.left.begin(), file.left.end(),
                                          [](float a, float b) { return std::abs(a) < std::abs(b); });
    ASSERT_NE(loudest, file.left.end());
    EXPECT_EQ(loudest - file.left.begin(), impulseAt);
    EXPECT_NEAR(*loudest, 0.5F, isAac ? 0.2F : 0.0F);
}

INSTANTIATE_TEST_SUITE_P(Kinds, Containers, ::testing::Values("a.mp4", "a.mov", "a.mkv"),
                         [](const auto& caseInfo) { return std::string(caseInfo.param + 2); });

TEST_F(Movies, canBeSilent) {
    MovieSettings settings = settingsOf("a.mov");
    settings.hasSound = false;
    ASSERT_NO_FATAL_FAILURE(write("a.mov", settings, gradientBlock));
    EXPECT_EQ(DecodedFile(path("a.mov")).stream(AVMEDIA_TYPE_AUDIO), nullptr);
}

TEST_F(Movies, leaveNothingBehindUntilTheyAreWhole) {
    QFile old(folder.filePath("a.mp4"));
    ASSERT_TRUE(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
    old.close();
    {
        std::unique_ptr<MovieWriter> writer;
        ASSERT_TRUE(MovieWriter::open(path("a.mp4"), settingsOf("a.mp4"), writer).success());
        for (int i = 0; i < frames; ++i)
            writer->write(i, gradientBlock(width, height, PixelFormat::rgba8, i), {});
    }
    EXPECT_EQ(names(), QStringList{"a.mp4"});
    EXPECT_EQ(QFileInfo(folder.filePath("a.mp4")).size(), 3);
}

TEST_F(Movies, sayWhichSizesTheirCodecTakes) {
    MovieSettings settings = settingsOf("a.mp4");
    settings.width = 33;
    settings.height = 17;
    std::unique_ptr<MovieWriter> writer;
    EXPECT_THAT(MovieWriter::open(path("a.mp4"), settings, writer).message(),
                HasSubstr("h264 needs an even width and height, not 33x17; for example 34x18"));
    settings.format = settingsOf("a.mkv").format;
    EXPECT_TRUE(MovieWriter::open(path("a.mkv"), settings, writer).success());
}

TEST_F(Movies, nameTheFileThatCannotBeMade) {
    std::unique_ptr<MovieWriter> writer;
    EXPECT_THAT(MovieWriter::open(path("none/a.mp4"), settingsOf("a.mp4"), writer).message(),
                HasSubstr(path("none/a.mp4") + ": cannot be written"));
    EXPECT_EQ(writer, nullptr);
}

/// Lets no file grow beyond a size, as a disk that is full does.
class SmallDisk {
public:
    explicit SmallDisk(rlim_t bytes) : m_signal(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit small{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallDisk() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_signal);
    }

private:
    void (*m_signal)(int);
    rlimit m_before{};
};

TEST_F(Movies, nameTheFileThatTheDiskHasNoRoomFor) {
    const SmallDisk disk(20000);
    std::unique_ptr<MovieWriter> writer;
    ASSERT_TRUE(MovieWriter::open(path("a.mkv"), settingsOf("a.mkv"), writer).success());
    for (int i = 0; i < 100; ++i)
        writer->write(i, noise(width, height, PixelFormat::rgba8, i), {});
    const Outcome outcome = writer->finish();
    EXPECT_THAT(outcome.message(), HasSubstr(path("a.mkv") + ": cannot be written: File too large"));
    writer.reset();
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(Movies, refuseAPictureOfAnotherSize) {
    std::unique_ptr<MovieWriter> writer;
    ASSERT_TRUE(MovieWriter::open(path("a.mkv"), settingsOf("a.mkv"), writer).success());
    writer->write(0, gradientBlock(width, height, PixelFormat::rgba8, 0), {});
    writer->write(1, gradientBlock(width, height + 2, PixelFormat::rgba8, 0), {});
    EXPECT_THAT(writer->finish().message(), HasSubstr("picture 1 has another size"));
    EXPECT_EQ(writer->takeResults().size(), 1u);
}

}  // namespace
}  // namespace qrtplay
