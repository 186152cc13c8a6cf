#include "platform/files/FolderWatch.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include <sys/inotify.h>
#include <unistd.h>

namespace vornic::platform {

namespace {

constexpr std::uint32_t kEvents = IN_CLOSE_WRITE | IN_MODIFY | IN_CREATE | IN_DELETE |
                                  IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF;

}  // namespace

std::optional<FolderWatch> FolderWatch::of(const std::string& folder, ErrorSlot& error) {
    FileDescriptor file(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (!file || inotify_add_watch(file.get(), folder.c_str(), kEvents | IN_ONLYDIR) < 0) {
        error = posixError("The folder " + folder + " cannot be watched", errno);
        return std::nullopt;
    }
    return FolderWatch(std::move(file));
}

std::vector<std::string> FolderWatch::takeChanges() {
    std::vector<std::string> names;
    alignas(inotify_event) std::array<char, 4096> buffer{};
    for (;;) {
        const ssize_t length = read(file_.get(), buffer.data(), buffer.size());
        if (length <= 0) {
            return names;
        }
        for (std::size_t at = 0; at < static_cast<std::size_t>(length);) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + at, sizeof event);
            const char* const name = buffer.data() + at + sizeof event;
            names.emplace_back(event.len == 0 ? "" : name);
            at += sizeof event + event.len;
        }
    }
}

}  // namespace vornic::platform
