// The JSON form of `PlayParams`.
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <vector>

#include "foundation/core/qrtPlatform.h"
#include "foundation/logger/qrtMsgBuilder.h"
#include "player/qrtPlayParams.h"
#include "qrtPlayParamsPrivate.h"

namespace QRT_0_81 {

namespace {

using JsonValue = rapidjson::Value;

constexpr char currentFrameKey[] = "current_frame";
constexpr char startFrameKey[] = "start_frame";
constexpr char endFrameKey[] = "end_frame";
constexpr char frameRateKey[] = "frame_rate";
constexpr char stepKey[] = "step";
constexpr char playModeKey[] = "play_mode";
constexpr char productionModeKey[] = "production_mode";

constexpr std::array<char const*, 3> playModeWords{"single", "loop", "ping_pong"};
constexpr std::array<char const*, 3> productionModeWords{"video_only", "audio_only", "all"};

/// The word of an enumeration's value, or the empty text.
template <class Words>
char const* wordOf(Words const& words, int32 value) {
    return value >= 0 && static_cast<size_t>(value) < words.size() ? words[static_cast<size_t>(value)] : "";
}

/// The value of an enumeration's word, or -1.
template <class Words>
int32 valueOf(Words const& words, JsonValue const& word) {
    const std::string_view wanted(word.GetString(), word.GetStringLength());
    for (size_t value = 0; value < words.size(); ++value) {
        if (wanted == words[value]) return static_cast<int32>(value);
    }
    return -1;
}

QRT_PRINTF_FORMAT(1, 2)
void trace(char const* format, ...) {
    static const bool isOn = Platform::getenv("ZR_DEBUG_OTIO") != nullptr;
    if (!isOn) return;
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
}

char const* typeName(JsonValue const& value) {
    constexpr std::array names{"Null", "False", "True", "Object", "Array", "String", "Number"};
    return names[static_cast<size_t>(value.GetType())];
}

/// The root's first member of that name, or null; a root that is no object has no members.
JsonValue const* findMember(JsonValue const& root, char const* key) {
    if (!root.IsObject()) return nullptr;
    const auto member = root.FindMember(key);
    return member == root.MemberEnd() ? nullptr : &member->value;
}

/// The member if it is there and of the wanted kind, else null; either way the trace tells.
JsonValue const* findTraced(JsonValue const& root, char const* key, char const* kind,
                            bool (JsonValue::*isKind)() const) {
    JsonValue const* value = findMember(root, key);
    if (!value) {
        trace("Cannot find '%s'\n", key);
        return nullptr;
    }
    if (!(value->*isKind)()) {
        trace("Expected '%s' to be %s, found %s\n", key, kind, typeName(*value));
        return nullptr;
    }
    trace("Found %s\n", key);
    return value;
}

JsonValue const* findFrame(JsonValue const& root, char const* key) {
    JsonValue const* value = findMember(root, key);
    return value && value->IsInt64() ? value : nullptr;
}

/// The value as compact text. Unlike `Value::Accept` this does not recurse: a text may nest its values deeper than the
/// stack is large.
String compactText(JsonValue const& root) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    struct Container {
        JsonValue const* value;
        rapidjson::SizeType numWritten;
    };
    std::vector<Container> open;  // innermost last
    const auto write = [&](JsonValue const& value) {
        if (value.IsObject()) {
            writer.StartObject();
        } else if (value.IsArray()) {
            writer.StartArray();
        } else {
            value.Accept(writer);
            return;
        }
        open.push_back({&value, 0});
    };
    write(root);
    while (!open.empty()) {
        JsonValue const& container = *open.back().value;
        const rapidjson::SizeType next = open.back().numWritten++;
        if (container.IsObject() && next < container.MemberCount()) {
            const auto member = container.MemberBegin() + static_cast<std::ptrdiff_t>(next);
            writer.Key(member->name.GetString(), member->name.GetStringLength());
            write(member->value);
        } else if (container.IsArray() && next < container.Size()) {
            write(container[next]);
        } else {
            container.IsObject() ? writer.EndObject() : writer.EndArray();
            open.pop_back();
        }
    }
    return String(buffer.GetString());
}

/// Parses strict JSON; says whether the text is. Does not recurse either.
bool parse(String const& text, rapidjson::Document& document) {
    // The parser ends at a zero byte, which is no JSON wherever it stands.
    if (std::strlen(text.c_str()) != text.size()) return false;
    // From a plain stream: the one that takes a length would let a byte order mark pass.
    document.Parse<rapidjson::kParseIterativeFlag>(text.c_str());
    return !document.HasParseError();
}

}  // namespace

String PlayParams::toJson() const {
    rapidjson::Document document(rapidjson::kObjectType);
    auto& allocator = document.GetAllocator();

    rapidjson::Document frameRate(&allocator);
    frameRate.Parse(m_private->frameRate.toJson().c_str());

    document.AddMember(currentFrameKey, JsonValue(m_private->currentFrame), allocator);
    document.AddMember(startFrameKey, JsonValue(m_private->startFrame), allocator);
    document.AddMember(endFrameKey, JsonValue(m_private->endFrame), allocator);
    document.AddMember(frameRateKey, frameRate, allocator);
    document.AddMember(stepKey, JsonValue(m_private->step), allocator);
    document.AddMember(playModeKey, rapidjson::StringRef(wordOf(playModeWords, m_private->playMode)), allocator);
    document.AddMember(productionModeKey, rapidjson::StringRef(wordOf(productionModeWords, m_private->productionMode)),
                       allocator);
    return compactText(document);
}

Status PlayParams::fromJson(String const& text) {
    rapidjson::Document document;
    if (!parse(text, document)) return Status::invalid_text;

    JsonValue const* frameRate = findTraced(document, frameRateKey, "Object", &JsonValue::IsObject);
    if (!frameRate) return Status::invalid_text;
    JsonValue const* step = findTraced(document, stepKey, "Int", &JsonValue::IsInt);
    if (!step) return Status::invalid_text;
    JsonValue const* playMode = findTraced(document, playModeKey, "String", &JsonValue::IsString);
    if (!playMode) return Status::invalid_text;
    JsonValue const* productionMode = findTraced(document, productionModeKey, "String", &JsonValue::IsString);
    if (!productionMode) return Status::invalid_text;

    // From here on what was stored stays stored, whatever fails behind it.
    m_private->step = step->GetInt();

    const int32 playModeValue = valueOf(playModeWords, *playMode);
    if (playModeValue < 0) return Status::invalid_text;
    m_private->playMode = static_cast<PlayMode>(playModeValue);

    const int32 productionModeValue = valueOf(productionModeWords, *productionMode);
    if (productionModeValue < 0) return Status::invalid_text;
    m_private->productionMode = static_cast<ProductionMode>(productionModeValue);

    JsonValue const* currentFrame = findFrame(document, currentFrameKey);
    JsonValue const* startFrame = findFrame(document, startFrameKey);
    JsonValue const* endFrame = findFrame(document, endFrameKey);
    if (!currentFrame || !startFrame || !endFrame) return Status::invalid_text;
    m_private->currentFrame = currentFrame->GetInt64();
    m_private->startFrame = startFrame->GetInt64();
    m_private->endFrame = endFrame->GetInt64();

    return m_private->frameRate.fromJson(compactText(*frameRate));
}

}  // namespace QRT_0_81
