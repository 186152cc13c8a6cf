#ifndef VORNIC_JOB_EVENTS_H
#define VORNIC_JOB_EVENTS_H

#include <cstdint>
#include <string_view>

#include "report/RuleId.h"

namespace vornic {

/// A line of a job's report.
struct ReportLine {
    /// What it is about. The words are the rule's, but for a mend of markup, whose line has its
    /// own.
    RuleId rule;
    /// Lives during the call only.
    std::string_view text;
    bool isError = false;
    bool isBold = false;
};

/// What is known of a file while it is judged.
struct Verdict {
    /// Something was found to be wrong with it.
    bool hasErrors = false;
    /// All that was found could be mended.
    bool wasRepaired = false;
    friend bool operator==(const Verdict&, const Verdict&) = default;
};

/// Receives what has to be seen while a job runs, in order, on the job's thread. The job goes on
/// when a call returns, so that what it reports has been shown by then. Nothing in here is an
/// answer: a job is ended by its `StopToken`, and what came of it is its result.
class Events {
  public:
    virtual ~Events() = default;

    virtual void line(const ReportLine& line) = 0;
    /// A line for the log alone; lines of the report are no lines of the log yet.
    virtual void logLine(std::string_view text) = 0;
    /// What the job is at, in place of the last label.
    virtual void label(std::string_view text) = 0;

    /// The job can be measured from now on, and is at 0 of so many units of its own.
    virtual void progressMaximum(std::int64_t maximum) = 0;
    /// How many of them are done. Not every value is reported.
    virtual void progressValue(std::int64_t value) = 0;
    /// The job can't be measured any more.
    virtual void progressIsBusy() = 0;

    /// What is known of the file has changed.
    virtual void verdict(const Verdict& verdict) = 0;
};

}  // namespace vornic

#endif
