#include "media/qrtContainer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

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
    std::filesystem::copy_file(clipPath("stills/one.bmp"), m_folder + "/%d.pcx");
    std::filesystem::copy_file(clipPath("stills/one.bmp"), m_folder + "/1.pcx");
    std::shared_ptr<MediaFile const> file;
    EXPECT_TRUE(MediaFile::open(m_folder + "/%d.pcx", file).failed());
}

TEST_F(Container, opensTheFileThatIsNamed) {
    AvPtr<AVFormatContext> container;
    const Outcome outcome = openContainer(m_folder + "/clip.ts", container);
    ASSERT_TRUE(outcome.success()) << outcome.message();
    EXPECT_EQ(container->nb_streams, 1U);
}

TEST_F(Container, refusesAHeaderThatClaimsMoreThanCanBePlayed) {
    for (char const* const size : {"W20000 H16", "W16 H20000", "W16384 H8194", "W2147483647 H2147483647"}) {
        const std::string path = put("claim.y4m", "YUV4MPEG2 " + std::string(size) + " F25:1\nFRAME\n");
        std::shared_ptr<MediaFile const> file;
        EXPECT_THAT(MediaFile::open(path, file).message(), HasSubstr(path + ": ")) << size;
        EXPECT_EQ(file, nullptr) << size;
    }
}

}  // namespace
}  // namespace qrtplay
