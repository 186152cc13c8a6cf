#ifndef VORNIC_UI_SUPPORT_BUG_REPORTER_DELEGATE_H
#define VORNIC_UI_SUPPORT_BUG_REPORTER_DELEGATE_H

#include <string>

namespace vornic {

/// Who wants to know that the previous run crashed.
class BugReporterDelegate {
  public:
    BugReporterDelegate() = default;
    virtual ~BugReporterDelegate() = default;
    BugReporterDelegate(const BugReporterDelegate&) = delete;
    BugReporterDelegate& operator=(const BugReporterDelegate&) = delete;

    /// The path of the crash report that was found. Main thread, after the start has gone on.
    virtual void applicationDidCrashWithLog(const std::string& /*path*/) {}
};

}  // namespace vornic

#endif
