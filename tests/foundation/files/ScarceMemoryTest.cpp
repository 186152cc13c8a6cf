// A double for a machine without memory: this program's blocks of 64 KiB can be refused.

#include <atomic>
#include <cstdlib>
#include <new>

#include "foundation/copies/BlockDigester.h"
#include "tests/foundation/copies/CopyTest.h"

namespace {

std::atomic<bool> memoryIsScarce = false;  // NOLINT: the operator below has no other way to know

}  // namespace

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return memoryIsScarce && size >= vornic::kFileBlockSize ? nullptr : std::malloc(size);
}

void operator delete[](void* memory) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

void* operator new[](std::size_t size) {
    void* memory = std::malloc(size);
    return memory != nullptr ? memory : throw std::bad_alloc();
}

namespace vornic {
namespace {

using test::Lines;

class ScarceMemoryTest : public test::FileServicesTest {
  protected:
    ScarceMemoryTest() {
        testing::internal::CaptureStdout();
        memoryIsScarce = true;
    }
    ~ScarceMemoryTest() override { static_cast<void>(printed()); }

    std::string printed() {
        if (memoryIsScarce.exchange(false)) {
            printed_ = testing::internal::GetCapturedStdout();
        }
        return printed_;
    }
    void expectLoggedAndPrinted(const std::string& line) {
        EXPECT_EQ(printed(), line + "\n");
        EXPECT_EQ(log.entries(), Lines{line});
    }

    std::string source = sandbox.write("source", "abc");
    std::string printed_;
};

TEST_F(ScarceMemoryTest, endsAChecksum) {
    EXPECT_EQ(QMFileManager::md5HashForFile(source), std::nullopt);
    expectLoggedAndPrinted("Error reading file " + source + " - out of memory");
}

TEST_F(ScarceMemoryTest, endsACopyWhoseDestinationsAreThere) {
    test::RecordingCopyDelegate recording;
    EXPECT_FALSE(test::copyRecorded(source, {sandbox.path("copy")}, 1, recording));
    expectLoggedAndPrinted("Error copying file " + source + " - out of memory");
    EXPECT_EQ(test::readBytes(sandbox.path("copy")), "");
    EXPECT_EQ(recording.finished, 0);
}

TEST_F(ScarceMemoryTest, endsTheJoiningOfFilesAndKeepsThem) {
    const std::string other = sandbox.write("other", "def");
    test::ConsoleCapture console;
    EXPECT_FALSE(QMFileManager::combineFiles({source, other}, sandbox.path("combined"), true));
    EXPECT_EQ(console.lines(), Lines{"Error combining file " + source + " - out of memory"});
    EXPECT_EQ(test::readBytes(source), "abc");
}

}  // namespace
}  // namespace vornic
