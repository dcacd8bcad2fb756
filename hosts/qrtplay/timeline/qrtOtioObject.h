#pragma once

#include <rapidjson/document.h>

#include <optional>
#include <stdexcept>
#include <string>

#include "base/qrtKit.h"

namespace qrtplay {

/// Why a file cannot be read, as one line for people. Never leaves the reader: see `readOtio`.
class OtioFault final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Text of a file as it may stand in a line for people: control characters are replaced, what is very long is cut.
[[nodiscard]] std::string oneLine(std::string const& text);

/// A JSON object of an OTIO file that knows its place there. Lives on the stack of who reads it, below its parent.
///
/// Members that are null count as not there. Whatever is not as it has to be throws an `OtioFault` that names the
/// object.
class OtioObject final {
public:
    /// The outermost object of a file; `file` outlives it.
    OtioObject(rapidjson::Value const& value, std::string const& file);
    /// The `index`th of a list, or the only one, that is `member` of `parent`, which outlives this.
    OtioObject(rapidjson::Value const& value, OtioObject const& parent, char const* member,
               std::optional<size_t> index = std::nullopt);

    /// "Clip" of "Clip.2"; a number is part of the name where it is not known to the reader.
    [[nodiscard]] std::string const& schema() const noexcept { return m_schema; }
    [[nodiscard]] bool is(char const* schema) const noexcept { return m_schema == schema; }
    [[nodiscard]] std::string name() const { return text("name"); }
    /// File, place and name, such as: cut.otio: tracks/children[2]/children[5] "shot_040"
    [[nodiscard]] std::string description() const;
    [[noreturn]] void fail(std::string const& what) const;

    /// Null when the member is not there. A member that is there twice is a fault.
    [[nodiscard]] rapidjson::Value const* find(char const* member) const;
    [[nodiscard]] rapidjson::Value const* findList(char const* member) const;
    [[nodiscard]] rapidjson::Value const* findObject(char const* member) const;
    [[nodiscard]] std::string text(char const* member) const;  ///< empty when it is not there
    [[nodiscard]] bool flag(char const* member, bool otherwise) const;
    [[nodiscard]] std::optional<double> number(char const* member) const;
    /// A number without a fraction, at most 1e12 in size.
    [[nodiscard]] std::optional<int64> wholeNumber(char const* member) const;

    /// Calls `read(OtioObject const&)` with every object of a list.
    template <class Read>
    void forEach(char const* member, Read read) const {
        rapidjson::Value const* list = findList(member);
        for (rapidjson::SizeType i = 0; list && i < list->Size(); ++i)
            read(OtioObject((*list)[i], *this, member, i));
    }

private:
    [[nodiscard]] std::string place() const;

    rapidjson::Value const& m_value;
    OtioObject const* const m_parent = nullptr;
    std::string const* const m_file = nullptr;
    char const* const m_member = nullptr;
    const std::optional<size_t> m_index;
    std::string m_schema;
};

}  // namespace qrtplay
