#include "timeline/qrtOtioObject.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "base/qrtPrintable.h"

namespace qrtplay {

namespace {

using rapidjson::Value;

std::string_view textOf(Value const& value) {
    return {value.GetString(), value.GetStringLength()};
}

/// Takes the version from a schema where this reader knows what it means.
std::string knownSchema(std::string_view schema) {
    constexpr std::array<std::string_view, 22> known{
        "Timeline.1",
        "SerializableCollection.1",
        "Stack.1",
        "Track.1",
        "Clip.1",
        "Clip.2",
        "Gap.1",
        "Transition.1",
        "TimeRange.1",
        "RationalTime.1",
        "TimeTransform.1",
        "LinearTimeWarp.1",
        "FreezeFrame.1",
        "TimeEffect.1",
        "Effect.1",
        "ExternalReference.1",
        "ImageSequenceReference.1",
        "MissingReference.1",
        "GeneratorReference.1",
        "MediaReference.1",
        "Marker.1",
        "Marker.2",
    };
    if (std::find(known.begin(), known.end(), schema) != known.end()) schema.remove_suffix(2);
    return std::string(schema);
}

}  // namespace

std::string oneLine(std::string const& text) {
    constexpr size_t longest = 500;
    size_t length = std::min(text.size(), longest);
    // No character of several bytes is cut through.
    while (length < text.size() && length > 0 && (static_cast<unsigned char>(text[length]) & 0xc0) == 0x80)
        --length;
    return printable(text.substr(0, length)) + (length < text.size() ? "..." : "");
}

OtioObject::OtioObject(Value const& value, std::string const& file) : m_value(value), m_file(&file) {
    if (!value.IsObject()) fail("holds no object");
    m_schema = knownSchema(text("OTIO_SCHEMA"));
    if (m_schema.empty()) fail("is no OTIO: OTIO_SCHEMA is missing");
}

OtioObject::OtioObject(Value const& value, OtioObject const& parent, char const* member, std::optional<size_t> index)
    : m_value(value), m_parent(&parent), m_member(member), m_index(index) {
    if (!value.IsObject()) fail("is no object");
    m_schema = knownSchema(text("OTIO_SCHEMA"));
    if (m_schema.empty()) fail("OTIO_SCHEMA is missing");
}

std::string OtioObject::place() const {
    if (!m_parent) return "";
    std::string above = m_parent->place();
    if (!above.empty()) above += '/';
    above += oneLine(m_member);
    return m_index ? above + '[' + std::to_string(*m_index) + ']' : above;
}

std::string OtioObject::description() const {
    // What has no name of its own is known by that of what it belongs to.
    std::string nearestName;
    OtioObject const* outermost = this;
    for (OtioObject const* object = this; object; object = object->m_parent) {
        outermost = object;
        if (!nearestName.empty() || !object->m_value.IsObject()) continue;
        const auto name = object->m_value.FindMember("name");
        if (name != object->m_value.MemberEnd() && name->value.IsString()) nearestName = textOf(name->value);
    }
    std::string described = oneLine(*outermost->m_file);
    if (const std::string where = place(); !where.empty()) described += ": " + where;
    if (!nearestName.empty() && m_parent) described += " \"" + oneLine(nearestName) + '"';
    return described;
}

void OtioObject::fail(std::string const& what) const {
    throw OtioFault(description() + ": " + what);
}

Value const* OtioObject::find(char const* member) const {
    Value const* found = nullptr;
    const std::string_view wanted(member);
    for (auto const& candidate : m_value.GetObject()) {
        if (textOf(candidate.name) != wanted) continue;
        if (found) fail(oneLine(member) + " is there twice");
        found = &candidate.value;
    }
    return found && !found->IsNull() ? found : nullptr;
}

Value const* OtioObject::findList(char const* member) const {
    Value const* found = find(member);
    if (found && !found->IsArray()) fail(oneLine(member) + " is no list");
    return found;
}

Value const* OtioObject::findObject(char const* member) const {
    Value const* found = find(member);
    if (found && !found->IsObject()) fail(oneLine(member) + " is no object");
    return found;
}

std::string OtioObject::text(char const* member) const {
    Value const* found = find(member);
    if (found && !found->IsString()) fail(oneLine(member) + " is no text");
    return found ? std::string(textOf(*found)) : std::string();
}

bool OtioObject::flag(char const* member, bool otherwise) const {
    Value const* found = find(member);
    if (found && !found->IsBool()) fail(oneLine(member) + " is neither true nor false");
    return found ? found->GetBool() : otherwise;
}

std::optional<double> OtioObject::number(char const* member) const {
    Value const* found = find(member);
    if (!found) return std::nullopt;
    if (!found->IsNumber()) fail(oneLine(member) + " is no number");
    const double value = found->GetDouble();
    if (!std::isfinite(value)) fail(oneLine(member) + " is no finite number");
    return value;
}

std::optional<int64> OtioObject::wholeNumber(char const* member) const {
    const std::optional<double> value = number(member);
    if (!value) return std::nullopt;
    constexpr double largest = 1e12;
    if (*value != std::floor(*value)) fail(oneLine(member) + " is no whole number");
    if (std::abs(*value) > largest) fail(oneLine(member) + " is beyond a million millions");
    return static_cast<int64>(*value);
}

}  // namespace qrtplay
