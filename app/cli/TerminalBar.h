#ifndef VORNIC_APP_CLI_TERMINAL_BAR_H
#define VORNIC_APP_CLI_TERMINAL_BAR_H

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace vornic {

/// A line that shows progress at the bottom of the terminal on standard error, drawn ten times a
/// second and first after a tenth, so that short work shows none. Does nothing when standard error
/// is no terminal.
class TerminalBar {
  public:
    /// @param text what the line says now; called on a thread of the bar's own.
    explicit TerminalBar(std::function<std::string()> text);
    /// Takes the line away.
    ~TerminalBar();
    TerminalBar(const TerminalBar&) = delete;
    TerminalBar& operator=(const TerminalBar&) = delete;

    /// Takes the line away, writes, and lets it come back. Any thread, one at a time.
    void aside(const std::function<void()>& write);

    /// "[####....]  50%", without the control characters that put it in place.
    /// @param maximum above 0.
    [[nodiscard]] static std::string cells(std::int64_t value, std::int64_t maximum);

  private:
    void draw();
    void erase();

    std::function<std::string()> text_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool ending_ = false;
    bool drawn_ = false;
    std::thread painter_;
};

}  // namespace vornic

#endif
