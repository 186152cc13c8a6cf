#include "platform/volumes/VolumeStatistics.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <future>
#include <memory>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/statvfs.h>

#include "base/Exception.h"
#include "platform/files/Failure.h"
#include "platform/files/FileDescriptor.h"
#include "platform/threads/Thread.h"

namespace vornic::platform {
namespace {

struct Answer {
    int errorNumber = 0;
    VolumeStatistics statistics;
};

std::string labelOf(const std::string& path) {
    std::array<char, FSLABEL_MAX + 1> label{};
    const FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder || ioctl(folder.get(), FS_IOC_GETFSLABEL, label.data()) != 0) {
        return "";
    }
    return label.data();
}

Answer ask(const std::string& path) {
    struct statvfs status {};
    if (statvfs(path.c_str(), &status) != 0) {
        return {.errorNumber = errno, .statistics = {}};
    }
    return {.errorNumber = 0,
            .statistics = {.label = labelOf(path),
                           .totalBytes = status.f_blocks * status.f_frsize,
                           .freeBytes = status.f_bavail * status.f_frsize,
                           .isWritable = (status.f_flag & ST_RDONLY) == 0}};
}

}  // namespace

std::optional<VolumeStatistics> volumeStatistics(const std::string& path,
                                                 std::chrono::milliseconds limit,
                                                 ErrorSlot& error) {
    const auto promise = std::make_shared<std::promise<Answer>>();
    std::future<Answer> answer = promise->get_future();
    try {
        detachNewThread([promise, path] { promise->set_value(ask(path)); });
    } catch (const Exception&) {
        failFolder(error, path, "asked for its volume", EAGAIN);
        return std::nullopt;
    }
    if (answer.wait_for(limit) != std::future_status::ready) {
        return std::nullopt;
    }
    const Answer given = answer.get();
    if (given.errorNumber != 0) {
        failFolder(error, path, "asked for its volume", given.errorNumber);
        return std::nullopt;
    }
    return given.statistics;
}

}  // namespace vornic::platform
