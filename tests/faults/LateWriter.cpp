#include "tests/faults/LateWriter.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vornic::test {

namespace {

bool writeAll(int file, std::string_view bytes) {
    return write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

void waitForEnd(int pipe) {
    char byte = 0;
    while (read(pipe, &byte, 1) < 0 && errno == EINTR) {
    }
}

}  // namespace

LateWriter::LateWriter(const std::string& path, std::string_view first, std::string_view rest) {
    std::array<int, 2> go{-1, -1};
    std::array<int, 2> done{-1, -1};
    if (pipe2(go.data(), O_CLOEXEC) != 0 || pipe2(done.data(), O_CLOEXEC) != 0) {
        std::abort();
    }
    if (fork() == 0) {
        close(go[1]);
        close(done[0]);
        const int file = open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
        bool isDone = file >= 0 && writeAll(file, first);
        waitForEnd(go[0]);
        isDone = isDone && writeAll(file, rest);
        _exit(isDone ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    close(go[0]);
    close(done[1]);
    go_ = go[1];
    done_ = done[0];
}

LateWriter::~LateWriter() {
    finish();
}

void LateWriter::finish() {
    if (go_ < 0) {
        return;
    }
    close(std::exchange(go_, -1));
    waitForEnd(done_);
    close(std::exchange(done_, -1));
    // The program's tracer may have waited for it already.
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
    }
}

}  // namespace vornic::test
