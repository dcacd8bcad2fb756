#pragma once

#include <cstddef>

#include "base/qrtKit.h"

namespace qrtplay {

// What files may claim. Media and timelines come from anywhere: what they say beyond these is refused, in words, before
// memory is spent on it. SECURITY.md lists them for users.

// Pictures
constexpr int maxPictureSide = 16384;                        ///< in pixels
constexpr int64 maxPicturePixels = int64{16384} * 8192;      ///< of one picture
constexpr int64 maxPictureFileBytes = (int64{1} << 31) - 1;  ///< of a still picture, which is read as a whole
constexpr int64 maxVideoPackets = int64{1} << 25;            ///< sixteen days at 24 frames per second
constexpr unsigned maxStreams = 256;                         ///< of a media file

// Sound
constexpr int minSampleRate = 1000;          ///< in Hz
constexpr int maxSampleRate = 1'536'000;     ///< in Hz
constexpr int maxSoundChannels = 64;         ///< of a media file
constexpr int64 maxPacketSamples = 1 << 22;  ///< that one packet may decode to, of all channels together
constexpr int64 maxSoundSeconds = int64{16} * 24 * 3600;

// Timelines
constexpr size_t maxTimelineBytes = size_t{256} << 20;  ///< of an OTIO file and those that it refers to, together
constexpr size_t maxJsonDepth = 1000;
constexpr size_t maxJsonValues = 32'000'000;
constexpr size_t maxTimelineItems = 2'000'000;
constexpr size_t maxTimelineDepth = 64;       ///< objects in each other
constexpr size_t maxTimelineFilesDepth = 8;   ///< files that refer to each other
constexpr size_t maxBundleEntries = 100'000;  ///< and as many files and folders
/// What a bundle may unpack to: so much, and so many times its own size on top.
constexpr int64 maxBundleBytes = int64{256} << 20;
constexpr int64 maxBundleFactor = 20;

}  // namespace qrtplay
