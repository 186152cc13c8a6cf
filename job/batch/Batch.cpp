#include "job/batch/Batch.h"

#include <algorithm>
#include <chrono>
#include <list>
#include <new>
#include <numeric>
#include <optional>
#include <utility>

#include "job/NamedSources.h"
#include "job/batch/BatchSection.h"
#include "platform/crash/CrashStack.h"

namespace vornic {

namespace {

constexpr std::chrono::milliseconds kBetweenNews{50};

}  // namespace

Batch::Batch(BatchProgram program, BatchObserver& observer, std::size_t workers)
    : program_(std::move(program)),
      observer_(observer),
      workerLimit_(workers != 0 ? workers
                                : std::max<std::size_t>(1, std::thread::hardware_concurrency())) {}

Batch::~Batch() {
    cancel();
    const std::lock_guard lock(threadMutex_);
    if (thread_.joinable()) {
        thread_.join();
    }
}

std::vector<ProjectFiles::Refusal> Batch::add(const std::vector<std::string>& paths,
                                              const StopToken& stop) {
    ProjectFiles found = findProjectFiles(paths, true, stop);
    for (const std::string& path : found.paths) {
        const std::string absolute = platform::absolutePath(path).value_or(path);
        // Asked without holding anybody up.
        const BatchList::Identity identity = BatchList::identityAt(absolute);
        const std::lock_guard lock(mutex_);
        if (isRunning_) {
            break;
        }
        isChanged_.resize(list_.size() + 1);
        list_.add(absolute, identity);
    }
    return std::move(found.refused);
}

void Batch::clear() {
    const std::lock_guard lock(mutex_);
    if (!isRunning_) {
        list_.clear();
        reports_.clear();
        isChanged_.clear();
        hasChanges_ = false;
        ++clearings_;
    }
}

std::size_t Batch::size() const {
    const std::lock_guard lock(mutex_);
    return list_.size();
}

BatchRow Batch::row(std::size_t row) const {
    const std::lock_guard lock(mutex_);
    return row < list_.size() ? list_[row] : BatchRow{};
}

std::vector<std::size_t> Batch::rowsShownBy(const BatchFilter& filter) const {
    const std::lock_guard lock(mutex_);
    std::vector<std::size_t> rows;
    for (std::size_t row = 0; row < list_.size(); ++row) {
        if (filter.shows(list_[row])) {
            rows.push_back(row);
        }
    }
    return rows;
}

bool Batch::isRunning() const {
    const std::lock_guard lock(mutex_);
    return isRunning_;
}

std::size_t Batch::endedCount() const {
    const std::lock_guard lock(mutex_);
    return std::accumulate(summary_.results.begin(), summary_.results.end(), std::size_t{0});
}

bool Batch::startAll(BatchRequest request) {
    std::vector<std::size_t> rows(size());
    for (std::size_t row = 0; row < rows.size(); ++row) {
        rows[row] = row;
    }
    return start(std::move(request), std::move(rows));
}

bool Batch::start(BatchRequest request, std::vector<std::size_t> rows) {
    const std::lock_guard threadLock(threadMutex_);
    {
        const std::lock_guard lock(mutex_);
        if (isRunning_ || rows.empty() || rows.back() >= list_.size()) {
            return false;
        }
        isRunning_ = true;
    }
    if (thread_.joinable()) {
        thread_.join();
    }
    request_ = std::move(request);
    rows_ = std::move(rows);
    next_ = 0;
    isCancelled_ = false;
    {
        const std::lock_guard lock(mutex_);
        isOver_ = false;
        summary_ = {};
        summary_.action = request_.action;
        summary_.files = rows_.size();
    }
    try {
        thread_ = std::thread([this] { run(); });
    } catch (const std::exception&) {
        const std::lock_guard lock(mutex_);
        isRunning_ = false;
        isOver_ = true;
        return false;
    }
    return true;
}

void Batch::cancel() {
    isCancelled_ = true;
}

void Batch::wait() {
    std::unique_lock lock(mutex_);
    runEnded_.wait(lock, [this] { return isOver_; });
}

void Batch::run() {
    const platform::CrashStack crashStack;
    try {
        perform();
    } catch (const std::bad_alloc&) {
        complain("There was not enough memory.");
    }
    leaveWaiting();
    tellChanges();
    summary_.isCancelled = isCancelled_;
    {
        const std::lock_guard lock(mutex_);
        isRunning_ = false;
    }
    observer_.ended(summary_);
    const std::lock_guard lock(mutex_);
    isOver_ = true;
    runEnded_.notify_all();
}

// Without memory for the words there are none.
void Batch::complain(std::string_view sentence) {
    try {
        summary_.complaint = sentence;
    } catch (const std::bad_alloc&) {
        summary_.complaint.clear();
    }
}

void Batch::perform() {
    // None of the files may be taken for the old working copy of another one.
    std::list<NamedSource> named;
    std::vector<std::string> paths;
    {
        const std::lock_guard lock(mutex_);
        for (const std::size_t row : rows_) {
            paths.push_back(list_[row].path);
            list_[row].state = BatchState::waiting;
            markChanged(row);
        }
    }
    tellChanges();
    for (const std::string& path : paths) {
        named.emplace_back(path);
    }
    BatchJob job(request_, program_, StopToken([this] { return isCancelled_.load(); }));
    try {
        summary_.complaint = job.prepare(paths);
    } catch (const std::bad_alloc&) {
        complain("There was not enough memory to look for media.");
    }
    runWorkers(job);
}

void Batch::runWorkers(BatchJob& job) {
    std::vector<std::thread> workers;
    const std::size_t count = std::min(workerLimit_, rows_.size());
    // A thread that has no place would end the program.
    workers.reserve(count);
    workersAtWork_ = count;
    const auto workAndEnd = [this, &job] {
        work(job);
        const std::lock_guard lock(mutex_);
        --workersAtWork_;
        workerEnded_.notify_all();
    };
    try {
        while (workers.size() < count) {
            workers.emplace_back([&] {
                const platform::CrashStack crashStack;
                workAndEnd();
            });
        }
    } catch (const std::exception&) {
        // The system has no further thread to give, or no memory for one; those that are there
        // work, or this one.
        const std::lock_guard lock(mutex_);
        workersAtWork_ -= count - workers.size();
    }
    if (workers.empty()) {
        work(job);
    }
    for (bool isDone = false; !isDone;) {
        {
            std::unique_lock lock(mutex_);
            isDone =
                workerEnded_.wait_for(lock, kBetweenNews, [this] { return workersAtWork_ == 0; });
        }
        tellChanges();
    }
    for (std::thread& worker : workers) {
        worker.join();
    }
}

void Batch::work(BatchJob& job) {
    for (std::size_t at = next_++; at < rows_.size() && !isCancelled_; at = next_++) {
        try {
            workOn(job, rows_[at]);
        } catch (const std::bad_alloc&) {
            giveUp(rows_[at]);
        }
    }
}

// Nothing has been done with the file.
void Batch::giveUp(std::size_t row) {
    const std::lock_guard lock(mutex_);
    list_[row].state = BatchState::idle;
    list_[row].result = BatchResult::failed;
    ++summary_.results[static_cast<std::size_t>(BatchResult::failed)];
    markChanged(row);
    try {
        list_[row].reason = "There was not enough memory.";
    } catch (const std::bad_alloc&) {
        list_[row].reason.clear();
    }
}

void Batch::workOn(BatchJob& job, std::size_t row) {
    std::string path;
    std::vector<std::string> otherPaths;
    {
        const std::lock_guard lock(mutex_);
        list_[row].state = BatchState::working;
        list_[row].progress = 0;
        markChanged(row);
        path = list_[row].path;
        otherPaths = list_[row].otherPaths;
    }
    BatchOutcome outcome = job.perform(
        path, [&](double progress) { setProgress(row, progress); }, rows_.size() < workerLimit_);
    try {
        ErrorSlot error;
        if (!reports_.keep(row, sectionAbout(path, outcome), error)) {
            outcome.reason += (outcome.reason.empty() ? "" : " ") + error->localizedDescription();
        }
    } catch (const std::bad_alloc&) {
        // What was done is told without it.
        outcome.reason.clear();
    }
    if (!outcome.replaced.empty()) {
        lookAgain(row, path, otherPaths);
    }
    const std::lock_guard lock(mutex_);
    take(row, outcome);
}

void Batch::lookAgain(std::size_t row, const std::string& path,
                      const std::vector<std::string>& otherPaths) {
    try {
        const BatchList::Look look = BatchList::look(path, otherPaths);
        const std::lock_guard lock(mutex_);
        list_.take(row, look);
    } catch (const std::bad_alloc&) {
        // A link that is added later has a row of its own, then.
    }
}

void Batch::take(std::size_t row, BatchOutcome& outcome) {
    BatchRow& taken = list_[row];
    taken.state = BatchState::idle;
    taken.progress = 1;
    taken.result = outcome.result;
    taken.reason = std::move(outcome.reason);
    taken.replaced = std::move(outcome.replaced);
    taken.written = std::move(outcome.written);
    taken.errors = taken.warnings = taken.notes = 0;
    if (outcome.report) {
        const Findings& findings = outcome.report->findings;
        taken.errors = findings.count(Severity::error);
        taken.warnings = findings.count(Severity::warning);
        taken.notes = findings.count(Severity::info);
        taken.kind = outcome.report->kind == nameOf(FileKind::none)
                         ? FileKind::none
                         : fileKindOfRoot(outcome.report->kind);
    }
    ++summary_.results[static_cast<std::size_t>(outcome.result)];
    markChanged(row);
}

void Batch::setProgress(std::size_t row, double progress) {
    const std::lock_guard lock(mutex_);
    list_[row].progress = progress;
    markChanged(row);
}

// With the mutex held.
void Batch::markChanged(std::size_t row) {
    isChanged_[row] = true;
    hasChanges_ = true;
}

void Batch::tellChanges() {
    std::vector<std::size_t> rows;
    try {
        {
            const std::lock_guard lock(mutex_);
            if (!hasChanges_) {
                return;
            }
            for (std::size_t row = 0; row < isChanged_.size(); ++row) {
                if (isChanged_[row]) {
                    rows.push_back(row);
                }
            }
            isChanged_.assign(isChanged_.size(), false);
            hasChanges_ = false;
        }
        observer_.rowsChanged(rows);
    } catch (const std::bad_alloc&) {
        // They are told with the next ones.
        const std::lock_guard lock(mutex_);
        for (const std::size_t row : rows) {
            markChanged(row);
        }
    }
}

// Those that a cancelled run has not begun keep the result that they had.
void Batch::leaveWaiting() {
    const std::lock_guard lock(mutex_);
    for (const std::size_t row : rows_) {
        if (list_[row].state == BatchState::waiting) {
            list_[row].state = BatchState::idle;
            markChanged(row);
        }
    }
}

bool Batch::holds(const std::string& path) const {
    const BatchList::Identity identity = BatchList::identityAt(path);
    if (identity == BatchList::Identity()) {
        return false;
    }
    const auto leadsThere = [&](const std::string& other) {
        return BatchList::identityAt(other) == identity;
    };
    // As it is now: a program that saves a file may put another one in its place.
    for (std::size_t number = 0; number < size(); ++number) {
        const BatchRow each = row(number);
        if (leadsThere(each.path) ||
            std::any_of(each.otherPaths.begin(), each.otherPaths.end(), leadsThere)) {
            return true;
        }
    }
    return false;
}

bool Batch::writeHTML(const std::function<bool(std::string_view piece)>& sink) const {
    std::string sentence;
    std::size_t count = 0;
    std::size_t clearings = 0;
    {
        const std::lock_guard lock(mutex_);
        sentence = summary_.files == 0 || isRunning_ ? "" : summary_.sentence();
        count = list_.size();
        clearings = clearings_;
    }
    const auto rowNumber = [&](std::size_t number) {
        const std::lock_guard lock(mutex_);
        return clearings == clearings_ ? std::optional(list_[number]) : std::nullopt;
    };
    if (!sink(htmlHead("Report", sentence))) {
        return false;
    }
    for (std::size_t number = 0; number < count; ++number) {
        const std::optional<BatchRow> row = rowNumber(number);
        if (!row || !sink(htmlRow(*row, number, reports_.has(number)))) {
            return false;
        }
    }
    if (!sink(htmlMiddle())) {
        return false;
    }
    for (std::size_t number = 0; number < count; ++number) {
        const std::string section = reports_.of(number);
        const std::optional<BatchRow> row = rowNumber(number);
        if (!row || (!section.empty() && !sink(htmlSection(*row, number, section)))) {
            return false;
        }
    }
    return sink(htmlEnd());
}

}  // namespace vornic
