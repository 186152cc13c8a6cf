#ifndef VORNIC_JOB_BATCH_BATCH_H
#define VORNIC_JOB_BATCH_BATCH_H

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "base/StopToken.h"
#include "job/ProjectFiles.h"
#include "job/batch/BatchFilter.h"
#include "job/batch/BatchJob.h"
#include "job/batch/BatchList.h"
#include "job/batch/BatchReports.h"
#include "job/batch/BatchSummary.h"

namespace vornic {

/// Follows a run. Both are called on one thread of the batch, one after the other. They must
/// neither start a run, nor wait for one, nor destroy the batch.
class BatchObserver {
  public:
    virtual ~BatchObserver() = default;
    /// These rows have changed, in ascending order; told together, some twenty times a second at
    /// most.
    virtual void rowsChanged(const std::vector<std::size_t>& rows) = 0;
    /// The run is over, and all changes of rows have been told. Another one can be started.
    virtual void ended(const BatchSummary& summary) = 0;
};

/// Many files, and what is done with them: one row a file, one worker a processor. Reports are kept
/// on the disk, so that memory takes a few hundred bytes a file. Operations may be called on any
/// thread and wait for no file, but for those that say so.
class Batch {
  public:
    /// @param observer must outlive this.
    /// @param workers how many files are at work at once; 0 for one a processor.
    Batch(BatchProgram program, BatchObserver& observer, std::size_t workers = 0);
    /// Cancels, and waits for the files that are at work.
    ~Batch();
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;

    /// Adds files, bundles, and what is found in folders by the rules of `findProjectFiles`. A file
    /// that has a row already gets no other one. Takes as long as the folders are large. During a
    /// run nothing is added.
    /// @param stop ends the search; what was found so far is added
    /// @return what could not be looked through.
    std::vector<ProjectFiles::Refusal> add(const std::vector<std::string>& paths,
                                           const StopToken& stop = {});
    /// Forgets all rows and reports. During a run nothing is forgotten.
    void clear();

    [[nodiscard]] std::size_t size() const;
    /// A row; one without a path when there is none of that number any more.
    [[nodiscard]] BatchRow row(std::size_t row) const;
    /// The rows that a filter shows, in ascending order.
    [[nodiscard]] std::vector<std::size_t> rowsShownBy(const BatchFilter& filter) const;

    [[nodiscard]] bool isRunning() const;
    /// How many files of the run that goes on, or of the last one, have a result.
    [[nodiscard]] std::size_t endedCount() const;

    /// Begins to do something with rows, in their order.
    /// @param rows ascending, each once
    /// @return false, and nothing happens, while another run goes on, for no rows, and when the
    ///     system has no thread to give.
    bool start(BatchRequest request, std::vector<std::size_t> rows);
    /// The same for all rows.
    bool startAll(BatchRequest request);
    /// Begins no further file. What is at work ends as soon as it can, and no file is left half
    /// written.
    void cancel();
    /// Waits until no run goes on and the observer has been told so.
    void wait();

    /// Whether the file that a path leads to now is that of a row. Asks the file system about each.
    [[nodiscard]] bool holds(const std::string& path) const;
    /// All reports as one HTML document, piece by piece; may be called during a run.
    /// @return false when the sink returned false, and when the rows were forgotten meanwhile.
    bool writeHTML(const std::function<bool(std::string_view piece)>& sink) const;

  private:
    void run();
    void perform();
    void complain(std::string_view sentence);
    void runWorkers(BatchJob& job);
    void work(BatchJob& job);
    void workOn(BatchJob& job, std::size_t row);
    void lookAgain(std::size_t row, const std::string& path,
                   const std::vector<std::string>& otherPaths);
    void giveUp(std::size_t row);
    void take(std::size_t row, BatchOutcome& outcome);
    void setProgress(std::size_t row, double progress);
    void markChanged(std::size_t row);
    void tellChanges();
    void leaveWaiting();

    BatchProgram program_;
    BatchObserver& observer_;
    std::size_t workerLimit_;
    BatchReports reports_;

    mutable std::mutex mutex_;
    BatchList list_;
    // What has changed since the observer was told; no shorter than the list, so that a change
    // needs no memory.
    std::vector<bool> isChanged_;
    bool hasChanges_ = false;
    // How often all rows have been forgotten.
    std::size_t clearings_ = 0;
    BatchSummary summary_;
    bool isRunning_ = false;
    bool isOver_ = true;
    std::condition_variable runEnded_;
    std::size_t workersAtWork_ = 0;
    std::condition_variable workerEnded_;

    BatchRequest request_;
    std::vector<std::size_t> rows_;
    std::atomic<std::size_t> next_ = 0;
    std::atomic<bool> isCancelled_ = false;
    // Guards the thread itself, not what it does.
    std::mutex threadMutex_;
    std::thread thread_;
};

}  // namespace vornic

#endif
