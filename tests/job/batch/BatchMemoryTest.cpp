// What becomes of a batch when memory runs out at any of its allocations.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <new>
#include <numeric>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/job/batch/BatchTest.h"
#include "tests/job/batch/FailingAllocations.h"
#include "tests/support/machine/FileState.h"

namespace vornic::test {

namespace fs = std::filesystem;
using Which = FailingAllocations::Which;

namespace {

std::string ampersandXMEML() {
    std::string text = soundXMEML();
    return text.insert(text.find("Harbour"), "Pier & ");
}

// How many of the first allocations are all tried. Files that are written take their time.
constexpr std::size_t kMany = 60;
constexpr std::size_t kFew = 10;

// Needs no memory of its own, and ends the shortage with the run.
class CountingObserver : public BatchObserver {
  public:
    void rowsChanged(const std::vector<std::size_t>& /*rows*/) override {}
    void ended(const BatchSummary& summary) override {
        FailingAllocations::end();
        ++ends;
        results = summary.results;
    }

    std::size_t ends = 0;
    decltype(BatchSummary::results) results{};
};

}  // namespace

class BatchMemoryTest : public ProgramTest {
  protected:
    BatchMemoryTest() {
        fs::create_directories(files.path("cuts"));
        write();
    }

    void write() {
        static_cast<void>(files.write("cuts/Sound.xml", soundXMEML()));
        static_cast<void>(files.write("cuts/Ampersand.xml", ampersandXMEML()));
        static_cast<void>(files.write("cuts/Damaged.xml", damagedXMEML()));
    }

    LogCapture log;

    // @return whether an allocation failed.
    bool runWithout(std::size_t number, Which which, BatchAction action) {
        CountingObserver watching;
        Batch batch({"vornic-test", "1"}, watching, 2);
        batch.add({files.path("cuts")});
        BatchRequest request;
        request.action = action;
        request.isInPlace = true;
        request.version = "4";
        bool isStarted = false;
        std::size_t failed = 0;
        {
            const FailingAllocations shortage(number, which);
            try {
                isStarted = batch.startAll(request);
            } catch (const std::bad_alloc&) {
                isStarted = false;
            }
            if (isStarted) {
                batch.wait();
            }
            failed = FailingAllocations::failed();
        }
        EXPECT_FALSE(batch.isRunning());
        EXPECT_EQ(watching.ends, isStarted ? 1U : 0U);
        for (std::size_t row = 0; row < batch.size(); ++row) {
            EXPECT_EQ(batch.row(row).state, BatchState::idle) << row;
        }
        if (isStarted && failed == 0) {
            EXPECT_EQ(
                std::accumulate(watching.results.begin(), watching.results.end(), std::size_t{0}),
                batch.size());
        }
        // It can be used afterwards.
        EXPECT_TRUE(batch.startAll({}));
        batch.wait();
        EXPECT_EQ(watching.ends, isStarted ? 2U : 1U);
        return failed != 0;
    }

    // All of the first allocations, then ever fewer.
    template <typename Try>
    void tryEach(std::size_t each, const Try& tryOne) {
        std::size_t tries = 0;
        for (std::size_t number = 0; tryOne(number); number += 1 + number / each) {
            ++tries;
            ASSERT_FALSE(HasFailure()) << "allocation " << number;
        }
        EXPECT_GT(tries, each);
    }
};

TEST_F(BatchMemoryTest, endsWithoutAnyOneAllocation) {
    tryEach(kMany,
            [&](std::size_t number) { return runWithout(number, Which::one, BatchAction::check); });
}

TEST_F(BatchMemoryTest, endsWithoutMemoryFromAnyAllocationOn) {
    tryEach(kMany, [&](std::size_t number) {
        return runWithout(number, Which::allFromThereOn, BatchAction::check);
    });
}

// A file is as it was or as the action leaves it, and nothing is left beside it.
TEST_F(BatchMemoryTest, leavesEachFileWhole) {
    for (const BatchAction action :
         {BatchAction::repair, BatchAction::mend, BatchAction::convert}) {
        write();
        EXPECT_FALSE(runWithout(SIZE_MAX - 1, Which::one, action));
        std::vector<std::string> names;
        std::vector<std::string> made;
        for (const fs::directory_entry& entry : fs::directory_iterator(files.path("cuts"))) {
            names.push_back(entry.path().filename());
            made.push_back(fileState(entry.path()).bytes);
        }
        tryEach(kFew, [&](std::size_t number) {
            write();
            const bool failed = runWithout(number, Which::one, action);
            for (const fs::directory_entry& entry : fs::directory_iterator(files.path("cuts"))) {
                const std::string bytes = fileState(entry.path()).bytes;
                EXPECT_THAT(names, ::testing::Contains(entry.path().filename().string()));
                EXPECT_TRUE(bytes == soundXMEML() || bytes == ampersandXMEML() ||
                            bytes == damagedXMEML() ||
                            std::find(made.begin(), made.end(), bytes) != made.end())
                    << entry.path() << ", allocation " << number << ":\n"
                    << bytes;
            }
            return failed;
        });
    }
}

TEST_F(BatchMemoryTest, writesAllReportsOrNone) {
    CountingObserver watching;
    Batch batch({"vornic-test", "1"}, watching, 2);
    batch.add({files.path("cuts")});
    ASSERT_TRUE(batch.startAll({}));
    batch.wait();
    const auto length = [&batch](bool& isWhole) {
        std::size_t written = 0;
        try {
            isWhole = batch.writeHTML([&written](std::string_view piece) {
                written += piece.size();
                return true;
            });
        } catch (const std::bad_alloc&) {
            isWhole = false;
        }
        return written;
    };
    bool isWhole = false;
    const std::size_t all = length(isWhole);
    ASSERT_TRUE(isWhole);
    tryEach(kMany, [&](std::size_t number) {
        const FailingAllocations shortage(number, Which::one);
        const std::size_t written = length(isWhole);
        FailingAllocations::end();
        EXPECT_EQ(isWhole, written == all);
        return FailingAllocations::failed() != 0;
    });
}

TEST_F(BatchMemoryTest, addsFilesOrNone) {
    tryEach(kMany, [&](std::size_t number) {
        CountingObserver watching;
        Batch batch({"vornic-test", "1"}, watching, 2);
        const std::vector<std::string> paths{files.path("cuts")};
        {
            const FailingAllocations shortage(number, Which::one);
            try {
                batch.add(paths);
            } catch (const std::bad_alloc&) {
                FailingAllocations::end();
            }
        }
        const bool failed = FailingAllocations::failed() != 0;
        batch.add(paths);
        EXPECT_EQ(batch.size(), 3U) << "what was left out can be added";
        return failed;
    });
}

}  // namespace vornic::test
