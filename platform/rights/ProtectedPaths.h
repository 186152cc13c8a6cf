#ifndef VORNIC_PLATFORM_RIGHTS_PROTECTED_PATHS_H
#define VORNIC_PLATFORM_RIGHTS_PROTECTED_PATHS_H

#include <string>
#include <string_view>
#include <vector>

namespace vornic::platform {

/// Whether a path is one of this platform's own that must never be removed, moved or overwritten:
/// "/" itself; /etc, /boot, /dev, /proc, /sys, /bin, /sbin, /lib, /lib64, and /usr without
/// /usr/local, with everything in them; /home, /root, /run, /mnt, /media, /srv, /opt, /tmp,
/// /usr/local, /var and what stands in /var as themselves. The text alone is compared (extra
/// slashes do not count). Any thread.
[[nodiscard]] bool isProtectedPath(std::string_view path);

/// The same of an entry of an open folder, by device and inode, whatever names lead there: it is
/// one of the protected folders, or a link that bears the name of one, or lies in a protected tree.
/// Any thread.
[[nodiscard]] bool isProtectedEntry(int folder, const std::string& name);

/// Both questions about every form of a path (`formsOfPath`). Looks at the disk; any thread.
[[nodiscard]] bool isProtectedItem(const std::string& path);

/// The forms under which a path must be asked about before anything is done to it: as given, and,
/// where that differs, absolute with the links of its parent folder resolved. The last component is
/// not followed, because the tools that remove and move act on a link and not on its target; where
/// it says a folder ("/a/b/", "/a/..") rather than an entry, what it leads to is a form too.
/// Looks at the disk; any thread. An empty path has no form but itself.
[[nodiscard]] std::vector<std::string> formsOfPath(const std::string& path);

/// Whether writing to a path would put something in the place of a protected path or into it. Asks
/// about the forms of the path and, as a tool that writes follows a link at its end, of what that
/// leads to. Looks at the disk; any thread.
[[nodiscard]] bool leadsToProtectedPath(const std::string& path);

/// The same for a tool that writes an item to a destination and, where a folder stands there, puts
/// the item into it under its own name.
[[nodiscard]] bool writingLeadsToProtectedPath(const std::string& source,
                                               const std::string& destination);

/// The same for making a folder with all folders above it: asks where the first of them would be.
[[nodiscard]] bool makingLeadsToProtectedPath(const std::string& folder);

}  // namespace vornic::platform

#endif
