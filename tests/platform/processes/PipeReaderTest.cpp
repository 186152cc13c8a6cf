#include <chrono>
#include <string>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/processes/Pipe.h"
#include "platform/processes/PipeReader.h"

namespace vornic::platform {
namespace {

using namespace std::chrono_literals;

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
    std::thread writer([&] {
        std::this_thread::sleep_for(30ms);
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
    std::thread thread([&] { seen = reader.readAvailable(); });
    std::this_thread::sleep_for(30ms);
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
    std::thread thread([&] { static_cast<void>(reader.readAvailable()); });
    std::this_thread::sleep_for(30ms);
    reader.close();
    thread.join();
    EXPECT_EQ(fcntl(number, F_GETFD), -1);
}

}  // namespace
}  // namespace vornic::platform
