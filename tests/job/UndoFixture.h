#ifndef VORNIC_TESTS_JOB_UNDO_FIXTURE_H
#define VORNIC_TESTS_JOB_UNDO_FIXTURE_H

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "job/Undo.h"
#include "tests/job/JournaledRepair.h"
#include "tests/platform/volumes/SecondVolume.h"

namespace vornic::test {

/// Takes changes of files back.
class UndoFixture : public JournaledRepairTest {
  protected:
    [[nodiscard]] Undo make() const { return {journal, trash(), "test", "1"}; }
    UndoResult undo(const std::string& name = "Cut.xml") {
        return make().undo(realPath(name), nullptr);
    }
    [[nodiscard]] std::vector<std::string> namesInTrash() const { return namesIn(trash()); }
    [[nodiscard]] std::vector<std::string> notes() const {
        return namesIn(sandbox.home() + "/.local/share/Trash/info");
    }
    [[nodiscard]] std::string bytes(const std::string& name = "Cut.xml") const {
        return readBytes(realPath(name));
    }
    /// Whether a file in the Trash has these bytes.
    [[nodiscard]] bool isInTrash(const std::string& wanted) const {
        for (const std::string& name : namesInTrash()) {
            if (readBytes(trash() + "/" + name) == wanted) {
                return true;
            }
        }
        return false;
    }
};

/// The Trash is a folder on another volume.
class UndoApartFixture : public UndoFixture {
  protected:
    void SetUp() override {
        if (!other.isApartFrom(sandbox.folder())) {
            GTEST_SKIP() << "/dev/shm is no volume of its own";
        }
        std::filesystem::create_directory(other.path("Trash"));
        ASSERT_EQ(chmod(other.path("Trash").c_str(), 0700), 0);
        std::filesystem::create_directory_symlink(other.path("Trash"), trash());
    }

    SecondVolume other;
};

}  // namespace vornic::test

#endif
