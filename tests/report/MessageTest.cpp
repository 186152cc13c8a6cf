#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "report/Message.h"

namespace vornic {
namespace {

using Names = std::vector<std::string_view>;

TEST(Message, putsEachArgumentInThePlaceOfItsName) {
    EXPECT_EQ(formatMessage("{a}, {b} and {a}", {{"b", "2"}, {"a", "1"}}), "1, 2 and 1");
    EXPECT_EQ(formatMessage("nothing to do", {{"a", "1"}}), "nothing to do");
    EXPECT_EQ(formatMessage("", {}), "");
}

TEST(Message, neverReadsTheTextOfAnArgument) {
    EXPECT_EQ(formatMessage("{a}{b}", {{"a", "{b} %@ {{"}, {"b", "}"}}), "{b} %@ {{}");
}

TEST(Message, keepsANameWithoutArgument) {
    EXPECT_EQ(formatMessage("<{a}>", {}), "<{a}>");
    EXPECT_EQ(formatMessage("{}", {{"a", "1"}}), "{}");
}

TEST(Message, takesTwoBracesForOne) {
    EXPECT_EQ(formatMessage("{{a} {a}", {{"a", "1"}}), "{a} 1");
}

TEST(Message, takesABraceThatIsNotClosedAsItStands) {
    EXPECT_EQ(formatMessage("{a", {{"a", "1"}}), "{a");
    EXPECT_EQ(formatMessage("a}", {{"a", "1"}}), "a}");
}

TEST(Message, reportsTheNames) {
    EXPECT_EQ(argumentNames("{{x} {b}, {a}"), (Names{"b", "a"}));
    EXPECT_EQ(argumentNames("none"), Names{});
}

TEST(Message, keepsNumbersAndTextsAsTheyRead) {
    const std::string text = "a\xFF%@";
    const std::vector<MessageArgument> given = {{"text", text}, {"number", -7}, {"size", 7U}};
    EXPECT_EQ(kept(given), (Arguments{{"text", "a\xFF%@"}, {"number", "-7"}, {"size", "7"}}));
}

}  // namespace
}  // namespace vornic
