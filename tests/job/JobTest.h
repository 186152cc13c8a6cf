#ifndef VORNIC_TESTS_JOB_JOB_TEST_H
#define VORNIC_TESTS_JOB_JOB_TEST_H

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "job/FileSwap.h"
#include "job/Waiting.h"
#include "job/WorkingCopy.h"
#include "tests/support/fakes/RecordingSwapObserver.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"

namespace vornic::test {

using Strings = std::vector<std::string>;
using Notes = std::vector<Note>;

/// Writes down that a job waits, and does then, once, what a test wants.
class RecordingWaiting : public Waiting {
  public:
    RecordingWaiting() : Waiting{} {
        tell = [this](const std::string& path) {
            waits.push_back(path);
            if (onWait) {
                onWait();
            }
        };
        stop = StopToken([this] {
            if (onPoll) {
                std::exchange(onPoll, nullptr)();
            }
            return cancelled;
        });
    }
    RecordingWaiting(const RecordingWaiting&) = delete;
    RecordingWaiting& operator=(const RecordingWaiting&) = delete;

    Strings waits;
    bool cancelled = false;
    std::function<void()> onPoll;
    std::function<void()> onWait;
};

/// A source with a working copy of it.
class JobTest : public ::testing::Test {
  protected:
    void SetUp() override { sandbox.write("Cut.xml", "the user's"); }

    [[nodiscard]] std::string trash() const { return sandbox.home() + "/.Trash"; }
    [[nodiscard]] std::string inTrash(std::string_view name) const {
        return readBytes(trash() + "/" + std::string(name));
    }
    [[nodiscard]] Strings names() const { return namesIn(sandbox.folder()); }
    [[nodiscard]] Strings namesInTrash() const { return namesIn(trash()); }
    void blockTrash() const { sandbox.write("../home/.Trash", "a file in the folder's place"); }
    /// Puts a file at the path as programs do that write safely.
    void replace(const std::string& at, std::string_view bytes) const {
        sandbox.write("exported", bytes);
        std::filesystem::rename(sandbox.path("exported"), at);
    }
    /// Writes into the file at the path as programs do that don't.
    static void overwrite(const std::string& at, std::string_view bytes) {
        std::ofstream(at, std::ios::trunc) << bytes;
    }
    static WorkingCopy::Writer writes(std::string_view bytes) {
        return [bytes](const WorkingCopy::Sink& sink) { return sink(bytes); };
    }
    /// Takes the copy as far as its swap.
    void prepare(WorkingCopy& made) {
        ASSERT_EQ(made.create(error), WorkingCopy::Clearing::done);
        ASSERT_TRUE(made.read(error));
        made.save(writes("repaired"), error);
        ASSERT_EQ(error, std::nullopt);
    }

    Unprivileged unprivileged;
    Sandbox sandbox;
    std::string source = sandbox.path("Cut.xml");
    std::string path = sandbox.path("Cut-backup.xml");
    std::string aside = FileSwap::asidePath(source);
    RecordingWaiting waiting;
    RecordingSwapObserver observer;
    WorkingCopy copy{source, path, waiting};
    ErrorSlot error;
};

}  // namespace vornic::test

#endif
