#include "options/qrtShellWords.h"

#include <algorithm>
#include <cctype>

namespace qrtplay {

namespace {

bool isPlain(char sign) {
    static const std::string harmless = "_-+./,:=@%";
    return std::isalnum(static_cast<unsigned char>(sign)) != 0 || harmless.find(sign) != std::string::npos;
}

std::string quoted(std::string const& word) {
    if (!word.empty() && std::all_of(word.begin(), word.end(), isPlain)) return word;
    std::string text = "'";
    for (const char sign : word) {
        if (sign == '\'')
            text += "'\\''";
        else
            text += sign;
    }
    return text + "'";
}

}  // namespace

std::string shellCommand(std::vector<std::string> const& words) {
    std::string line;
    for (std::string const& word : words)
        line += (line.empty() ? "" : " ") + quoted(word);
    return line;
}

}  // namespace qrtplay
