#include "timeline/qrtMediaReference.h"

namespace qrtplay {

namespace {

std::string paddedNumber(int64 number, size_t digits) {
    const std::string text = std::to_string(number < 0 ? -number : number);
    const std::string zeros(digits > text.size() ? digits - text.size() : 0, '0');
    return (number < 0 ? "-" : "") + zeros + text;
}

std::string joined(std::string const& folder, std::string const& name) {
    return !folder.empty() && folder.back() == '/' ? folder + name : folder + "/" + name;
}

}  // namespace

std::string ImageSequenceName::pathOf(int64 frame) const {
    return joined(folder, prefix + paddedNumber(firstNumber + frame * step, digits) + suffix);
}

std::string ImageSequenceName::text() const {
    const std::string name = prefix + std::string(digits > 0 ? digits : 1, '#') + suffix;
    return folder == "." ? name : joined(folder, name);
}

std::string MediaReference::text() const {
    if (kind == Kind::image_sequence) return images.text();
    return path.empty() ? name : path;
}

}  // namespace qrtplay
