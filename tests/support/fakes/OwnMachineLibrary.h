#ifndef VORNIC_TESTS_SUPPORT_FAKES_OWN_MACHINE_LIBRARY_H
#define VORNIC_TESTS_SUPPORT_FAKES_OWN_MACHINE_LIBRARY_H

#include "tests/support/machine/PrivateMounts.h"

namespace vornic::test {

/// Gives the process a /var/lib of its own while the object lives, empty and open to everybody, for
/// tests on what is kept in the machine's Library. Needs root; make it before the process gives
/// root's rights up.
class OwnMachineLibrary {
  public:
    static constexpr const char* kFolder = "/var/lib/quillmark";

    OwnMachineLibrary()
        : isMounted_(mounts_.isAvailable() &&
                     mounts_.mountVolume("/var/lib", "tmpfs", "size=1m,mode=1777")) {}

    /// False where it cannot be had; a test skips then.
    [[nodiscard]] bool isMounted() const { return isMounted_; }

  private:
    PrivateMounts mounts_;
    bool isMounted_;
};

}  // namespace vornic::test

#endif
