#include "tests/support/machine/PrivateMounts.h"

#include <filesystem>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace vornic::test {

PrivateMounts::PrivateMounts() {
    const int machines = open("/proc/self/ns/mnt", O_RDONLY | O_CLOEXEC);
    if (machines < 0 || geteuid() != 0 || unshare(CLONE_NEWNS) != 0) {
        close(machines);
        return;
    }
    previous_ = machines;
    mayMount_ = mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

PrivateMounts::~PrivateMounts() {
    if (previous_ < 0) {
        return;
    }
    std::error_code ignored;
    const std::filesystem::path folder = std::filesystem::current_path(ignored);
    // Threads that have just ended may still count as sharing the working folder, with which no one
    // may change over.
    EXPECT_EQ(unshare(CLONE_FS), 0);
    EXPECT_EQ(setns(previous_, CLONE_NEWNS), 0);
    close(previous_);
    // Going back leads to the root folder.
    std::filesystem::current_path(folder, ignored);
}

bool PrivateMounts::mountVolume(const std::string& folder, const std::string& type,
                                const std::string& options) const {
    return isAvailable() &&
           mount("none", folder.c_str(), type.c_str(), MS_NODEV | MS_NOSUID, options.c_str()) == 0;
}

bool PrivateMounts::bindFolder(const std::string& folder) const {
    return isAvailable() && mount(folder.c_str(), folder.c_str(), nullptr, MS_BIND, nullptr) == 0;
}

bool PrivateMounts::makeReadOnly(const std::string& folder) const {
    return isAvailable() &&
           mount(nullptr, folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

bool PrivateMounts::unmountVolume(const std::string& folder) const {
    return isAvailable() && umount2(folder.c_str(), MNT_DETACH) == 0;
}

}  // namespace vornic::test
