#include "foundation/core/qrtRational.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstring>

namespace QRT_0_81 {

namespace {

constexpr char numeratorKey[] = "numerator";
constexpr char denominatorKey[] = "denominator";

}  // namespace

String Rational::toJson() const {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartObject();
    writer.Key(numeratorKey);
    writer.Int(m_numerator);
    writer.Key(denominatorKey);
    writer.Uint(m_denominator);
    writer.EndObject();
    return String(buffer.GetString());
}

Status Rational::fromJson(String const& text) {
    // The parser ends at a zero byte, which is no JSON wherever it stands.
    if (std::strlen(text.c_str()) != text.size()) return Status::invalid_text;
    rapidjson::Document document;
    // Not the recursive parser: text that is nested deeply enough would exhaust the stack. From a plain stream: the one
    // that takes a length would let a byte order mark pass.
    document.Parse<rapidjson::kParseIterativeFlag>(text.c_str());
    if (document.HasParseError() || !document.IsObject()) return Status::invalid_text;

    rapidjson::Value const& object = document;
    const auto numerator = object.FindMember(numeratorKey);
    const auto denominator = object.FindMember(denominatorKey);
    if (numerator == object.MemberEnd() || !numerator->value.IsInt()) return Status::invalid_text;
    if (denominator == object.MemberEnd() || !denominator->value.IsUint()) return Status::invalid_text;
    if (denominator->value.GetUint() == 0) return Status::invalid_text;

    *this = Rational(numerator->value.GetInt(), denominator->value.GetUint());
    return Status();
}

}  // namespace QRT_0_81
