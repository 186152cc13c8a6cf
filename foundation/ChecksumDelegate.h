#ifndef VORNIC_FOUNDATION_CHECKSUM_DELEGATE_H
#define VORNIC_FOUNDATION_CHECKSUM_DELEGATE_H

#include <functional>
#include <string>

namespace vornic {

/// What can be asked while a file's checksum is computed. An operation that is left empty is never
/// called. Set them before the checksum is begun; they are called on background threads and must
/// not throw.
struct ChecksumDelegate {
    /// Asked with the file's path each time that another 50 MiB have been read, while the reading
    /// goes on; the answer false ends it a few blocks later.
    std::function<bool(const std::string& path)> checksumShouldContinue;
};

}  // namespace vornic

#endif
