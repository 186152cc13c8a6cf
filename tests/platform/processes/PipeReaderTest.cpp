#include <future>
#include <string>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/processes/Pipe.h"
#include "platform/processes/PipeReader.h"
#include "tests/support/machine/Waiting.h"

namespace vornic::platform {
namespace {

TEST(PipeReaderTest, readsWhatIsThere) {
    Pipe pipe = makePipe();
    PipeReader reader(std::move(pipe.readingEnd));
    ASSERT_EQ(writeAll(pipe.writingEnd.get(), "one", 3), 0);
    EXPECT_EQ(reader.readAvailable(), "one");
    ASSERT_EQ(writeAll(pipe.writingEnd.get(), "two", 3), 0);
    EXPECT_EQ(reader.readAvailable(), "two");
}

TEST(PipeReaderTest, waitsForBytes) {
    Pipe pipe = makePipe();
    PipeReader reader(std::move(pipe.readingEnd));
    std::thread writer([&, reading = gettid()] {
        EXPECT_TRUE(test::fallsAsleep(reading));
        EXPECT_EQ(writeAll(pipe.writingEnd.get(), "late", 4), 0);
    });
    EXPECT_EQ(reader.readAvailable(), "late");
    writer.join();
}

TEST(PipeReaderTest, yieldsNothingAtTheEndHoweverOften) {
    Pipe pipe = makePipe();
    PipeReader reader(std::move(pipe.readingEnd));
    ASSERT_EQ(writeAll(pipe.writingEnd.get(), "last", 4), 0);
    pipe.writingEnd.close();
    EXPECT_EQ(reader.readAvailable(), "last");
    EXPECT_EQ(reader.readAvailable(), "");
    EXPECT_EQ(reader.readAvailable(), "");
}

TEST(PipeReaderTest, readsAtMost64KiBAtOnce) {
    Pipe pipe = makePipe();
    ASSERT_GE(fcntl(pipe.writingEnd.get(), F_SETPIPE_SZ, 131072), 131072);
    PipeReader reader(std::move(pipe.readingEnd));
    const std::string flood(100000, 'x');
    ASSERT_EQ(writeAll(pipe.writingEnd.get(), flood.data(), flood.size()), 0);
    EXPECT_EQ(reader.readAvailable().size(), 65536U);
    EXPECT_EQ(reader.readAvailable().size(), flood.size() - 65536U);
}

TEST(PipeReaderTest, wakesItsReaderWhenItIsClosed) {
    Pipe pipe = makePipe();
    PipeReader reader(std::move(pipe.readingEnd));
    std::string seen = "not read";
    std::promise<pid_t> reading;
    std::thread thread([&] {
        reading.set_value(gettid());
        seen = reader.readAvailable();
    });
    EXPECT_TRUE(test::fallsAsleep(reading.get_future().get()));
    reader.close();
    thread.join();
    EXPECT_EQ(seen, "");
    EXPECT_EQ(reader.readAvailable(), "");
}

TEST(PipeReaderTest, closesTheDescriptorAtOnceWhenNobodyReads) {
    Pipe pipe = makePipe();
    const int number = pipe.readingEnd.get();
    PipeReader reader(std::move(pipe.readingEnd));
    reader.close();
    EXPECT_EQ(fcntl(number, F_GETFD), -1);
    reader.close();
    EXPECT_EQ(reader.readAvailable(), "");
}

TEST(PipeReaderTest, closesTheDescriptorWhenItsReaderHasWoken) {
    Pipe pipe = makePipe();
    const int number = pipe.readingEnd.get();
    PipeReader reader(std::move(pipe.readingEnd));
    std::promise<pid_t> reading;
    std::thread thread([&] {
        reading.set_value(gettid());
        static_cast<void>(reader.readAvailable());
    });
    EXPECT_TRUE(test::fallsAsleep(reading.get_future().get()));
    reader.close();
    thread.join();
    EXPECT_EQ(fcntl(number, F_GETFD), -1);
}

}  // namespace
}  // namespace vornic::platform
