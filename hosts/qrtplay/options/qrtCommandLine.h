#pragma once

#include <QCommandLineParser>
#include <QStringList>
#include <optional>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "playback/qrtPlaySettings.h"

namespace qrtplay {

/// How a command is called, which is also what its help says.
struct CommandSyntax {
    struct Option {
        char const* name;
        char const* value;  ///< empty: a switch
        char const* text;
    };
    struct Group {
        char const* title;
        std::vector<Option> options;
    };

    char const* name;
    char const* summary;
    char const* usage;  ///< what follows the name
    int leastFiles;
    int mostFiles;
    std::vector<Group> groups;
    char const* examples;
};

constexpr int anyNumberOfFiles = 1000;

/// A command line of one command.
class CommandLine final {
public:
    explicit CommandLine(CommandSyntax syntax);

    /// Failures name the word that is wrong.
    Outcome parse(QStringList const& arguments);
    [[nodiscard]] bool isHelp() const { return m_parser.isSet("help"); }
    [[nodiscard]] std::string help() const;
    /// The part of it that lists the options.
    [[nodiscard]] std::string optionsHelp() const;

    [[nodiscard]] std::vector<std::string> files() const;
    [[nodiscard]] bool has(char const* name) const { return m_parser.isSet(name); }
    [[nodiscard]] std::string value(char const* name) const { return m_parser.value(name).toStdString(); }
    [[nodiscard]] std::vector<std::string> values(char const* name) const;
    /// Leaves `number` as it is when the option is not there.
    Outcome number(char const* name, int least, int most, int& number) const;
    Outcome number(char const* name, int least, int most, std::optional<int>& number) const;

private:
    const CommandSyntax m_syntax;
    QCommandLineParser m_parser;
};

}  // namespace qrtplay
