#pragma once

#include <memory>

#include "base/qrtOutcome.h"
#include "media/qrtPictureSource.h"
#include "timeline/qrtMediaReference.h"

namespace qrtplay {

/// Opens the pictures of a media: a file with video, a single picture or a sequence of them. Failures name it; whether
/// a slate takes its place is for the caller to say.
Outcome openPictures(MediaReference const& reference, std::unique_ptr<PictureSource>& source);

}  // namespace qrtplay
