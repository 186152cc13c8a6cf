// The library's checksums and copies as a program, to be measured as a whole process.

#include <any>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/copies/BlockDigester.h"
#include "foundation/copies/FileCopyDelegate.h"
#include "foundation/files/QMFileManager.h"
#include "platform/files/FileDescriptor.h"
#include "platform/threads/Thread.h"

namespace vornic::bench {

namespace {

constexpr int kWrongUsage = 2;

/// There is no form for files of this kind.
QMFileManager::Checksum sha256HashForFile(const std::string& path) {
    const ErrnoOr<platform::FileDescriptor> file = platform::openRegularFile(path, true);
    std::optional<platform::Digest> digest = platform::Digest::create(platform::DigestKind::sha256);
    const FileBlock block = makeFileBlock();
    while (file && digest && block) {
        const std::size_t count =
            platform::readBlock(file->get(), block.get(), kFileBlockSize).length;
        if (count == 0) {
            return QMFileManager::sha256HashWithContext(*digest);
        }
        digest->update(block.get(), count);
    }
    return std::nullopt;
}

QMFileManager::Checksum hash(std::string_view kind, const std::string& path) {
    if (kind == "md5") {
        return QMFileManager::md5HashForFile(path);
    }
    if (kind == "sha1") {
        return QMFileManager::sha1HashForFile(path);
    }
    if (kind == "sha256") {
        return sha256HashForFile(path);
    }
    return QMFileManager::sha512HashForFile(path);
}

/// @return true when the copy was made, every destination was verified, and `withProgress` was
/// told about it.
bool copy(bool withProgress, const std::string& source,
          const std::vector<std::string>& destinations) {
    std::atomic<int> mismatches = 0;
    std::atomic<int> reports = 0;
    auto delegate = std::make_shared<FileCopyDelegate>();
    delegate->fileCopyVerificationFailed = [&](const auto&, const std::string&) { ++mismatches; };
    if (withProgress) {
        delegate->fileCopyBytesWritten = [&](std::uint64_t, const auto&) { ++reports; };
        delegate->fileCopyShouldContinue = [](const auto&) { return true; };
    }
    const bool copied = QMFileManager::copyFileWithProgress(
        source, destinations, QMFileManager::kVerifySHA256, delegate, std::any(), std::any());
    platform::joinDetachedThreads(std::chrono::seconds(10));
    return copied && mismatches == 0 && (reports > 0) == withProgress;
}

}  // namespace

}  // namespace vornic::bench

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 3 && arguments[0] == "hash") {
        const auto checksum = vornic::bench::hash(arguments[1], arguments[2]);
        std::puts(checksum.value_or("").c_str());
        return checksum ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    if (arguments.size() >= 3 && arguments[0].starts_with("copy")) {
        const bool copied = vornic::bench::copy(arguments[0] == "copy-with-progress", arguments[1],
                                                {arguments.begin() + 2, arguments.end()});
        return copied ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    std::fputs(
        "Usage: bench-files hash KIND FILE\n"
        "       bench-files copy|copy-with-progress SOURCE DESTINATION...\n",
        stderr);
    return vornic::bench::kWrongUsage;
}
