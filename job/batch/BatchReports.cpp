#include "job/batch/BatchReports.h"

#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

#include "base/PathText.h"
#include "platform/settings/Directories.h"

namespace vornic {

// @return 0 or the errno value.
int BatchReports::open() {
    if (file_) {
        return 0;
    }
    std::string path = joinPath(platform::temporaryDirectory(), "vornic-batch-XXXXXX");
    file_ = platform::FileDescriptor(mkostemp(path.data(), O_CLOEXEC));
    if (!file_) {
        return errno;
    }
    static_cast<void>(unlink(path.c_str()));
    return 0;
}

bool BatchReports::keep(std::size_t row, std::string_view report, ErrorSlot& error) {
    const std::lock_guard lock(mutex_);
    spans_.erase(row);
    int errorNumber = open();
    if (errorNumber == 0 && lseek(file_.get(), static_cast<off_t>(end_), SEEK_SET) < 0) {
        errorNumber = errno;
    }
    if (errorNumber == 0) {
        errorNumber = platform::writeAll(file_.get(), report.data(), report.size());
    }
    if (errorNumber != 0) {
        error = posixError("The report cannot be kept", errorNumber);
        return false;
    }
    spans_[row] = {end_, report.size()};
    end_ += report.size();
    return true;
}

bool BatchReports::has(std::size_t row) const {
    const std::lock_guard lock(mutex_);
    return spans_.contains(row);
}

std::string BatchReports::of(std::size_t row) const {
    const std::lock_guard lock(mutex_);
    const auto found = spans_.find(row);
    if (found == spans_.end()) {
        return "";
    }
    const auto [offset, length] = found->second;
    std::string report(length, '\0');
    if (lseek(file_.get(), static_cast<off_t>(offset), SEEK_SET) < 0 ||
        platform::readBlock(file_.get(), report.data(), length).length != length) {
        return "";
    }
    return report;
}

void BatchReports::clear() {
    const std::lock_guard lock(mutex_);
    spans_.clear();
    file_ = {};
    end_ = 0;
}

}  // namespace vornic
