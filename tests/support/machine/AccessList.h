#ifndef VORNIC_TESTS_SUPPORT_MACHINE_ACCESS_LIST_H
#define VORNIC_TESTS_SUPPORT_MACHINE_ACCESS_LIST_H

#include <cstdint>
#include <string>
#include <vector>

namespace vornic::test {

/// The extended attributes in which the system keeps a file's access control list, and the one that
/// new items in a folder get (acl(5)).
inline constexpr const char* kAccessList = "system.posix_acl_access";
inline constexpr const char* kDefaultAccessList = "system.posix_acl_default";

/// A list that lets the user 1234 read and write besides the owner, as those attributes hold it.
[[nodiscard]] inline std::string accessListFor1234() {
    struct Entry {
        std::uint16_t tag;
        std::uint16_t rights;
        std::uint32_t id;
    };
    constexpr std::uint32_t kVersion = 2;
    constexpr std::uint32_t kNobody = 0xFFFFFFFF;
    const std::vector<Entry> entries{{0x01, 6, kNobody},
                                     {0x02, 6, 1234},
                                     {0x04, 4, kNobody},
                                     {0x10, 6, kNobody},
                                     {0x20, 0, kNobody}};
    std::string bytes(reinterpret_cast<const char*>(&kVersion), sizeof kVersion);
    bytes.append(reinterpret_cast<const char*>(entries.data()), entries.size() * sizeof(Entry));
    return bytes;
}

}  // namespace vornic::test

#endif
