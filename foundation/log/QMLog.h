#ifndef VORNIC_FOUNDATION_LOG_QM_LOG_H
#define VORNIC_FOUNDATION_LOG_QM_LOG_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/FormatString.h"

namespace vornic {

/// The process-wide diagnostic log: five generations of a text file for each application in the
/// user's log folder (`LogGenerations.h`), each entry "DATE - TEXT" in UTF-8, written by one serial
/// queue in the order in which the texts were queued. Every operation may be called from any
/// thread. Nothing raises to the caller, no lack of memory either, and nothing returns an error: a
/// failure prints a line to standard output, and logging goes on as well as it can.
///
/// Formats are those of `formatString`, except that a percent sign before one of " .!,-;:+" stands
/// for itself. A format that is missing (a view of nothing) does nothing. Text that is not the
/// program's own belongs into an argument, never into the format.
class QMLog {
  public:
    /// The one instance, made on first use; it lives until the process ends.
    static QMLog& sharedController();

    /// Starts a new log generation: what is queued already is written where it belongs, older ones
    /// move one place on, the oldest goes, and the new one begins with a header. When the family's
    /// preferences switch logging off, it stays off for the life of the process and every later
    /// operation does nothing.
    /// @param name counts only where neither a stored name nor the executable gives one
    /// @param noPrinting keeps the log off standard output; the shorter forms pass false
    static void createNewLog();
    static void createNewLog(std::string_view name);
    static void createNewLog(std::string_view name, bool noPrinting);

    /// Formats and queues one entry. On a thread that is not the main thread an entry of 1 to 99
    /// UTF-16 units is waited for when no more than 99 units are queued, itself included.
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
    /// `appendLog` of the trimmed text, which also goes to standard output as a line of its own,
    /// there without "%@" and NUL characters and with every other percent sign doubled. On a
    /// terminal, whatever the log prints has its control characters written out.
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

    /// Doubles the percent signs of a format that stand before one of " .!,-;:+" and are not
    /// doubled already.
    [[nodiscard]] static std::string escapeTextForLogging(std::string_view text);
    /// Returns when every entry queued before the call is written; at once on the thread that is
    /// writing one.
    static void finishWriting();
    /// The paths of the generations that exist, newest first.
    [[nodiscard]] static std::vector<std::string> availableLogs();
    /// Where the log that this process writes is now: other programs of the name that start their
    /// logs move it on. Nothing while no log is open, and once it has gone.
    [[nodiscard]] static std::optional<std::string> currentLog();
    /// The observer of the application's end: writes up to 10 queued entries out, drops more, and
    /// closes the log. What is logged afterwards is lost.
    static void willTerminate();

    /// Queues one text, trimmed; a text that trims to nothing is not queued.
    void appendTextToLog(std::string_view text);
    /// The write operation that runs on the queue. Without an open log it opens the current
    /// generation at its end; where there is none the text is printed as lost. The entry that
    /// brings a generation to 5,000,000 bytes starts the next one.
    void appendLogOnThread(const std::string& text);

    /// The stored name, or the executable's name while none is stored.
    [[nodiscard]] std::string appName() const;
    void setAppName(std::optional<std::string> name);
    /// Bytes written to the current generation, the header included.
    [[nodiscard]] std::uint64_t bytesWritten() const;
    /// UTF-16 units queued and not yet written; those that a disabled log or an exception kept from
    /// being written stay in it.
    [[nodiscard]] std::uint64_t bytesInQueue() const;
    [[nodiscard]] bool loggingDisabled() const;
    [[nodiscard]] bool noPrinting() const;
    /// True while a log file is open.
    [[nodiscard]] bool hasFileHandle() const;

    /// For tests: called by the writer between the moment it has opened a log by itself and the
    /// moment it writes there. While nothing is written; null for nothing.
    static void setWhenReopening(std::function<void()> called);

    QMLog(const QMLog&) = delete;
    QMLog& operator=(const QMLog&) = delete;

  private:
    QMLog();
    ~QMLog();

    static void writeHeader(const std::string& started);
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
