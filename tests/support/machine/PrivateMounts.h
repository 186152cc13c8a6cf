#ifndef VORNIC_TESTS_SUPPORT_MACHINE_PRIVATE_MOUNTS_H
#define VORNIC_TESTS_SUPPORT_MACHINE_PRIVATE_MOUNTS_H

#include <string>

namespace vornic::test {

/// A view of the machine's volumes of this process's own while the object lives: what is mounted
/// here is seen by this process and the programs that it starts, and by nobody else. Needs root and
/// the right to mount; make it before the process gives root's rights up.
class PrivateMounts {
  public:
    PrivateMounts();
    /// Puts the process back among the machine's volumes.
    ~PrivateMounts();
    PrivateMounts(const PrivateMounts&) = delete;
    PrivateMounts& operator=(const PrivateMounts&) = delete;

    /// False when the process may not mount.
    [[nodiscard]] bool isAvailable() const { return mayMount_; }

    /// Mounts an empty volume of a type that lives in memory ("tmpfs", "ramfs") over a folder.
    /// @param options such as "size=1m,mode=1777".
    [[nodiscard]] bool mountVolume(const std::string& folder, const std::string& type,
                                   const std::string& options) const;
    /// Makes a folder the mount point of what it holds.
    [[nodiscard]] bool bindFolder(const std::string& folder) const;
    [[nodiscard]] bool makeReadOnly(const std::string& folder) const;
    [[nodiscard]] bool unmountVolume(const std::string& folder) const;

  private:
    int previous_ = -1;
    bool mayMount_ = false;
};

/// A base class for fixtures whose own members give root's rights up: the machine's volumes must be
/// left after that has been undone.
struct OwnMounts {
    PrivateMounts mounts;
};

}  // namespace vornic::test

#endif
