#ifndef VORNIC_PLATFORM_ITEMS_EXTENDED_ATTRIBUTES_H
#define VORNIC_PLATFORM_ITEMS_EXTENDED_ATTRIBUTES_H

#include <string>
#include <string_view>
#include <vector>

#include "base/ErrnoOr.h"

/// Extended attributes of open files (xattr(7)), by their full Linux names. Each operation says
/// its failure by an errno value, so that callers can tell a volume without attributes (ENOTSUP)
/// apart.
namespace vornic::platform {

/// The names of all attributes of an open file; empty on a volume without them.
/// @return the errno value when the system does not say.
[[nodiscard]] ErrnoOr<std::vector<std::string>> extendedAttributeNames(int fileDescriptor);

/// The value of one attribute.
/// @return the errno value when there is none (ENODATA: no such attribute).
[[nodiscard]] ErrnoOr<std::string> extendedAttribute(int fileDescriptor, const std::string& name);

/// Sets one attribute, replacing an older value. @return 0, or the errno value.
[[nodiscard]] int setExtendedAttribute(int fileDescriptor, const std::string& name,
                                       std::string_view value);

/// Removes one attribute. @return 0, or the errno value (ENODATA: no such attribute).
[[nodiscard]] int removeExtendedAttribute(int fileDescriptor, const std::string& name);

/// True for an errno value with which an attribute gets lost that its owner may expect to be kept:
/// not for one that is gone, that the volume does not know, or that is the system's.
[[nodiscard]] bool losesAttribute(const std::string& name, int errorNumber);

/// Gives `to` every attribute of `from`; those that the process may not set are left out.
/// @return 0, or the errno value of the first one that could not be read or kept although the
///     volume knows attributes and the process may set it; the listing's when that failed.
int copyExtendedAttributes(int from, int to);

}  // namespace vornic::platform

#endif
