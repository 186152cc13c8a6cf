#ifndef VORNIC_TESTS_FOUNDATION_FILE_SERVICES_TEST_H
#define VORNIC_TESTS_FOUNDATION_FILE_SERVICES_TEST_H

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/Thread.h"
#include "tests/support/ConsoleCapture.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Sandbox.h"
#include "tests/support/Unprivileged.h"

namespace vornic::test {

/// The lines that are expected of a log or a console.
using Lines = std::vector<std::string>;

/// Tests of what reads and writes large files, with a log that prints, as an ordinary user.
class FileServicesTest : public ::testing::Test {
  protected:
    ~FileServicesTest() override { waitForBackgroundCalls(); }

    static void waitForBackgroundCalls() {
        EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::seconds(60)));
    }

    /// A file of that many zero bytes that takes no room on the disk.
    [[nodiscard]] std::string makeSparse(std::string_view name, std::uint64_t size) const {
        const std::string path = sandbox.write(name, "");
        EXPECT_EQ(truncate(path.c_str(), static_cast<off_t>(size)), 0);
        return path;
    }

    Unprivileged user;
    Sandbox sandbox;
    LogCapture log{LogCapture::Printing::on};
};

}  // namespace vornic::test

#endif
