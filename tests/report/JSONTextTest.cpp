#include <cstdint>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "report/JSONText.h"

namespace vornic {
namespace {

std::string valueOf(std::string_view text) {
    return JSONText().value(text).take();
}

TEST(JSONText, partsMembersAndElements) {
    JSONText json;
    json.beginObject().member("a", true).key("b").beginArray().value(1U).null();
    json.beginObject().endObject().endArray().member("c", "x").endObject();
    EXPECT_EQ(json.take(), R"({"a":true,"b":[1,null,{}],"c":"x"})");
}

TEST(JSONText, goesOnWhereItWasTaken) {
    JSONText json;
    EXPECT_EQ(json.beginArray().value(true).take(), "[true");
    EXPECT_EQ(json.newLine().value(false).take(), ",\nfalse");
    EXPECT_EQ(json.endArray().take(), "]");
    EXPECT_EQ(JSONText().beginArray().newLine().null().take(), "[\nnull");
}

TEST(JSONText, writesTheLargestNumber) {
    EXPECT_EQ(JSONText().value(~std::uint64_t{0}).take(), "18446744073709551615");
}

TEST(JSONText, escapesWhatJSONAsksForAndNothingElse) {
    EXPECT_EQ(valueOf("a\"b\\c\nd\re\tf\x01g/\x7F"), "\"a\\\"b\\\\c\\nd\\re\\tf\\u0001g/\x7F\"");
    EXPECT_EQ(valueOf("\xC3\xA9\xE2\x80\xAE\xF0\x9F\x98\x80"),
              "\"\xC3\xA9\xE2\x80\xAE\xF0\x9F\x98\x80\"");
    EXPECT_EQ(valueOf(std::string_view("\0", 1)), "\"\\u0000\"");
}

TEST(JSONText, replacesBytesThatAreNoText) {
    EXPECT_EQ(valueOf("a\xC3(\xFF"), "\"a\xEF\xBF\xBD(\xEF\xBF\xBD\"");
}

TEST(JSONText, isReadByOthersAsItWasMeant) {
    std::string all;
    for (int code = 0; code < 0x80; ++code) {
        all += static_cast<char>(code);
    }
    all += "\xC2\x80\xEF\xBF\xBF\xF4\x8F\xBF\xBF";
    EXPECT_EQ(nlohmann::json::parse(valueOf(all)).get<std::string>(), all);
}

}  // namespace
}  // namespace vornic
