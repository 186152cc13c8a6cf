#ifndef VORNIC_PLATFORM_VOLUMES_MOUNT_TABLE_H
#define VORNIC_PLATFORM_VOLUMES_MOUNT_TABLE_H

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vornic::platform {

/// A volume and the place in the folder tree where it is mounted.
struct MountedVolume {
    /// Absolute, without a trailing slash.
    std::string mountPoint;
    /// As the kernel names it ("ext4", "tmpfs", "fuse.sshfs"), but "hfs+" for "hfsplus".
    std::string filesystemType;
    /// What is mounted: "/dev/sda1", "server:/export", "tmpfs".
    std::string device;
    friend bool operator==(const MountedVolume&, const MountedVolume&) = default;
};

/// The volumes that the process sees. Those that lie in another volume stand before it, so that the
/// first one whose mount point begins a path is the one that the path lies on; of several at one
/// mount point the one on top is listed. Reading the table asks no volume anything, hence one that
/// does not answer is no hindrance. Any thread.
/// @return no volumes when the system does not say.
[[nodiscard]] std::vector<MountedVolume> mountedVolumes();

/// The volumes in a text of the form of /proc/self/mountinfo (proc_pid_mountinfo(5)), ordered as
/// `mountedVolumes` has them. Lines of another form are passed over.
[[nodiscard]] std::vector<MountedVolume> volumesInMountInfo(std::string_view text);

/// What `mountedVolumes` answers with from now on, for tests; an empty function: the system's own.
void setMountTable(std::function<std::vector<MountedVolume>()> table);

}  // namespace vornic::platform

#endif
