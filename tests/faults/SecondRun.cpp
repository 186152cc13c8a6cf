#include "tests/faults/SecondRun.h"

#include <array>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vornic::test {

// A process of its own traces the program, so that neither tracer sees the other's.
SecondRun::SecondRun(const ProgramStart& start, std::chrono::seconds longest) {
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        return;
    }
    if (fork() == 0) {
        CallObserver observer;
        const ProgramEnd end = TracedProgram(start, observer).run(longest);
        const std::array<int, 3> answer{end.status, end.signal, end.hung ? 1 : 0};
        _exit(write(ends[1], answer.data(), sizeof answer) == sizeof answer ? 0 : 1);
    }
    close(ends[1]);
    answer_ = ends[0];
}

SecondRun::~SecondRun() {
    close(answer_);
}

void SecondRun::waitFor(std::chrono::milliseconds longest) const {
    struct pollfd waited {
        answer_, POLLIN, 0
    };
    const auto deadline = std::chrono::steady_clock::now() + longest;
    while (poll(&waited, 1, static_cast<int>(longest.count())) < 0 && errno == EINTR &&
           std::chrono::steady_clock::now() < deadline) {
    }
}

ProgramEnd SecondRun::finish() {
    std::array<int, 3> answer{-1, -1, 1};
    ssize_t count = -1;
    while (count < 0) {
        count = read(answer_, answer.data(), sizeof answer);
        if (count < 0 && errno != EINTR) {
            break;
        }
    }
    // The helper may have been waited for already by the first program's tracer.
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
    }
    ProgramEnd end;
    if (count == sizeof answer) {
        end.status = answer[0];
        end.signal = answer[1];
    }
    end.hung = count != sizeof answer || answer[2] != 0;
    return end;
}

}  // namespace vornic::test
