#include "options/qrtCommandLine.h"

#include <algorithm>
#include <utility>

namespace qrtplay {

namespace {

constexpr size_t lineWidth = 100;

std::string withoutFullStop(QString text) {
    if (text.endsWith('.')) text.chop(1);
    return text.toStdString();
}

std::string spellingOf(CommandSyntax::Option const& option) {
    std::string spelling = "--" + std::string(option.name);
    if (*option.value) spelling += std::string(" ") + option.value;
    return spelling;
}

/// The text in lines that begin at `column`.
std::string wrapped(std::string const& text, size_t column) {
    std::string lines;
    size_t length = 0;
    for (const QString& qtWord : QString::fromStdString(text).split(' ')) {
        const std::string word = qtWord.toStdString();
        if (length > 0 && column + length + 1 + word.size() > lineWidth) {
            lines += "\n" + std::string(column, ' ');
            length = 0;
        }
        lines += (length > 0 ? " " : "") + word;
        length += word.size() + (length > 0 ? 1 : 0);
    }
    return lines;
}

}  // namespace

CommandLine::CommandLine(CommandSyntax syntax) : m_syntax(std::move(syntax)) {
    for (CommandSyntax::Group const& group : m_syntax.groups)
        for (CommandSyntax::Option const& option : group.options)
            m_parser.addOption({option.name, "", option.value});
    m_parser.addOption({{"h", "help"}, ""});
}

Outcome CommandLine::parse(QStringList const& arguments) {
    if (!m_parser.parse(arguments)) return Outcome::failure(withoutFullStop(m_parser.errorText()));
    if (isHelp()) return Outcome();
    const QStringList words = m_parser.positionalArguments();
    const std::string command = m_syntax.name;
    const int count = static_cast<int>(words.size()) - 1;  // without the command
    if (count < m_syntax.leastFiles || (count > 0 && words.contains(QString())))
        return Outcome::failure(command + ": no file is named; 'qrtplay " + command + " --help' explains");
    if (count > m_syntax.mostFiles)
        return Outcome::failure("'" + words[m_syntax.mostFiles + 1].toStdString() + "': " + command + " takes " +
                                (m_syntax.mostFiles == 0 ? "no file" : "one file at a time"));
    return Outcome();
}

std::string CommandLine::help() const {
    return "Usage: qrtplay " + std::string(m_syntax.name) + " " + m_syntax.usage + "\n\n" + m_syntax.summary + "\n" +
           optionsHelp() + m_syntax.examples;
}

std::string CommandLine::optionsHelp() const {
    std::string text;
    size_t widest = 0;
    for (CommandSyntax::Group const& group : m_syntax.groups)
        for (CommandSyntax::Option const& option : group.options)
            widest = std::max(widest, spellingOf(option).size());
    const size_t column = 2 + widest + 2;
    for (CommandSyntax::Group const& group : m_syntax.groups) {
        text += "\n" + std::string(group.title) + ":\n";
        for (CommandSyntax::Option const& option : group.options) {
            std::string line = "  " + spellingOf(option);
            line.resize(column, ' ');
            text += line + wrapped(option.text, column) + "\n";
        }
    }
    return text;
}

std::vector<std::string> CommandLine::files() const {
    std::vector<std::string> files;
    const QStringList words = m_parser.positionalArguments().mid(1);
    for (const QString& word : words)
        files.push_back(word.toStdString());
    return files;
}

std::vector<std::string> CommandLine::values(char const* name) const {
    std::vector<std::string> values;
    const QStringList words = m_parser.values(name);
    for (const QString& word : words)
        values.push_back(word.toStdString());
    return values;
}

Outcome CommandLine::number(char const* name, int least, int most, int& number) const {
    if (!has(name)) return Outcome();
    bool isNumber = false;
    const int read = m_parser.value(name).toInt(&isNumber);
    if (!isNumber || read < least || read > most)
        return Outcome::failure("--" + std::string(name) + " '" + value(name) + "': has to be a number from " +
                                std::to_string(least) + " to " + std::to_string(most));
    number = read;
    return Outcome();
}

Outcome CommandLine::number(char const* name, int least, int most, std::optional<int>& number) const {
    if (!has(name)) return Outcome();
    int read = 0;
    Outcome outcome = this->number(name, least, most, read);
    if (outcome.success()) number = read;
    return outcome;
}

}  // namespace qrtplay
