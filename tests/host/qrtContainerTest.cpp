#include "media/qrtContainer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "base/qrtLimits.h"
#include "host/qrtTestClips.h"

namespace qrtplay {
namespace {

using ::testing::HasSubstr;

constexpr char concatenation[] = "ffconcat version 1.0\nfile clip.ts\n";
constexpr char liveStream[] = "#EXTM3U\n#EXT-X-TARGETDURATION:10\n#EXTINF:2.0,\nclip.ts\n#EXT-X-ENDLIST\n";
constexpr char distantStream[] =
    "#EXTM3U\n#EXT-X-TARGETDURATION:10\n#EXTINF:2.0,\nhttp://localhost:9/clip.ts\n#EXT-X-ENDLIST\n";
constexpr char manifest[] = R"(<?xml version="1.0" encoding="utf-8"?>
<MPD xmlns="urn:mpeg:dash:schema:mpd:2011" profiles="urn:mpeg:dash:profile:isoff-live:2011" type="static"
 mediaPresentationDuration="PT2.0S" minBufferTime="PT4.0S"><Period><AdaptationSet contentType="video">
 <Representation id="0" mimeType="video/mp4" bandwidth="1000"><BaseURL>clip.ts</BaseURL></Representation>
</AdaptationSet></Period></MPD>
)";
constexpr char session[] =
    "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\nm=video 5004 RTP/AVP 96\na=rtpmap:96 H264/90000\n";

/// A folder with a clip in it, for files that refer to the clip.
class Container : public ::testing::Test {
protected:
    Container() : m_folder(::testing::TempDir() + "qrtplay-container-XXXXXX") {
        if (!mkdtemp(m_folder.data())) ADD_FAILURE() << m_folder;
        std::filesystem::copy_file(clipPath("transport.ts"), m_folder + "/clip.ts");
    }
    ~Container() override { std::filesystem::remove_all(m_folder); }

    std::string put(std::string const& name, std::string const& text) const {
        std::ofstream(m_folder + "/" + name) << text;
        return m_folder + "/" + name;
    }

    std::string m_folder;
};

class ListOfFiles : public Container, public ::testing::WithParamInterface<std::pair<char const*, char const*>> {};

TEST_P(ListOfFiles, isRefusedWhateverItIsCalled) {
    const auto& [name, text] = GetParam();
    for (char const* const file : {name, "film.mp4"}) {
        const std::string path = put(file, text);
        AvPtr<AVFormatContext> container;
        EXPECT_EQ(openContainer(path, container).message(), path + ": is a list of other files, which are not opened");
        EXPECT_EQ(container, nullptr);
    }
}
INSTANTIATE_TEST_SUITE_P(Formats, ListOfFiles,
                         ::testing::Values(std::pair("a.ffconcat", concatenation), std::pair("a.m3u8", liveStream),
                                           std::pair("far.m3u8", distantStream), std::pair("a.mpd", manifest),
                                           std::pair("a.sdp", session)));

// FFmpeg would take such a name for those of numbered pictures.
TEST_F(Container, opensNoFilesThatAFileIsNamedLike) {
    std::filesystem::copy_file(clipPath("stills/one.pcx"), m_folder + "/%d.pcx");
    std::filesystem::copy_file(clipPath("stills/one.pcx"), m_folder + "/1.pcx");
    std::shared_ptr<MediaFile const> file;
    EXPECT_TRUE(MediaFile::open(m_folder + "/%d.pcx", file).failed());
    EXPECT_TRUE(MediaFile::open(m_folder + "/1.pcx", file).success()) << "it could be played";
}

TEST_F(Container, opensTheFileThatIsNamed) {
    AvPtr<AVFormatContext> container;
    const Outcome outcome = openContainer(m_folder + "/clip.ts", container);
    ASSERT_TRUE(outcome.success()) << outcome.message();
    EXPECT_EQ(container->nb_streams, 1U);
}

std::string failureOf(std::string const& path, int64 mostPackets = maxVideoPackets) {
    std::shared_ptr<MediaFile const> file;
    const Outcome outcome = MediaFile::open(path, file, mostPackets);
    EXPECT_EQ(file == nullptr, outcome.failed());
    return outcome.success() ? "" : outcome.message().substr(path.size() + 2);
}

TEST_F(Container, refusesAHeaderThatClaimsMoreThanCanBePlayed) {
    const auto claim = [this](int width, int height) {
        const std::string size = " W" + std::to_string(width) + " H" + std::to_string(height);
        return failureOf(put("claim.y4m", "YUV4MPEG2" + size + " F25:1\nFRAME\n"));
    };
    EXPECT_EQ(claim(16385, 16), "its picture of 16385x16 pixels is larger than can be played");
    EXPECT_EQ(claim(16, 16385), "its picture of 16x16385 pixels is larger than can be played");
    EXPECT_EQ(claim(16384, 8193), "its picture of 16384x8193 pixels is larger than can be played");
    EXPECT_EQ(claim(16384, 8192), "its video holds no frame");
    EXPECT_THAT(claim(INT32_MAX, INT32_MAX), HasSubstr("cannot be opened"));
}

/// MPEG-2 whose every sequence header claims 16,383 pixels a side.
std::string withLargestMpeg2Size(std::string bytes) {
    using namespace std::string_literals;
    const auto bitsOr = [&](size_t place, unsigned char bits) {
        bytes[place] = static_cast<char>(bytes[place] | bits);
    };
    for (size_t at = bytes.find("\0\0\1\xb3"s); at != std::string::npos; at = bytes.find("\0\0\1\xb3"s, at + 4)) {
        for (size_t byte = at + 4; byte < at + 7; ++byte)
            bitsOr(byte, 0xff);  // the lower twelve bits of width and height
        const size_t extension = bytes.find("\0\0\1\xb5"s, at);
        bitsOr(extension + 5, 0x01);
        bitsOr(extension + 6, 0xe0);  // and the upper two of each
    }
    return bytes;
}

// FFmpeg, which is told the bound, then answers no size at all.
TEST_F(Container, refusesAStreamThatClaimsMoreThanCanBePlayed) {
    std::ifstream source(clipPath("programme.mpg"), std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(source), {});
    EXPECT_EQ(failureOf(put("claim.mpg", withLargestMpeg2Size(bytes))),
              "its video states no picture size, or a larger one than can be played; the file may be damaged");
}

TEST_F(Container, refusesMoreStreamsThanCanBePlayed) {
    EXPECT_THAT(failureOf(clipPath("streams.mkv")), HasSubstr("has more than 256 streams"));
    EXPECT_EQ(failureOf(clipPath("most-streams.mkv")), "has no video");
}

TEST_F(Container, refusesMorePacketsThanCanBePlayed) {
    EXPECT_EQ(failureOf(clipPath("bframes.mp4"), 48), "");
    EXPECT_EQ(failureOf(clipPath("bframes.mp4"), 47), "has more video packets than can be played");
}

}  // namespace
}  // namespace qrtplay
