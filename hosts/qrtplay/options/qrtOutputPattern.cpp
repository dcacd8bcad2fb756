#include "options/qrtOutputPattern.h"

#include <QRegularExpression>

#include "encode/qrtOutputFormat.h"

namespace qrtplay {

Outcome OutputPattern::parse(std::string const& path, OutputPattern& pattern) {
    const size_t slash = path.rfind('/');
    const size_t nameBegin = slash == std::string::npos ? 0 : slash + 1;
    const std::string name = path.substr(nameBegin);
    const QString qtName = QString::fromStdString(name);
    if (!fileKindOf(name))
        return Outcome::failure("output '" + path + "': the name has to end with one of " + knownEndings());

    OutputPattern parsed;
    parsed.m_text = path;
    parsed.m_before = path;
    static const QRegularExpression place("#+|%(0[1-9])?d");
    for (auto matches = place.globalMatch(qtName); matches.hasNext();) {
        const auto match = matches.next();
        if (parsed.m_hasNumber)
            return Outcome::failure("output '" + path + "': has more than one place for the frame number");
        const std::string text = match.captured().toStdString();
        parsed.m_hasNumber = true;
        if (text.front() == '#')
            parsed.m_digits = text.size();
        else
            parsed.m_digits = match.capturedLength(1) > 0 ? static_cast<size_t>(text[2] - '0') : 1;
        // Positions of the match count characters, those of the path bytes.
        const size_t begin = nameBegin + qtName.left(match.capturedStart()).toStdString().size();
        parsed.m_before = path.substr(0, begin);
        parsed.m_after = path.substr(begin + text.size());
    }
    pattern = parsed;
    return Outcome();
}

std::string OutputPattern::pathOf(int64 frame) const {
    if (!m_hasNumber) return m_text;
    const std::string digits = std::to_string(frame);
    const std::string zeros(m_digits > digits.size() ? m_digits - digits.size() : 0, '0');
    return m_before + zeros + digits + m_after;
}

std::string OutputPattern::folder() const {
    const size_t slash = m_text.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : m_text.substr(0, slash);
}

}  // namespace qrtplay
