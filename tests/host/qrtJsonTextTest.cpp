#include "render/qrtJsonText.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <limits>

namespace qrtplay {
namespace {

TEST(JsonText, canBeReadBack) {
    JsonText json;
    json.beginObject().add("text", "a \"b\"\n\u00fc").add("number", int64{1} << 60).add("real", 0.25).add("yes", true);
    json.addNull("none").add("list", std::vector<std::string>{"x", "y"});
    json.beginObject("inner").add("n", 1).endObject().beginArray("empty").endArray().endObject();
    rapidjson::Document read;
    ASSERT_FALSE(read.Parse(json.text().c_str()).HasParseError());
    EXPECT_STREQ(read["text"].GetString(), "a \"b\"\n\u00fc");
    EXPECT_EQ(read["number"].GetInt64(), int64{1} << 60);
    EXPECT_EQ(read["real"].GetDouble(), 0.25);
    EXPECT_TRUE(read["yes"].GetBool());
    EXPECT_TRUE(read["none"].IsNull());
    EXPECT_EQ(read["list"].Size(), 2u);
    EXPECT_EQ(read["inner"]["n"].GetInt(), 1);
    EXPECT_TRUE(read["empty"].Empty());
    EXPECT_EQ(json.text().find('\n'), std::string::npos);
}

TEST(JsonText, holdsNothingThatControlsATerminal) {
    JsonText json;
    const std::string text = "na\x1b]0;title\ame\u009b31m \u00e4";
    json.beginObject().add("text", text).endObject();
    for (const char sign : json.text())
        EXPECT_TRUE(sign >= ' ' && sign < '\x7f') << static_cast<int>(sign);
    rapidjson::Document read;
    ASSERT_FALSE(read.Parse(json.text().c_str()).HasParseError());
    EXPECT_EQ(read["text"].GetString(), text);
}

TEST(JsonText, staysReadableWhateverItIsGiven) {
    JsonText json;
    json.beginObject().add("path", std::string("a\xff\xfe.png")).add("rate", std::numeric_limits<double>::infinity());
    json.endObject();
    rapidjson::Document read;
    read.Parse<rapidjson::kParseValidateEncodingFlag>(json.text().c_str());
    ASSERT_FALSE(read.HasParseError());
    EXPECT_EQ(std::string(read["path"].GetString()).substr(0, 1), "a");
    EXPECT_TRUE(read["rate"].IsNull());
}

}  // namespace
}  // namespace qrtplay
