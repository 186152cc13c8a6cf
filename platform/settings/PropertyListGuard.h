#ifndef VORNIC_PLATFORM_SETTINGS_PROPERTY_LIST_GUARD_H
#define VORNIC_PLATFORM_SETTINGS_PROPERTY_LIST_GUARD_H

#include <string_view>

/// Looks at property list bytes before the parsing library does, which takes any nesting by
/// recursion and any number of references to one object: bytes made to exhaust stack or memory are
/// found here.
namespace vornic::platform {

/// False when the containers of an XML property list are nested more than 512 deep, when markup
/// could hide such nesting, or when a text has so many character references that decoding it takes
/// long.
[[nodiscard]] bool isHarmlessXML(std::string_view bytes);

/// False when a binary property list is broken, has a NUL character in a text, has a container
/// within itself, is nested more than 512 deep, or would take more than 512 MB because its objects
/// are referred to again and again.
[[nodiscard]] bool isHarmlessBinary(std::string_view bytes);

}  // namespace vornic::platform

#endif
