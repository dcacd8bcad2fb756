#include "render/qrtJsonText.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <QString>
#include <cmath>

namespace qrtplay {

struct JsonText::Writer {
    rapidjson::StringBuffer buffer;
    // In ASCII: beyond it there are control characters that JSON lets pass and terminals obey.
    rapidjson::Writer<rapidjson::StringBuffer, rapidjson::UTF8<>, rapidjson::ASCII<>> json{buffer};
};

JsonText::JsonText() : m_writer(std::make_unique<Writer>()) {
    constexpr int usefulDecimals = 6;
    m_writer->json.SetMaxDecimalPlaces(usefulDecimals);
}

JsonText::~JsonText() = default;

JsonText::JsonText(JsonText&&) noexcept = default;

void JsonText::putKey(char const* key) {
    if (key) m_writer->json.Key(key);
}

JsonText& JsonText::beginObject(char const* key) {
    putKey(key);
    m_writer->json.StartObject();
    return *this;
}

JsonText& JsonText::endObject() {
    m_writer->json.EndObject();
    return *this;
}

JsonText& JsonText::beginArray(char const* key) {
    putKey(key);
    m_writer->json.StartArray();
    return *this;
}

JsonText& JsonText::endArray() {
    m_writer->json.EndArray();
    return *this;
}

JsonText& JsonText::add(char const* key, std::string const& text) {
    putKey(key);
    const QByteArray valid = QString::fromStdString(text).toUtf8();
    m_writer->json.String(valid.constData(), static_cast<rapidjson::SizeType>(valid.size()));
    return *this;
}

JsonText& JsonText::add(char const* key, int64 number) {
    putKey(key);
    m_writer->json.Int64(number);
    return *this;
}

JsonText& JsonText::add(char const* key, double number) {
    if (!std::isfinite(number)) return addNull(key);
    putKey(key);
    m_writer->json.Double(number);
    return *this;
}

JsonText& JsonText::add(char const* key, bool isTrue) {
    putKey(key);
    m_writer->json.Bool(isTrue);
    return *this;
}

JsonText& JsonText::add(char const* key, std::vector<std::string> const& texts) {
    beginArray(key);
    for (std::string const& text : texts)
        add(nullptr, text);
    return endArray();
}

JsonText& JsonText::addNull(char const* key) {
    putKey(key);
    m_writer->json.Null();
    return *this;
}

std::string JsonText::text() const {
    return {m_writer->buffer.GetString(), m_writer->buffer.GetSize()};
}

}  // namespace qrtplay
