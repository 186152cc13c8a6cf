#include "app/cli/StandardStreams.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace vornic {

namespace {

constexpr int kUnknownError = -1;
// The number of the first error, or 0.
int outputError = 0;

void writeError(std::string_view text) noexcept {
    static_cast<void>(write(STDERR_FILENO, text.data(), text.size()));
}

}  // namespace

void secureStandardStreams() {
    // The system gives out the lowest free number, so this fills the gaps among the first three.
    int descriptor = 0;
    do {
        descriptor = open("/dev/null", O_RDWR);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0) {
        close(descriptor);
    }
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
}

void writeToStandardOutput(std::string_view text, bool flushes) {
    errno = 0;
    if (!text.empty()) {
        static_cast<void>(std::fwrite(text.data(), 1, text.size(), stdout));
    }
    if (flushes) {
        static_cast<void>(std::fflush(stdout));
    }
    if (outputError == 0 && std::ferror(stdout) != 0) {
        // The log writes there, too, and nobody knows any more why that failed.
        outputError = errno != 0 ? errno : kUnknownError;
    }
}

ErrorSlot standardOutputError() {
    writeToStandardOutput({}, true);
    if (outputError == 0) {
        return std::nullopt;
    }
    constexpr std::string_view kSentence = "Not everything could be written to standard output";
    if (outputError == kUnknownError) {
        return Error{.domain = std::string(kPosixErrorDomain),
                     .code = EIO,
                     .description = std::string(kSentence) + "."};
    }
    return posixError(kSentence, outputError);
}

void complainOfMemory(std::string_view program) noexcept {
    writeError(program);
    writeError(": There is not enough memory.\n");
}

}  // namespace vornic
