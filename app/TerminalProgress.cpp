#include "app/TerminalProgress.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <system_error>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "app/StandardStreams.h"
#include "foundation/FormatString.h"
#include "foundation/TerminalText.h"
#include "platform/CrashStack.h"

namespace vornic {

namespace {

constexpr std::chrono::milliseconds kRepaintInterval{100};
constexpr std::int64_t kBarWidth = 40;
constexpr const char* kEraseLine = "\r\033[K";

bool isRegularFile(int fileDescriptor) {
    struct stat status {};
    return fstat(fileDescriptor, &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

TerminalProgress::TerminalProgress(std::shared_ptr<const Document> document)
    : document_(std::move(document)),
      stdoutIsFile_(isRegularFile(STDOUT_FILENO)),
      stdoutIsTerminal_(isatty(STDOUT_FILENO) != 0) {
    if (isatty(STDERR_FILENO) == 0) {
        return;
    }
    try {
        painter_ = std::thread([this] { draw(); });
    } catch (const std::system_error&) {
        // The system has no thread to give: no bar.
    }
}

TerminalProgress::~TerminalProgress() {
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

void TerminalProgress::printLine(std::string_view line) {
    const std::lock_guard lock(mutex_);
    erase();
    if (stdoutIsTerminal_) {
        writeToStandardOutput(escapedForTerminal(line), false);
    } else {
        writeToStandardOutput(line, false);
    }
    writeToStandardOutput("\n", !stdoutIsFile_);
}

std::string TerminalProgress::bar(std::int64_t value, std::int64_t maximum) {
    if (maximum <= 0) {
        return "Repairing...";
    }
    const std::int64_t shown = std::clamp<std::int64_t>(value, 0, maximum);
    const auto filled = static_cast<std::size_t>(shown * kBarWidth / maximum);
    std::string cells(filled, '#');
    cells.resize(static_cast<std::size_t>(kBarWidth), '.');
    return formatString("[%@] %3li%%", cells, shown * 100 / maximum);
}

void TerminalProgress::draw() {
    const platform::CrashStack crashStack;
    std::unique_lock lock(mutex_);
    while (!wake_.wait_for(lock, kRepaintInterval, [this] { return ending_; })) {
        const std::string text = bar(document_->progressValue(), document_->progressMax());
        static_cast<void>(std::fprintf(stderr, "%s%s", kEraseLine, text.c_str()));
        drawn_ = true;
    }
}

void TerminalProgress::erase() {
    if (drawn_) {
        static_cast<void>(std::fputs(kEraseLine, stderr));
        drawn_ = false;
    }
}

}  // namespace vornic
