#ifndef VORNIC_TESTS_FOUNDATION_COPIES_COPY_TEST_H
#define VORNIC_TESTS_FOUNDATION_COPIES_COPY_TEST_H

#include <any>
#include <cstdint>
#include <string>
#include <vector>

#include "foundation/files/QMFileManager.h"
#include "tests/foundation/copies/RecordingCopyDelegate.h"
#include "tests/foundation/files/FileServicesTest.h"
#include "tests/support/machine/ManyBytes.h"

namespace vornic::test {

inline constexpr std::uint64_t kMebibyte = std::uint64_t{1024} * 1024;
inline constexpr const char* kMD5OfNothing = "d41d8cd98f00b204e9800998ecf8427e";

/// Copies, tells `recording` about it, and waits until it was told everything.
inline bool copyRecorded(const std::string& source, const std::vector<std::string>& destinations,
                         std::int32_t verificationType, const RecordingCopyDelegate& recording) {
    const bool result = QMFileManager::copyFileWithProgress(
        source, destinations, verificationType, recording.delegate, std::any(), std::any());
    EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::seconds(60)));
    return result;
}

/// What becomes of a copy without progress and verification.
inline bool copySilently(const std::string& source, const std::vector<std::string>& destinations) {
    return QMFileManager::copyFileWithProgress(source, destinations, QMFileManager::kVerifyNothing,
                                               nullptr, std::any(), std::any());
}

}  // namespace vornic::test

#endif
