#ifndef VORNIC_FOUNDATION_TASKS_QM_TASK_EX_H
#define VORNIC_FOUNDATION_TASKS_QM_TASK_EX_H

#include <any>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/Replaceable.h"
#include "base/StringEncoding.h"
#include "foundation/tasks/TaskDelegate.h"
#include "foundation/tasks/TaskTimer.h"
#include "platform/processes/PipeReader.h"
#include "platform/processes/Process.h"

namespace vornic {

/// A place in which a run leaves its process object, before the launch, for another thread to find.
using TaskSlot = platform::Replaceable<std::shared_ptr<platform::Process>>;

inline constexpr const char* kAsyncTaskDataNotification = "QMAsyncTaskDataNotification";
/// The key under which a notification carries its chunk.
inline constexpr const char* kFileHandleNotificationDataItem = "NSFileHandleNotificationDataItem";

/// One chunk of an asynchronous run on its way from the reading loop to the delegate. It has no
/// sender and is handed over directly.
struct TaskNotification {
    std::string name = kAsyncTaskDataNotification;
    std::map<std::string, std::string> userInfo;
};

/// Runs external command-line tools: to the end, with a time limit, or with their output handed on
/// as it comes. A tool is named by its path; no search path and no shell comes in. Nothing raises
/// to the caller: a tool that cannot be run is logged and the operation yields its neutral result.
/// A tool's own exit status is looked at by the termination-code family alone.
///
/// Class-level operations may be called from any thread and block it until they are done. Where a
/// `TaskSlot` is given (null: none), the process object is left in it before the launch.
///
/// A time limit is a number of seconds, cut to whole ones; when they have passed, the tool is asked
/// to end (SIGTERM) on the main thread, which must keep dispatching its events for that. A limit
/// does therefore not act on a run that blocks the main thread itself.
class QMTaskEx : public std::enable_shared_from_this<QMTaskEx> {
  public:
    using Arguments = std::vector<std::string>;
    using Environment = std::optional<platform::Process::Environment>;
    using Timeout = std::chrono::duration<double>;
    using Encoding = platform::StringEncoding;
    /// Bytes as the tool wrote them, or nothing when it could not be run.
    using Data = std::optional<std::string>;
    /// UTF-8, or nothing when the bytes are no text of the encoding asked for. A tool that could
    /// not be run yields "".
    using String = std::optional<std::string>;

    /// Runs a tool to its end, its output thrown away. Only a path that begins with "/" is checked
    /// for an executable file before the launch.
    /// @return true when the tool was launched and came to its end; false, with a line in the log,
    ///     when it is not executable, could not be launched or was ended by a signal.
    static bool runTask(const std::string& path, const Arguments& arguments);
    static bool runTask(const std::string& path, const Arguments& arguments, TaskSlot* task);
    /// Launches a tool, its output thrown away, and returns at once. The tool may outlive the
    /// program.
    static void runTaskAndReturn(const std::string& path, const Arguments& arguments);
    /// Runs a tool to its end, its output thrown away.
    /// @return the exit status; -1 when the tool could not be run or was ended by a signal.
    static std::int32_t terminationCodeFromTask(const std::string& path,
                                                const Arguments& arguments);
    static std::int32_t terminationCodeFromTask(const std::string& path, const Arguments& arguments,
                                                TaskSlot* task);

    /// Runs a tool and captures what it writes, until its streams have ended. The tool reads the
    /// end of its input at once.
    /// @param environment replaces the tool's whole environment when given
    /// @param logOutput capture standard output; otherwise it goes where this program's goes
    /// @param logError capture standard error; otherwise it is thrown away
    /// @return the bytes of standard output or, where there are none, those of standard error.
    static Data dataFromTask(const std::string& path, const Arguments& arguments, TaskSlot* task);
    static Data dataFromTask(const std::string& path, const Arguments& arguments, TaskSlot* task,
                             const Environment& environment);
    static Data dataFromTask(const std::string& path, const Arguments& arguments, TaskSlot* task,
                             const Environment& environment, bool logOutput);
    static Data dataFromTask(const std::string& path, const Arguments& arguments, TaskSlot* task,
                             const Environment& environment, bool logOutput, bool logError);

    /// The text of `dataFromTask`, by default in strict ASCII.
    static String stringFromTask(const std::string& path, const Arguments& arguments);
    static String stringFromTask(const std::string& path, const Arguments& arguments,
                                 TaskSlot* task);
    static String stringFromTask(const std::string& path, const Arguments& arguments,
                                 Encoding encoding, TaskSlot* task);

    /// `runTask` whose time limit has no effect: its watchdog never finds the process.
    static bool runTask(const std::string& path, const Arguments& arguments, Timeout timeout);
    static Data dataFromTask(const std::string& path, const Arguments& arguments, Timeout timeout);
    static Data dataFromTask(const std::string& path, const Arguments& arguments, Timeout timeout,
                             bool logOutput, bool logError);
    static String stringFromTask(const std::string& path, const Arguments& arguments,
                                 Timeout timeout);
    static String stringFromTask(const std::string& path, const Arguments& arguments,
                                 Encoding encoding, Timeout timeout);
    static String stringFromTask(const std::string& path, const Arguments& arguments,
                                 Encoding encoding, Timeout timeout, bool logOutput, bool logError);
    static std::int32_t terminationCodeFromTask(const std::string& path, const Arguments& arguments,
                                                Timeout timeout);

    /// An instance, for a timed run of its own or an asynchronous one.
    [[nodiscard]] static std::shared_ptr<QMTaskEx> create();
    /// Ends its process if that still runs.
    ~QMTaskEx();
    QMTaskEx(const QMTaskEx&) = delete;
    QMTaskEx& operator=(const QMTaskEx&) = delete;

    /// The instance forms of the timed operations. One run at a time; any thread.
    bool runTimedTask(const std::string& path, const Arguments& arguments, Timeout timeout);
    Data dataFromTimedTask(const std::string& path, const Arguments& arguments, Timeout timeout);
    Data dataFromTimedTask(const std::string& path, const Arguments& arguments, Timeout timeout,
                           bool logOutput, bool logError);
    std::int32_t terminationCodeFromTimedTask(const std::string& path, const Arguments& arguments,
                                              Timeout timeout);
    /// The watchdog of a timed run: waits for the time, has `timeout` run on the main thread, and
    /// returns when it has, or when the run that the timer belongs to has ended.
    void setupTimeout(std::chrono::seconds seconds, const std::shared_ptr<TaskTimer>& timer);
    /// Asks the process of the run under way to end; without one nothing happens. Main thread.
    void timeout();

    /// Starts a tool whose standard output is handed to an operation of the delegate chunk by
    /// chunk, on a thread of its own, and returns at once. Standard error is thrown away. After the
    /// last chunk the operation is called once with an empty one, then the tool is asked to end if
    /// it still runs. The instance lives at least until then.
    /// @param delegate not kept alive; nothing is called once it has gone
    /// @param selector the name of the delegate's operation
    /// @param object handed to the operation unchanged, when it holds a value
    /// @param environment replaces the tool's whole environment when given
    void asyncDataFromTask(const std::string& path, const Arguments& arguments,
                           const std::shared_ptr<TaskDelegate>& delegate, std::string selector,
                           std::any object);
    void asyncDataFromTask(const std::string& path, const Arguments& arguments,
                           const std::shared_ptr<TaskDelegate>& delegate, std::string selector,
                           std::any object, const Environment& environment);
    /// The body of the reading thread.
    void launchAsyncTask();
    /// Hands one chunk to the delegate; one that is empty or missing ends the run.
    void asyncTaskReturnData(const TaskNotification& notification);
    /// Ends an asynchronous run: the delegate is called no more, the tool is asked to end if it
    /// still runs. Any thread, any number of times.
    void terminateAsyncTask();
    void terminateTask() { terminateAsyncTask(); }

    /// The process object of the run under way, or null.
    [[nodiscard]] std::shared_ptr<platform::Process> theTask() const { return theTask_.value(); }
    [[nodiscard]] std::any object() const;

  private:
    /// Who is told about an asynchronous run's output, and where it comes from.
    struct Reception {
        std::weak_ptr<TaskDelegate> delegate;
        std::string selector;
        std::any object;
        std::shared_ptr<platform::PipeReader> reader;
    };

    QMTaskEx() = default;

    template <typename Result>
    Result runWithin(const std::string& path, Timeout timeout, Result neutral,
                     const std::function<Result()>& run);
    bool handOn(const std::string& chunk, const std::shared_ptr<platform::Process>& ofRun);
    void endRun(const std::shared_ptr<platform::Process>& process);
    void startReception(const std::shared_ptr<platform::Process>& process, Reception reception);
    [[nodiscard]] Reception reception() const;

    TaskSlot theTask_;
    mutable std::mutex mutex_;
    Reception reception_;
};

}  // namespace vornic

#endif
