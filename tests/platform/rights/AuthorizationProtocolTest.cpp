#include <array>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/socket.h>

#include "platform/files/FileDescriptor.h"
#include "platform/rights/AuthorizationProtocol.h"

namespace vornic::platform {
namespace {

using namespace std::literals;

TEST(AuthorizationProtocolTest, bringsRequestsThroughAsTheyAre) {
    for (const ToolRequest& request :
         {ToolRequest{.wantsOutput = true,
         .tool = "/bin/rm",
         .arguments = {"-Rdf", "/a b\n"},
         .seen = {SeenPath{}, lookAtPath("/tmp")}},
          ToolRequest{.wantsOutput = false,
          .tool = "/bin/mv",
          .arguments = {"", "\xC3\xA9"},
          .seen = {lookAtPath("/no/such"), lookAtNearestFolder("/tmp/no/such")}},
          ToolRequest{.wantsOutput = false, .tool = "", .arguments = {}, .seen = {}}}) {
        const std::optional<std::string> message = encodeRequest(request);
        ASSERT_TRUE(message);
        EXPECT_EQ(decodeRequest(*message), request);
    }
}

TEST(AuthorizationProtocolTest, encodesNothingThatWouldBeReadDifferently) {
    EXPECT_EQ(encodeRequest(
                  {.wantsOutput = false, .tool = "/bin/rm", .arguments = {"a\0b"s}, .seen = {}}),
              std::nullopt);
    EXPECT_EQ(encodeRequest({.wantsOutput = false, .tool = "a\0b"s, .arguments = {}, .seen = {}}),
              std::nullopt);
}

TEST(AuthorizationProtocolTest, encodesNoRequestThatIsTooLong) {
    EXPECT_TRUE(encodeRequest({.wantsOutput = false,
                               .tool = "/bin/rm",
                               .arguments = {std::string(8192, 'x')},
                               .seen = {}}));
    EXPECT_EQ(encodeRequest({.wantsOutput = false,
                             .tool = "/bin/rm",
                             .arguments = {std::string(70000, 'x')},
                             .seen = {}}),
              std::nullopt);
}

TEST(AuthorizationProtocolTest, decodesNoRequestThatIsNone) {
    EXPECT_EQ(decodeRequest(""), std::nullopt);
    EXPECT_EQ(decodeRequest("r"), std::nullopt);
    EXPECT_EQ(decodeRequest("x/bin/rm\0"sv), std::nullopt);
    EXPECT_EQ(decodeRequest("r/bin/rm"sv), std::nullopt) << "not ended";
    EXPECT_EQ(decodeRequest("s0"sv), std::nullopt);
    EXPECT_EQ(decodeRequest("r/bin/rm\0-Rdf\0"sv), std::nullopt) << "nothing seen";
    for (const std::string_view seen :
         {"", "?", "? x", "1:2", "1:2 3", "1: -", "-1:2 ?", "? ? ?"}) {
        EXPECT_EQ(decodeRequest("r/bin/rm\0-Rdf\0"s.append(seen) + "\0"s), std::nullopt) << seen;
    }
}

TEST(AuthorizationProtocolTest, bringsStatusesThrough) {
    EXPECT_EQ(decodeStatus(encodeStatus(0)), 0);
    EXPECT_EQ(decodeStatus(encodeStatus(-60031)), -60031);
    for (const std::string_view message : {"", "s", "s1x", "0", "o0"}) {
        EXPECT_EQ(decodeStatus(message), std::nullopt) << message;
    }
}

TEST(AuthorizationProtocolTest, bringsOutputThrough) {
    EXPECT_EQ(decodeOutput(encodeOutput("")), "");
    EXPECT_EQ(decodeOutput(encodeOutput("a\0b"s)), "a\0b"s);
    EXPECT_EQ(decodeOutput("s0"), std::nullopt);
    EXPECT_EQ(decodeOutput(""), std::nullopt);
}

class MessageTest : public testing::Test {
  protected:
    MessageTest() {
        std::array<int, 2> ends{};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
        one = FileDescriptor(ends[0]);
        other = FileDescriptor(ends[1]);
    }
    FileDescriptor one;
    FileDescriptor other;
};

TEST_F(MessageTest, keepsMessagesApart) {
    EXPECT_TRUE(sendMessage(one.get(), "first"));
    EXPECT_TRUE(sendMessage(one.get(), "second\0half"sv));
    EXPECT_EQ(receiveMessage(other.get()), "first");
    EXPECT_EQ(receiveMessage(other.get()), "second\0half"s);
}

TEST_F(MessageTest, endsWithTheOtherEnd) {
    EXPECT_TRUE(sendMessage(one.get(), "last"));
    one.close();
    EXPECT_EQ(receiveMessage(other.get()), "last");
    EXPECT_EQ(receiveMessage(other.get()), std::nullopt);
    EXPECT_FALSE(sendMessage(other.get(), "nobody listens")) << "and no signal ends the process";
}

TEST_F(MessageTest, bringsTheLargestOutputThrough) {
    const std::string output(kLargestOutputMessage, 'x');
    EXPECT_TRUE(sendMessage(one.get(), encodeOutput(output)));
    EXPECT_EQ(decodeOutput(receiveMessage(other.get()).value_or("")), output);
}

TEST_F(MessageTest, refusesAMessageThatIsCutOff) {
    EXPECT_TRUE(sendMessage(one.get(), std::string(70000, 'x')));
    EXPECT_EQ(receiveMessage(other.get()), std::nullopt);
}

}  // namespace
}  // namespace vornic::platform
