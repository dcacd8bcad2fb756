#pragma once

#include <string>

#include "base/qrtOutcome.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// Opens a media file and finds out about its streams. Only regular files are opened, whatever their name looks like:
/// no network, no pipe, no device. What a file refers to, as playlists do, is not opened. Failures name the file.
Outcome openContainer(std::string const& path, AvPtr<AVFormatContext>& container);

}  // namespace qrtplay
