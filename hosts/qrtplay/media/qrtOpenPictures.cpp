#include "media/qrtOpenPictures.h"

#include <utility>

#include "media/qrtImageFile.h"
#include "media/qrtImageSequenceSource.h"
#include "media/qrtMediaFile.h"
#include "media/qrtVideoDecoder.h"

namespace qrtplay {

namespace {

Outcome openFile(std::string const& path, std::unique_ptr<PictureSource>& source) {
    if (imageCodecOf(path) != AV_CODEC_ID_NONE) return ImageSequenceSource::openFile(path, source);
    std::shared_ptr<MediaFile const> file;
    if (Outcome outcome = MediaFile::open(path, file); outcome.failed()) return outcome;
    std::unique_ptr<VideoDecoder> decoder;
    if (Outcome outcome = VideoDecoder::open(file, decoder); outcome.failed()) return outcome;
    source = std::move(decoder);
    return Outcome();
}

}  // namespace

Outcome openPictures(MediaReference const& reference, std::unique_ptr<PictureSource>& source) {
    switch (reference.kind) {
        case MediaReference::Kind::file: return openFile(reference.path, source);
        case MediaReference::Kind::image_sequence: return ImageSequenceSource::open(reference.images, source);
        case MediaReference::Kind::missing: break;
    }
    return Outcome::failure(reference.text() + ": is missing");
}

}  // namespace qrtplay
