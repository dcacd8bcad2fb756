#include "graph/qrtTimelinePictures.h"

#include <utility>

#include "media/qrtMediaFile.h"
#include "media/qrtOpenPictures.h"
#include "media/qrtSlateSource.h"
#include "media/qrtVideoDecoder.h"

namespace qrtplay {

namespace {

Outcome openSource(TimelineComposition const& composition, size_t media, std::unique_ptr<PictureSource>& source) {
    const std::shared_ptr<MediaFile const> file = composition.file(media);
    if (!file) return openPictures(composition.timeline()->media()[media], source);
    std::unique_ptr<VideoDecoder> decoder;
    Outcome outcome = VideoDecoder::open(file, decoder);
    source = std::move(decoder);
    return outcome;
}

}  // namespace

std::shared_ptr<PictureStore> openPictureStore(SharedPtr<TimelineComposition> const& composition,
                                               size_t budgetInBytes) {
    const auto open = [composition](size_t media, std::unique_ptr<PictureSource>& source) {
        const Outcome outcome = openSource(*composition, media, source);
        if (outcome.success()) return Outcome();
        composition->noteWarning(outcome.message());
        MediaReference const& reference = composition->timeline()->media()[media];
        source = makeMissingSlate(reference.text(), outcome.message(), QSize(), composition->timeline()->rate());
        return source ? Outcome() : outcome;
    };
    return std::make_shared<PictureStore>(composition->timeline()->media().size(), open, budgetInBytes);
}

}  // namespace qrtplay
