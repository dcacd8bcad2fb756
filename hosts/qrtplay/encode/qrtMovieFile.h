#pragma once

#include <QSaveFile>
#include <memory>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "base/qrtPixelBlock.h"
#include "encode/qrtDeviceIo.h"
#include "encode/qrtEncoder.h"
#include "encode/qrtMovieSettings.h"
#include "encode/qrtPixelConverter.h"
#include "encode/qrtSoundEncoder.h"

namespace qrtplay {

/// A movie that is being written: MP4 (sound: AAC), QuickTime or Matroska (sound: PCM of 24 bits).
///
/// The file appears under its name only when `finish` has succeeded; one that stood there before is replaced then, and
/// stays otherwise. Failures name the path.
/// Threading: one thread at a time.
class MovieFile final {
public:
    static Outcome open(std::string const& path, MovieSettings const& settings, std::unique_ptr<MovieFile>& file);
    MovieFile(MovieFile const&) = delete;
    MovieFile& operator=(MovieFile const&) = delete;

    /// The next frame, of the size in the settings.
    Outcome addPicture(PixelBlock const& block);
    /// The samples that follow, both channels in turn. Sound and pictures have to come about in step, because what one
    /// is ahead of the other waits in memory.
    Outcome addSound(std::vector<float> const& samples);
    Outcome finish();

private:
    struct FormatDeleter {
        void operator()(AVFormatContext* format) const { avformat_free_context(format); }
    };

    MovieFile(std::string const& path, MovieSettings settings);

    Outcome fail(std::string const& why) const;
    Outcome failedWith(int code) const;
    Outcome openEncoders();
    Outcome openContainer();
    [[nodiscard]] AVStream* addStream(AVCodecContext const& encoder);
    Outcome mux(AVPacket& packet, AVCodecContext const& encoder, AVStream const& stream);
    Outcome encodePicture(AVFrame const* picture);

    const std::string m_path;
    const MovieSettings m_settings;
    QSaveFile m_file;
    DeviceIo m_io;
    std::unique_ptr<AVFormatContext, FormatDeleter> m_format;
    std::unique_ptr<PixelConverter> m_converter;
    std::unique_ptr<Encoder> m_encoder;
    std::unique_ptr<SoundEncoder> m_sound;
    AVStream* m_pictureStream = nullptr;  // owned by m_format, like ...
    AVStream* m_soundStream = nullptr;    // ... this
    int64 m_pictures = 0;
};

}  // namespace qrtplay
