#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/qrtKit.h"

namespace qrtplay {

/// Writes JSON from the beginning to the end. Bytes that are no UTF-8, which file names may hold, become replacement
/// characters, and numbers that JSON does not know become null, so that the result can always be read back.
class JsonText final {
public:
    JsonText();
    ~JsonText();
    JsonText(JsonText&&) noexcept;
    JsonText& operator=(JsonText&&) = delete;

    JsonText& beginObject(char const* key = nullptr);
    JsonText& endObject();
    JsonText& beginArray(char const* key = nullptr);
    JsonText& endArray();

    /// Members of an object; without a key items of an array.
    JsonText& add(char const* key, std::string const& text);
    JsonText& add(char const* key, char const* text) { return add(key, std::string(text)); }
    JsonText& add(char const* key, int64 number);
    JsonText& add(char const* key, int number) { return add(key, int64{number}); }
    JsonText& add(char const* key, double number);
    JsonText& add(char const* key, bool isTrue);
    JsonText& add(char const* key, std::vector<std::string> const& texts);
    JsonText& addNull(char const* key);

    /// What has been written, without line breaks.
    [[nodiscard]] std::string text() const;

private:
    struct Writer;
    void putKey(char const* key);

    std::unique_ptr<Writer> m_writer;
};

}  // namespace qrtplay
