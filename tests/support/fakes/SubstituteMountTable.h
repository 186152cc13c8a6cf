#ifndef VORNIC_TESTS_SUPPORT_FAKES_SUBSTITUTE_MOUNT_TABLE_H
#define VORNIC_TESTS_SUPPORT_FAKES_SUBSTITUTE_MOUNT_TABLE_H

#include <utility>
#include <vector>

#include "platform/volumes/MountTable.h"

namespace vornic::test {

/// Puts volumes of the test's in the place of the machine's while the object lives.
class SubstituteMountTable {
  public:
    explicit SubstituteMountTable(std::vector<platform::MountedVolume> volumes) {
        platform::setMountTable([volumes = std::move(volumes)] { return volumes; });
    }
    ~SubstituteMountTable() { platform::setMountTable({}); }
    SubstituteMountTable(const SubstituteMountTable&) = delete;
    SubstituteMountTable& operator=(const SubstituteMountTable&) = delete;
};

}  // namespace vornic::test

#endif
