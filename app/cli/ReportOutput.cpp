#include "app/cli/ReportOutput.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>

#include <sys/stat.h>
#include <unistd.h>

#include "app/cli/StandardStreams.h"
#include "base/FormatString.h"

namespace vornic {

namespace {

bool isSpecial(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

// Whether the file begins like XML and has the root element of a project near its beginning, in
// any encoding that leaves letters as they are but for NUL bytes between them.
bool isProject(const std::string& path) {
    std::FILE* const file = std::fopen(path.c_str(), "re");
    if (file == nullptr) {
        return false;
    }
    constexpr std::size_t kHead = 4096;
    std::array<char, kHead> bytes{};
    std::string head(bytes.data(), std::fread(bytes.data(), 1, bytes.size(), file));
    static_cast<void>(std::fclose(file));
    std::erase(head, '\0');
    const std::size_t start = head.find_first_not_of("\xEF\xBB\xBF\xFE\xFF \t\r\n");
    return start != std::string::npos && head[start] == '<' &&
           (head.find("<xmeml") != std::string::npos || head.find("<fcpxml") != std::string::npos);
}

}  // namespace

std::string ReportOutput::unwritable() const {
    return formatString("The %@ cannot be written to %@", noun_, path_);
}

ReportOutput::~ReportOutput() {
    if (stream_ != nullptr) {
        static_cast<void>(std::fclose(stream_));
    }
}

bool ReportOutput::open(const std::optional<std::string>& path, ErrorSlot& error) {
    if (!path || *path == "-") {
        return true;
    }
    path_ = *path;
    if (isSpecial(path_)) {
        stream_ = std::fopen(path_.c_str(), "we");
        if (stream_ == nullptr) {
            error = posixError(unwritable(), errno);
        }
        return stream_ != nullptr;
    }
    if (isProject(path_)) {
        error = Error{.domain = std::string(kPosixErrorDomain),
                      .code = EEXIST,
                      .description = unwritable() + ": a project file stands there."};
        return false;
    }
    file_ = std::make_unique<platform::AtomicFile>();
    return file_->open(path_, error);
}

bool ReportOutput::isTerminal() const {
    if (file_ != nullptr) {
        return false;
    }
    return isatty(stream_ == nullptr ? STDOUT_FILENO : fileno(stream_)) != 0;
}

void ReportOutput::write(std::string_view text) {
    if (error_) {
        return;
    }
    if (file_ != nullptr) {
        static_cast<void>(file_->write(text, error_));
    } else if (stream_ == nullptr) {
        writeToStandardOutput(text, false);
    } else if (std::fwrite(text.data(), 1, text.size(), stream_) != text.size()) {
        error_ = posixError(unwritable(), errno);
    }
}

void ReportOutput::flush() {
    if (isStandardOutput()) {
        error_ = standardOutputError();
    } else if (stream_ != nullptr && !error_ && std::fflush(stream_) != 0) {
        error_ = posixError(unwritable(), errno);
    }
}

void ReportOutput::abandon() {
    if (file_ != nullptr) {
        file_->abort();
    }
    flush();
}

ErrorSlot ReportOutput::finish() {
    flush();
    if (file_ != nullptr && !error_) {
        static_cast<void>(file_->commit(platform::Durability::buffered, error_));
    }
    return error_;
}

}  // namespace vornic
