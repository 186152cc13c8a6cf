#ifndef VORNIC_TESTS_JOB_JOURNALED_REPAIR_H
#define VORNIC_TESTS_JOB_JOURNALED_REPAIR_H

#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "job/Journal.h"
#include "job/JournalFiles.h"
#include "platform/rights/HeldPath.h"
#include "platform/volumes/Trash.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::test {

/// A home with a journal, a Trash and files that were changed in their places.
class JournaledRepairTest : public SandboxTest {
  protected:
    [[nodiscard]] std::string trash() const { return sandbox.home() + "/.Trash"; }
    [[nodiscard]] std::string realPath(const std::string& name) const {
        return std::filesystem::canonical(sandbox.folder()).string() + "/" + name;
    }
    [[nodiscard]] JournalFile known(const std::string& path) {
        return journalFileAt(path, error).value_or(JournalFile());
    }
    /// What a repair announces: the file at its path and the new one beside it.
    [[nodiscard]] JournalEntry announced(const std::string& name) {
        const std::string file = realPath(name);
        const std::string copy = realPath("copy of " + name);
        return {.program = "test",
                .version = "1",
                .file = file,
                .workingCopy = copy,
                .before = known(file),
                .after = known(copy)};
    }
    std::string recycle(const std::string& path, const std::string& name) {
        const auto item = platform::holdPath(path);
        const auto opened = platform::Trash::open(trash(), error);
        const auto taken = item && opened ? opened->take(*item, name, error) : std::nullopt;
        EXPECT_TRUE(taken);
        return taken ? taken->path() : "";
    }
    /// Puts a new file with these bytes into the place of the one that is there.
    void repair(const std::string& name, const std::string& bytes) {
        sandbox.write("copy of " + name, bytes);
        auto run = journal.begin(announced(name), error);
        ASSERT_TRUE(run);
        const std::string original =
            recycle(realPath(name), std::filesystem::path(name).filename());
        std::filesystem::rename(realPath("copy of " + name), realPath(name));
        ASSERT_TRUE(journal.finish(std::move(*run), original, error));
    }

    Journal journal = Journal::ofUser().value();
    ErrorSlot error;
};

}  // namespace vornic::test

#endif
