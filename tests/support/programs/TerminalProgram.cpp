#include "tests/support/programs/TerminalProgram.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace vornic::test {

namespace {

std::vector<char*> pointers(const std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (const std::string& text : texts) {
        result.push_back(const_cast<char*>(text.c_str()));
    }
    result.push_back(nullptr);
    return result;
}

}  // namespace

TerminalProgram::TerminalProgram(const ProgramSettings& settings) {
    constexpr int kCannotStart = 127;
    std::vector<std::string> words = settings.arguments;
    words.insert(words.begin(), settings.program);
    const std::vector<char*> arguments = pointers(words);
    const std::vector<char*> environment = pointers(settings.environment);
    process_ = forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (process_ == 0) {
        struct termios quiet {};
        tcgetattr(STDIN_FILENO, &quiet);
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        // Lines arrive as they were written.
        quiet.c_oflag &= ~static_cast<tcflag_t>(OPOST);
        tcsetattr(STDIN_FILENO, TCSANOW, &quiet);
        if (chdir(settings.folder.c_str()) == 0) {
            execve(settings.program.c_str(), arguments.data(), environment.data());
        }
        _exit(kCannotStart);
    }
    EXPECT_GT(process_, 0);
}

TerminalProgram::~TerminalProgram() {
    if (process_ > 0) {
        kill(process_, SIGKILL);
        finish();
    }
}

bool TerminalProgram::readOnce() {
    constexpr int kLongestSilence = 60'000;
    struct pollfd waited {
        terminal_, POLLIN, 0
    };
    const int ready = poll(&waited, 1, kLongestSilence);
    if (ready < 0 && errno == EINTR) {
        return true;
    }
    if (ready <= 0) {
        ADD_FAILURE() << "the program hangs; so far it wrote\n" << shown_;
        kill(process_, SIGKILL);
        return false;
    }
    std::array<char, 4096> buffer{};
    const ssize_t count = read(terminal_, buffer.data(), buffer.size());
    if (count > 0) {
        shown_.append(buffer.data(), static_cast<std::size_t>(count));
    }
    // A terminal that nobody holds any more ends with an input error.
    return count > 0 || (count < 0 && errno == EINTR);
}

bool TerminalProgram::readUntil(std::string_view text) {
    while (shown_.find(text) == std::string::npos) {
        if (!readOnce()) {
            return false;
        }
    }
    return true;
}

void TerminalProgram::type(std::string_view keys) const {
    EXPECT_EQ(write(terminal_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
}

ProgramResult TerminalProgram::finish() {
    while (readOnce()) {
    }
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
    close(std::exchange(terminal_, -1));
    ProgramResult result;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    result.output = std::move(shown_);
    return result;
}

}  // namespace vornic::test
