#include "timeline/qrtOtioJson.h"

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <string_view>
#include <vector>

namespace qrtplay {

namespace {

using rapidjson::SizeType;

/// Passes on what the parser finds, without the members named "metadata".
class Sieve final {
public:
    Sieve(rapidjson::Document& document, size_t mostValues) : m_document(document), m_mostValues(mostValues) {}

    [[nodiscard]] std::string const& complaint() const noexcept { return m_complaint; }

    bool Null() {
        return scalar([&] { return m_document.Null(); });
    }
    bool Bool(bool value) {
        return scalar([&] { return m_document.Bool(value); });
    }
    bool Int(int value) {
        return scalar([&] { return m_document.Int(value); });
    }
    bool Uint(unsigned value) {
        return scalar([&] { return m_document.Uint(value); });
    }
    bool Int64(int64_t value) {
        return scalar([&] { return m_document.Int64(value); });
    }
    bool Uint64(uint64_t value) {
        return scalar([&] { return m_document.Uint64(value); });
    }
    bool Double(double value) {
        return scalar([&] { return m_document.Double(value); });
    }
    bool RawNumber(char const* text, SizeType length, bool copy) {
        return scalar([&] { return m_document.RawNumber(text, length, copy); });
    }
    bool String(char const* text, SizeType length, bool copy) {
        return scalar([&] { return m_document.String(text, length, copy); });
    }
    bool StartObject() {
        return begin([&] { return m_document.StartObject(); });
    }
    bool Key(char const* text, SizeType length, bool copy) {
        if (m_leftOutDepth > 0) return true;
        m_leavesOutNext = std::string_view(text, length) == "metadata";
        if (m_leavesOutNext) return true;
        ++m_memberCounts.back();
        return m_document.Key(text, length, copy);
    }
    bool EndObject(SizeType) {
        return end([&](SizeType count) { return m_document.EndObject(count); });
    }
    bool StartArray() {
        return begin([&] { return m_document.StartArray(); });
    }
    bool EndArray(SizeType count) {
        return end([&](SizeType) { return m_document.EndArray(count); });
    }

private:
    template <class PassOn>
    bool scalar(PassOn passOn) {
        if (m_leftOutDepth > 0) return true;
        if (m_leavesOutNext) {
            m_leavesOutNext = false;
            return true;
        }
        return isRoom() && passOn();
    }

    template <class PassOn>
    bool begin(PassOn passOn) {
        if (m_memberCounts.size() == maxJsonDepth) {
            m_complaint = "is nested more than " + std::to_string(maxJsonDepth) + " deep";
            return false;
        }
        m_memberCounts.push_back(0);
        if (m_leftOutDepth > 0) return true;
        if (m_leavesOutNext) {
            m_leavesOutNext = false;
            m_leftOutDepth = m_memberCounts.size();
            return true;
        }
        return isRoom() && passOn();
    }

    template <class PassOn>
    bool end(PassOn passOn) {
        const size_t depth = m_memberCounts.size();
        const SizeType count = m_memberCounts.back();
        m_memberCounts.pop_back();
        if (m_leftOutDepth == 0) return passOn(count);
        if (m_leftOutDepth == depth) m_leftOutDepth = 0;
        return true;
    }

    bool isRoom() {
        if (++m_valueCount <= m_mostValues) return true;
        m_complaint = "holds more than " + std::to_string(m_mostValues) + " values";
        return false;
    }

    rapidjson::Document& m_document;
    const size_t m_mostValues;
    std::vector<SizeType> m_memberCounts;  // of every open object or array; those of arrays are not looked at
    size_t m_leftOutDepth = 0;             // of the open object or array that is left out; 0: none
    bool m_leavesOutNext = false;
    size_t m_valueCount = 0;
    std::string m_complaint;
};

}  // namespace

Outcome readOtioJson(std::string const& text, rapidjson::Document& document, size_t mostValues) {
    // Parsing without recursion leaves the stack alone, however deep the text is nested.
    constexpr unsigned flags =
        rapidjson::kParseIterativeFlag | rapidjson::kParseNanAndInfFlag | rapidjson::kParseFullPrecisionFlag;
    rapidjson::StringStream stream(text.c_str());
    rapidjson::Reader reader;
    Sieve sieve(document, mostValues);
    rapidjson::ParseResult result;
    const auto parse = [&](rapidjson::Document&) {
        result = reader.Parse<flags>(stream, sieve);
        return !result.IsError();
    };
    document.Populate(parse);
    if (!result.IsError()) return Outcome();
    const auto offset = static_cast<std::ptrdiff_t>(std::min(result.Offset(), text.size()));
    const std::string line = std::to_string(1 + std::count(text.begin(), text.begin() + offset, '\n'));
    if (!sieve.complaint().empty()) return Outcome::failure(sieve.complaint() + " (line " + line + ")");
    return Outcome::failure("is no JSON: line " + line + ": " + rapidjson::GetParseError_En(result.Code()));
}

}  // namespace qrtplay
