#include "foundation/core/qrtRational.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

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
    rapidjson::Document document;
    document.Parse(text.c_str(), text.size());
    if (document.HasParseError() || !document.IsObject()) return Status::invalid_text;

    const auto numerator = document.FindMember(numeratorKey);
    const auto denominator = document.FindMember(denominatorKey);
    if (numerator == document.MemberEnd() || !numerator->value.IsInt()) return Status::invalid_text;
    if (denominator == document.MemberEnd() || !denominator->value.IsUint()) return Status::invalid_text;
    if (denominator->value.GetUint() == 0) return Status::invalid_text;

    *this = Rational(numerator->value.GetInt(), denominator->value.GetUint());
    return Status();
}

}  // namespace QRT_0_81
