#include "base/qrtPrintable.h"

#include <cstdint>
#include <string_view>

namespace qrtplay {

namespace {

/// How many bytes a character has that begins with `lead`; 0: none does.
size_t lengthOf(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead < 0xc2) return 0;  // the middle of a character, or a longer form of an ASCII character
    if (lead < 0xe0) return 2;
    if (lead < 0xf0) return 3;
    return lead < 0xf5 ? 4 : 0;
}

/// The character that `text` begins with, and its length in bytes, which is 0 when it is no UTF-8.
struct Character {
    explicit Character(std::string_view text) : length(lengthOf(static_cast<unsigned char>(text.front()))) {
        const auto byte = [&](size_t index) { return static_cast<unsigned char>(text[index]); };
        constexpr unsigned char leadBits[] = {0, 0x7f, 0x1f, 0x0f, 0x07};
        if (length > text.size()) length = 0;
        code = byte(0) & leadBits[length];
        for (size_t i = 1; i < length; ++i) {
            if ((byte(i) & 0xc0) != 0x80) {
                length = 0;
                return;
            }
            code = code << 6 | (byte(i) & 0x3f);
        }
        constexpr std::uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};  // shorter forms exist of what is below
        const bool isSurrogate = code >= 0xd800 && code < 0xe000;
        if (code < least[length] || isSurrogate || code > 0x10ffff) length = 0;
    }

    size_t length;
    std::uint32_t code = 0;
};

bool isControl(std::uint32_t code) {
    const bool endsLine = code == 0x2028 || code == 0x2029;
    return code < ' ' || (code >= 0x7f && code < 0xa0) || endsLine;
}

}  // namespace

std::string printable(std::string const& text) {
    std::string shown;
    shown.reserve(text.size());
    for (std::string_view rest = text; !rest.empty();) {
        const Character character(rest);
        const size_t length = character.length > 0 ? character.length : 1;
        if (character.length == 0 || isControl(character.code))
            shown += '?';
        else
            shown += rest.substr(0, length);
        rest.remove_prefix(length);
    }
    return shown;
}

}  // namespace qrtplay
