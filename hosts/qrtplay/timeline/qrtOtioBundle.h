#pragma once

#include <string>

#include "base/qrtLimits.h"
#include "base/qrtOutcome.h"

namespace qrtplay {

/// Unpacks an .otioz file, a zip archive of "content.otio" and the media that it refers to, into an empty folder.
///
/// Failures name the archive, and the entry where it is one's fault: a path that leads out of the folder, a link, a
/// path that is there twice. Nothing is unpacked that is larger than 256 MiB and 20 times the archive together (media
/// do not compress, so that a true bundle is about as large as what is in it), nor more than `mostEntries` files and
/// folders, nor more entries, nor a path of more than 64 parts.
Outcome unpackOtioBundle(std::string const& archive, std::string const& folder, size_t mostEntries = maxBundleEntries);

}  // namespace qrtplay
