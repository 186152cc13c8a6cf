#include "app/cli/TerminalBar.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <system_error>
#include <utility>

#include <unistd.h>

#include "base/FormatString.h"
#include "platform/crash/CrashStack.h"

namespace vornic {

namespace {

constexpr std::chrono::milliseconds kRepaintInterval{100};
constexpr std::int64_t kBarWidth = 40;
constexpr const char* kEraseLine = "\r\033[K";

}  // namespace

TerminalBar::TerminalBar(std::function<std::string()> text) : text_(std::move(text)) {
    if (isatty(STDERR_FILENO) == 0) {
        return;
    }
    try {
        painter_ = std::thread([this] { draw(); });
    } catch (const std::system_error&) {
        // The system has no thread to give: no bar.
    }
}

TerminalBar::~TerminalBar() {
    if (!painter_.joinable()) {
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    wake_.notify_one();
    painter_.join();
    erase();
}

void TerminalBar::aside(const std::function<void()>& write) {
    const std::lock_guard lock(mutex_);
    erase();
    write();
}

std::string TerminalBar::cells(std::int64_t value, std::int64_t maximum) {
    const std::int64_t shown = std::clamp<std::int64_t>(value, 0, maximum);
    const auto filled = static_cast<std::size_t>(shown * kBarWidth / maximum);
    std::string cells(filled, '#');
    cells.resize(static_cast<std::size_t>(kBarWidth), '.');
    return formatString("[%@] %3li%%", cells, shown * 100 / maximum);
}

void TerminalBar::draw() {
    const platform::CrashStack crashStack;
    std::unique_lock lock(mutex_);
    while (!wake_.wait_for(lock, kRepaintInterval, [this] { return ending_; })) {
        static_cast<void>(std::fprintf(stderr, "%s%s", kEraseLine, text_().c_str()));
        drawn_ = true;
    }
}

void TerminalBar::erase() {
    if (drawn_) {
        static_cast<void>(std::fputs(kEraseLine, stderr));
        drawn_ = false;
    }
}

}  // namespace vornic
