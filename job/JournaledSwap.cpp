#include "job/JournaledSwap.h"

#include <chrono>
#include <filesystem>
#include <system_error>
#include <tuple>
#include <utility>

#include <sys/stat.h>

#include "foundation/log/QMLog.h"
#include "platform/rights/HeldPath.h"

namespace vornic {
namespace {

/// The path with the links in its folders resolved.
std::string resolved(const std::string& path) {
    const std::optional<platform::HeldPath> held = platform::holdPath(path);
    return held ? held->path() : path;
}

JournalFile fileOf(const platform::FileVersion& version,
                   const platform::ContentDigest::Value& digest) {
    return {.identity = version.identity, .size = version.size, .digest = digest};
}

}  // namespace

JournaledSwap::JournaledSwap(std::string program, std::string version, JournalEntry::Action action)
    : program_(std::move(program)),
      version_(std::move(version)),
      action_(action),
      journal_(Journal::ofUser()) {}

bool JournaledSwap::willSwap(const SwapIntent& intent, ErrorSlot& /*error*/) {
    if (!journal_) {
        return true;
    }
    JournalEntry entry{.program = program_,
                       .version = version_,
                       .action = action_,
                       .file = resolved(intent.source),
                       .workingCopy = resolved(intent.workingCopy),
                       .before = fileOf(intent.sourceVersion, intent.sourceDigest),
                       .after = fileOf(intent.copyVersion, intent.copyDigest)};
    struct stat status {};
    if (lstat(intent.source.c_str(), &status) == 0 && S_ISLNK(status.st_mode)) {
        entry.before.isLink = true;
        entry.before.identity = {.device = status.st_dev, .inode = status.st_ino};
        std::error_code ignored;
        entry.before.linkText = std::filesystem::read_symlink(intent.source, ignored).string();
    }
    ErrorSlot reason;
    run_ = journal_->begin(std::move(entry), reason);
    if (run_) {
        constexpr std::chrono::seconds kLongestWait{2};
        claim_ = journal_->claim(run_->entry().file, kLongestWait, reason);
    }
    if (reason) {
        QMLog::appendLog("%@", reason->localizedDescription());
    }
    return true;
}

void JournaledSwap::didSwap(const SwapIntent& /*intent*/, const std::string& original) {
    ErrorSlot reason;
    if (run_) {
        isWrittenDown_ = journal_->finish(std::move(*run_), resolved(original), reason);
        run_.reset();
    }
    claim_.reset();
    if (reason) {
        QMLog::appendLog("%@", reason->localizedDescription());
    }
}

void JournaledSwap::didNotSwap(const SwapIntent& /*intent*/) {
    ErrorSlot reason;
    if (run_) {
        std::ignore = journal_->takeBack(std::move(*run_), reason);
        run_.reset();
    }
    claim_.reset();
}

}  // namespace vornic
