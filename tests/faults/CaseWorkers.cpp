#include "tests/faults/CaseWorkers.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vornic::test {

namespace {

// Messages keep their bounds, up to this many bytes.
constexpr std::size_t kLongestMessage = std::size_t{64} * 1024;
constexpr std::size_t kHead = 2;

ssize_t receive(int line, std::array<char, kLongestMessage>& message) {
    ssize_t count = -1;
    do {
        count = recv(line, message.data(), message.size(), 0);
    } while (count < 0 && errno == EINTR);
    return count;
}

[[noreturn]] void work(int line, const CaseWorkers::Try& tryCase) {
    std::size_t number = 0;
    std::array<char, kLongestMessage> message;
    while (receive(line, message) == sizeof number) {
        std::copy_n(message.data(), sizeof number, reinterpret_cast<char*>(&number));
        const CaseAnswer answer = tryCase(number);
        std::string text{answer.tried ? '1' : '0', answer.isWrong ? '1' : '0'};
        text += answer.told.substr(0, kLongestMessage - kHead);
        if (send(line, text.data(), text.size(), MSG_NOSIGNAL) < 0) {
            break;
        }
    }
    // What the first process has to put away is not the worker's.
    _exit(EXIT_SUCCESS);
}

}  // namespace

CaseWorkers::CaseWorkers(std::size_t workers, const Try& tryCase) {
    std::fflush(stdout);
    for (std::size_t index = 0; index < workers; ++index) {
        std::array<int, 2> ends{-1, -1};
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
            break;
        }
        const pid_t process = fork();
        if (process == 0) {
            close(ends[0]);
            // Else a worker would keep the line of another open.
            for (const Worker& other : workers_) {
                close(other.line);
            }
            work(ends[1], tryCase);
        }
        close(ends[1]);
        if (process < 0) {
            close(ends[0]);
            break;
        }
        workers_.push_back({.process = process, .line = ends[0], .number = std::nullopt});
    }
}

CaseWorkers::~CaseWorkers() {
    for (const Worker& worker : workers_) {
        close(worker.line);
    }
    for (const Worker& worker : workers_) {
        while (waitpid(worker.process, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
}

void CaseWorkers::give(Worker& worker, std::size_t number) {
    worker.number = number;
    if (send(worker.line, &number, sizeof number, MSG_NOSIGNAL) < 0) {
        std::perror("send");
    }
}

void CaseWorkers::finish(Worker& worker, const Take& take) {
    std::array<char, kLongestMessage> message;
    const ssize_t count = receive(worker.line, message);
    const std::size_t number = *std::exchange(worker.number, std::nullopt);
    if (count < static_cast<ssize_t>(kHead)) {
        lost_.push_back(number);
        close(std::exchange(worker.line, -1));
        return;
    }
    take(number, {.tried = message[0] == '1',
                  .isWrong = message[1] == '1',
                  .told = {message.data() + kHead, static_cast<std::size_t>(count) - kHead}});
}

std::vector<std::size_t> CaseWorkers::tryAll(std::size_t count, const Take& take,
                                             const std::function<bool()>& mayGoOn) {
    std::size_t next = 0;
    for (;;) {
        std::vector<struct pollfd> waited;
        for (Worker& worker : workers_) {
            if (worker.line >= 0 && !worker.number && next < count && mayGoOn()) {
                give(worker, next++);
            }
            waited.push_back({worker.number ? worker.line : -1, POLLIN, 0});
        }
        const bool isBusy = std::any_of(workers_.begin(), workers_.end(), [](const Worker& worker) {
            return worker.number.has_value();
        });
        if (!isBusy) {
            return std::exchange(lost_, {});
        }
        if (poll(waited.data(), waited.size(), -1) < 0) {
            continue;
        }
        for (std::size_t index = 0; index < workers_.size(); ++index) {
            if (waited[index].revents != 0) {
                finish(workers_[index], take);
            }
        }
    }
}

}  // namespace vornic::test
