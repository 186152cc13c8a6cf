#ifndef VORNIC_PLATFORM_PROCESSES_SYSTEM_TOOL_H
#define VORNIC_PLATFORM_PROCESSES_SYSTEM_TOOL_H

#include <string>

namespace vornic::platform {

/// Where this system has one of its tools. Programs ask for a tool by a fixed path ("/bin/rm",
/// "/usr/sbin/chown"); systems differ in which of /usr/bin, /bin, /usr/sbin and /sbin holds it.
/// @return the path as it is when something stands there, or when it lies in no such folder;
///     else the first of the others that has a program of that name; the path as it is without one.
/// Any thread.
[[nodiscard]] std::string systemToolPath(const std::string& tool);

}  // namespace vornic::platform

#endif
