#ifndef VORNIC_PLATFORM_EXTENDED_ATTRIBUTES_H
#define VORNIC_PLATFORM_EXTENDED_ATTRIBUTES_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Extended attributes of open files (xattr(7)), by their full Linux names. Each operation tells
/// its failure by an errno value, so that callers can tell a volume without attributes (ENOTSUP)
/// apart.
namespace vornic::platform {

/// The names of all attributes of an open file; empty on a volume without them.
[[nodiscard]] std::vector<std::string> extendedAttributeNames(int fileDescriptor);

/// The value of one attribute.
/// @param errorNumber set to the errno value when nothing is returned (ENODATA: no such attribute).
[[nodiscard]] std::optional<std::string> extendedAttribute(int fileDescriptor,
                                                           const std::string& name,
                                                           int& errorNumber);

/// Sets one attribute, replacing an older value. @return 0, or the errno value.
[[nodiscard]] int setExtendedAttribute(int fileDescriptor, const std::string& name,
                                       std::string_view value);

/// Removes one attribute. @return 0, or the errno value (ENODATA: no such attribute).
[[nodiscard]] int removeExtendedAttribute(int fileDescriptor, const std::string& name);

/// Gives `to` every attribute of `from`; those that the process may not set are left out.
/// @return 0, or the errno value of the first one that could not be kept although the volume knows
///     attributes and the process may set it.
int copyExtendedAttributes(int from, int to);

}  // namespace vornic::platform

#endif
