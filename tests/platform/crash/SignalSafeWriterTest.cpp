#include <functional>
#include <limits>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/crash/SignalSafeWriter.h"
#include "platform/files/FileDescriptor.h"
#include "platform/processes/Pipe.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {
namespace {

class SignalSafeWriterTest : public test::SandboxTest {
  protected:
    std::string written(const std::function<void(SignalSafeWriter&)>& write) const {
        const std::string path = sandbox.write("written", "");
        const FileDescriptor file(open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC));
        {
            SignalSafeWriter writer(file.get());
            write(writer);
        }
        return test::readBytes(path);
    }
};

TEST_F(SignalSafeWriterTest, writesDecimalNumbersWithLeadingZeros) {
    EXPECT_EQ(written([](SignalSafeWriter& writer) {
                  writer.decimal(0).text(" ").decimal(7, 4).text(" ").decimal(12345, 4).text(" ");
                  writer.decimal(std::numeric_limits<std::uint64_t>::max());
              }),
              "0 0007 12345 18446744073709551615");
}

TEST_F(SignalSafeWriterTest, writesHexadecimalNumbers) {
    EXPECT_EQ(written([](SignalSafeWriter& writer) {
                  writer.hexadecimal(0).text(" ").hexadecimal(0xabc, 16).text(" ");
                  writer.hexadecimal(std::numeric_limits<std::uint64_t>::max(), 16);
              }),
              "0x0 0x0000000000000abc 0xffffffffffffffff");
}

TEST_F(SignalSafeWriterTest, writesDatesInUniversalTime) {
    EXPECT_EQ(written([](SignalSafeWriter& writer) {
                  writer.date(0).text(", ").date(951'782'399).text(", ").date(1'795'331'221);
              }),
              "1970-01-01 00:00:00 +0000, 2000-02-28 23:59:59 +0000, 2026-11-22 07:07:01 +0000");
}

TEST_F(SignalSafeWriterTest, writesMoreThanItsBufferHolds) {
    const std::string large(5000, 'x');
    EXPECT_EQ(written([&](SignalSafeWriter& writer) { writer.text("a").text(large).text("b"); }),
              "a" + large + "b");
}

TEST_F(SignalSafeWriterTest, keepsTextUntilItIsFlushed) {
    const std::string path = sandbox.write("written", "");
    const FileDescriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    SignalSafeWriter writer(file.get());
    writer.text("a");
    EXPECT_EQ(test::readBytes(path), "");
    writer.flush();
    EXPECT_EQ(test::readBytes(path), "a");
    writer.flush();
    EXPECT_EQ(test::readBytes(path), "a");
}

TEST_F(SignalSafeWriterTest, goesOnAfterWhatCannotBeWritten) {
    Pipe pipe = makePipe();
    ASSERT_EQ(fcntl(pipe.writingEnd.get(), F_SETFL, O_NONBLOCK), 0);
    const auto size = static_cast<std::size_t>(fcntl(pipe.writingEnd.get(), F_GETPIPE_SZ));
    std::string bytes(size, 'x');
    ASSERT_EQ(writeAll(pipe.writingEnd.get(), bytes.data(), bytes.size()), 0);
    SignalSafeWriter writer(pipe.writingEnd.get());
    writer.text(std::string(5000, 'y')).flush();
    ASSERT_EQ(read(pipe.readingEnd.get(), bytes.data(), size), static_cast<ssize_t>(size));
    EXPECT_EQ(bytes, std::string(size, 'x'));
    writer.text("z").flush();
    ASSERT_EQ(read(pipe.readingEnd.get(), bytes.data(), size), 1);
    EXPECT_EQ(bytes.front(), 'z');
}

}  // namespace
}  // namespace vornic::platform
