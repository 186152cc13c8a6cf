#include "platform/processes/ChildAnswers.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <unistd.h>

#include "platform/processes/ProcessReaper.h"
#include "platform/processes/Termination.h"

namespace vornic::platform {

namespace {

using Length = std::uint32_t;
constexpr Length kEnd = 0xFFFFFFFF;
constexpr std::chrono::milliseconds kLookForSignals{50};

bool send(int pipe, Length length, const std::string& bytes) {
    std::string message(sizeof(length), '\0');
    std::memcpy(message.data(), &length, sizeof(length));
    message += bytes;
    return writeAll(pipe, message.data(), message.size()) == 0;
}

// What another process has open must not stay open because of this one: nobody may wait for the
// end of a pipe, or for a lock, that a stuck child holds.
void keepOnly(int descriptor) {
    constexpr int kPipe = 0;
    dup2(descriptor, kPipe);
    if (close_range(kPipe + 1, ~0U, 0) != 0) {
        const long most = sysconf(_SC_OPEN_MAX);
        for (int open = kPipe + 1; open < most; ++open) {
            close(open);
        }
    }
}

[[noreturn]] void answerInChild(int pipe, pid_t parent, const ChildAnswers::Question& question) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        _exit(1);
    }
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        signal(number, SIG_DFL);
    }
    keepOnly(pipe);
    std::size_t index = 0;
    while (const std::optional<std::string> answer = question(index++)) {
        if (!send(STDIN_FILENO, static_cast<Length>(answer->size()), *answer)) {
            _exit(1);
        }
    }
    static_cast<void>(send(STDIN_FILENO, kEnd, ""));
    _exit(0);
}

}  // namespace

ChildAnswers::ChildAnswers(const Question& question) : heard_(std::chrono::steady_clock::now()) {
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        isSilent_ = true;
        return;
    }
    answers_ = FileDescriptor(ends[0]);
    const FileDescriptor sending(ends[1]);
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
        answerInChild(sending.get(), parent, question);
    }
    isSilent_ = child < 0;
    if (child > 0) {
        child_ = std::make_shared<SpawnedProcess>(child);
    }
}

ChildAnswers::~ChildAnswers() {
    giveUp();
}

void ChildAnswers::giveUp() {
    if (child_ != nullptr && !child_->hasEnded()) {
        if (!hasEnded_) {
            child_->sendSignal(SIGKILL);
        }
        reapInBackground(child_);
    }
    child_.reset();
    answers_ = FileDescriptor();
}

// Reads what is there. @return false when nothing comes any more.
bool ChildAnswers::fill(std::chrono::milliseconds limit) {
    const auto deadline = heard_ + limit;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd look{answers_.get(), POLLIN, 0};
        const auto wait = std::clamp(left, std::chrono::milliseconds(0), kLookForSignals);
        const int ready = poll(&look, 1, static_cast<int>(wait.count()));
        if (ready > 0) {
            break;
        }
        if ((ready < 0 && errno != EINTR) || left.count() <= 0 || interruption() != 0) {
            return false;
        }
    }
    constexpr std::size_t kBlock = 65536;
    read_.erase(0, taken_);
    taken_ = 0;
    const std::size_t before = read_.size();
    read_.resize(before + kBlock);
    const ssize_t count = read(answers_.get(), read_.data() + before, kBlock);
    read_.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    heard_ = std::chrono::steady_clock::now();
    return count > 0 || (count < 0 && errno == EINTR);
}

std::optional<std::string> ChildAnswers::next(std::chrono::milliseconds limit) {
    while (!isSilent_ && !hasEnded_) {
        Length length = 0;
        const std::size_t there = read_.size() - taken_;
        if (there >= sizeof(length)) {
            std::memcpy(&length, read_.data() + taken_, sizeof(length));
            if (length == kEnd) {
                hasEnded_ = true;
                break;
            }
            if (there - sizeof(length) >= length) {
                std::string answer = read_.substr(taken_ + sizeof(length), length);
                taken_ += sizeof(length) + length;
                return answer;
            }
        }
        isSilent_ = !fill(limit);
    }
    giveUp();
    return std::nullopt;
}

}  // namespace vornic::platform
