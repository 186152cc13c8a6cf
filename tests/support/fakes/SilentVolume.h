#ifndef VORNIC_TESTS_SUPPORT_FAKES_SILENT_VOLUME_H
#define VORNIC_TESTS_SUPPORT_FAKES_SILENT_VOLUME_H

#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include "tests/support/machine/PrivateMounts.h"

namespace vornic::test {

/// A volume whose file system program never answers: who asks it anything waits until `giveUp`,
/// from when on every question is an error. Needs root and FUSE.
class SilentVolume {
  public:
    explicit SilentVolume(const std::string& folder)
        : folder_(folder), device_(open("/dev/fuse", O_RDWR | O_CLOEXEC)) {
        const std::string options =
            "fd=" + std::to_string(device_) + ",rootmode=40000,user_id=0,group_id=0,allow_other";
        isMounted_ = mounts_.isAvailable() && device_ >= 0 &&
                     mount("silent", folder.c_str(), "fuse.silent", MS_NODEV | MS_NOSUID,
                           options.c_str()) == 0;
    }
    ~SilentVolume() {
        giveUp();
        if (isMounted_) {
            EXPECT_TRUE(mounts_.unmountVolume(folder_));
        }
    }
    SilentVolume(const SilentVolume&) = delete;
    SilentVolume& operator=(const SilentVolume&) = delete;

    [[nodiscard]] bool isMounted() const { return isMounted_; }
    /// The program behind the volume goes.
    void giveUp() {
        if (device_ >= 0) {
            close(device_);
        }
        device_ = -1;
    }

  private:
    PrivateMounts mounts_;
    std::string folder_;
    int device_;
    bool isMounted_ = false;
};

}  // namespace vornic::test

#endif
