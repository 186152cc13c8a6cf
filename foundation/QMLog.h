#ifndef VORNIC_FOUNDATION_QM_LOG_H
#define VORNIC_FOUNDATION_QM_LOG_H

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/FormatString.h"

namespace vornic {

/// The process-wide diagnostic log: five generations of a text file for each application in the
/// user's log folder, each line written by one serial queue in the order in which it was queued.
/// Every class-level operation may be called from any thread; nothing raises to the caller.
class QMLog {
  public:
    /// The one instance, made on first use; it lives until the process ends.
    static QMLog& sharedController();

    /// Starts a new log generation: older ones move one place on, the oldest goes.
    static void createNewLog();
    static void createNewLog(std::string_view name);
    static void createNewLog(std::string_view name, bool noPrinting);

    /// Formats and queues one entry. On a thread that is not the main thread a short entry that
    /// finds the queue nearly empty is waited for.
    template <typename... Arguments>
    static void appendLog(std::string_view format, const Arguments&... arguments) {
        const std::initializer_list<FormatArgument> list{FormatArgument(arguments)...};
        appendLogWithArguments(format, {list.begin(), list.size()});
    }
    /// Formats and queues one entry; never waits.
    template <typename... Arguments>
    static void fastAppendLog(std::string_view format, const Arguments&... arguments) {
        const std::initializer_list<FormatArgument> list{FormatArgument(arguments)...};
        fastAppendLogWithArguments(format, {list.begin(), list.size()});
    }
    /// `appendLog`, and the text also goes to standard output.
    template <typename... Arguments>
    static void appendLogAndPrint(std::string_view format, const Arguments&... arguments) {
        const std::initializer_list<FormatArgument> list{FormatArgument(arguments)...};
        appendLogAndPrintWithArguments(format, {list.begin(), list.size()});
    }
    /// Trims the text and logs it; prints nothing.
    template <typename... Arguments>
    static void appendLogAndDebugPrint(std::string_view format, const Arguments&... arguments) {
        const std::initializer_list<FormatArgument> list{FormatArgument(arguments)...};
        appendLogAndDebugPrintWithArguments(format, {list.begin(), list.size()});
    }
    /// Does nothing; kept for callers that ask for debug output.
    template <typename... Arguments>
    static void debugPrint(std::string_view /*format*/, const Arguments&... /*arguments*/) {}

    /// Doubles the percent signs of a format that begin no conversion.
    [[nodiscard]] static std::string escapeTextForLogging(std::string_view text);
    /// Returns when every queued entry is written.
    static void finishWriting();
    /// The paths of the generations that exist, newest first.
    [[nodiscard]] static std::vector<std::string> availableLogs();
    /// The observer of the application's end: writes a short queue out, drops a long one.
    static void willTerminate();

    /// Queues one text, trimmed; a text that trims to nothing is not queued.
    void appendTextToLog(std::string_view text);
    /// The write operation that runs on the queue.
    void appendLogOnThread(const std::string& text);

    /// The stored name, or the executable's name while none is stored.
    [[nodiscard]] std::string appName() const;
    void setAppName(std::optional<std::string> name);
    [[nodiscard]] std::uint64_t bytesWritten() const;
    /// UTF-16 units queued and not yet written.
    [[nodiscard]] std::uint64_t bytesInQueue() const;
    [[nodiscard]] bool loggingDisabled() const;
    [[nodiscard]] bool noPrinting() const;
    /// True while a log file is open.
    [[nodiscard]] bool hasFileHandle() const;

    QMLog(const QMLog&) = delete;
    QMLog& operator=(const QMLog&) = delete;

  private:
    QMLog();
    ~QMLog();

    static void writeHeader();
    static void appendLogWithArguments(std::string_view format,
                                       std::span<const FormatArgument> arguments);
    static void fastAppendLogWithArguments(std::string_view format,
                                           std::span<const FormatArgument> arguments);
    static void appendLogAndPrintWithArguments(std::string_view format,
                                               std::span<const FormatArgument> arguments);
    static void appendLogAndDebugPrintWithArguments(std::string_view format,
                                                    std::span<const FormatArgument> arguments);

    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace vornic

#endif
