#ifndef VORNIC_TESTS_JOB_BATCH_BATCH_TEST_H
#define VORNIC_TESTS_JOB_BATCH_BATCH_TEST_H

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "job/batch/Batch.h"
#include "tests/app/ProgramTest.h"
#include "tests/support/texts/LogCapture.h"

namespace vornic::test {

/// Writes down what a batch tells.
class RecordingBatchObserver : public BatchObserver {
  public:
    void rowsChanged(const std::vector<std::size_t>& rows) override {
        ++calls;
        told.insert(rows.begin(), rows.end());
        if (onChange) {
            onChange();
        }
    }
    void ended(const BatchSummary& summary) override { summaries.push_back(summary); }

    std::size_t calls = 0;
    std::set<std::size_t> told;
    std::vector<BatchSummary> summaries;
    std::function<void()> onChange;
};

/// Files beside each other, for a batch and for the programs.
class BatchTest : public ProgramTest {
  protected:
    /// Does something with all rows and waits for its end.
    /// @return the sentence about it.
    std::string run(BatchRequest request) {
        EXPECT_TRUE(batch.startAll(std::move(request)));
        batch.wait();
        return observer.summaries.empty() ? "" : observer.summaries.back().sentence();
    }
    std::string run(BatchAction action) {
        BatchRequest request;
        request.action = action;
        return run(std::move(request));
    }
    /// The rows by the names of their files.
    [[nodiscard]] std::map<std::string, BatchRow> rows() const {
        std::map<std::string, BatchRow> rows;
        for (std::size_t row = 0; row < batch.size(); ++row) {
            rows[batch.row(row).name] = batch.row(row);
        }
        return rows;
    }
    [[nodiscard]] std::string html() const {
        std::string text;
        EXPECT_TRUE(batch.writeHTML([&text](std::string_view piece) {
            text += piece;
            return true;
        }));
        return text;
    }

    LogCapture log;
    RecordingBatchObserver observer;
    Batch batch{{"vornic-test", "1"}, observer};
};

}  // namespace vornic::test

#endif
