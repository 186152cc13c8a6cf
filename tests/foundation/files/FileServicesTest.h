#ifndef VORNIC_TESTS_FOUNDATION_FILES_FILE_SERVICES_TEST_H
#define VORNIC_TESTS_FOUNDATION_FILES_FILE_SERVICES_TEST_H

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

#include "platform/threads/Thread.h"
#include "tests/foundation/files/FileManagerTest.h"
#include "tests/support/programs/ConsoleCapture.h"

namespace vornic::test {

/// The lines that are expected of a log or a console.
using Lines = std::vector<std::string>;

/// Tests of what reads and writes large files, with a log that prints, as an ordinary user.
class FileServicesTest : public FileManagerTest {
  protected:
    FileServicesTest() { LogCapture::start(LogCapture::Printing::on); }
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
};

}  // namespace vornic::test

#endif
