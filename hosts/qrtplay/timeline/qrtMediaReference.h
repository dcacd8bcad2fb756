#pragma once

#include <optional>
#include <string>

#include "base/qrtExactTime.h"
#include "base/qrtKit.h"
#include "foundation/core/qrtRational.h"

namespace qrtplay {

/// Numbered image files that are one clip: `folder/prefix` + number + `suffix`.
struct ImageSequenceName {
    std::string folder;  ///< "." for the current one
    std::string prefix;
    std::string suffix;     ///< with the dot
    size_t digits = 0;      ///< the least there are; shorter numbers have leading zeros. 0: none
    int64 firstNumber = 0;  ///< of the file that is frame 0
    int64 lastNumber = 0;   ///< not before the first; which files exist in between is another matter
    int64 step = 1;         ///< between the numbers of successive frames, positive
    Rational rate{24, 1};   ///< frames per second

    [[nodiscard]] int64 frameCount() const noexcept { return (lastNumber - firstNumber) / step + 1; }
    [[nodiscard]] std::string pathOf(int64 frame) const;
    /// As people write it: "folder/plate.####.exr".
    [[nodiscard]] std::string text() const;
    [[nodiscard]] bool operator==(ImageSequenceName const&) const noexcept = default;
};

/// Where pictures and sound of a timeline come from.
struct MediaReference {
    enum class Kind { file, image_sequence, missing };

    Kind kind = Kind::missing;
    std::string path;          ///< of a file
    ImageSequenceName images;  ///< of an image sequence
    std::string name;          ///< what people call it: the file's name, or the clip's when none is known

    /// What a person looks for when it is not there: the path, the pattern or the name.
    [[nodiscard]] std::string text() const;
    [[nodiscard]] bool operator==(MediaReference const&) const noexcept = default;
};

}  // namespace qrtplay
