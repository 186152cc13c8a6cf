#ifndef VORNIC_BASE_ERROR_H
#define VORNIC_BASE_ERROR_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vornic {

/// What went wrong in an operation, in words that a video editor understands.
struct Error {
    /// Which part of the system reports it: `kPosixErrorDomain`, `kXMLErrorDomain` and others.
    std::string domain;
    /// The number within the domain (an errno value in the POSIX domain).
    int code = 0;
    /// One readable sentence that names the file or the place.
    std::string description;
    /// 1-based place in a text, counted in lines and in Unicode characters of the line; 0 when the
    /// error has no place. When there is one the description names it already.
    std::size_t line = 0;
    std::size_t column = 0;

    [[nodiscard]] const std::string& localizedDescription() const { return description; }
};

/// The place where an operation leaves its error. Operations fill it on failure and never clear it.
using ErrorSlot = std::optional<Error>;

inline constexpr std::string_view kPosixErrorDomain = "POSIX";
inline constexpr std::string_view kXMLErrorDomain = "XML";
inline constexpr std::string_view kTextErrorDomain = "Text";
inline constexpr std::string_view kOSStatusErrorDomain = "OSStatus";

/// An error of the POSIX domain: "The file /a/b.xml cannot be opened: permission denied." is
/// `posixError("The file /a/b.xml cannot be opened", EACCES)`. The reason is a fixed English text
/// whatever the locale.
[[nodiscard]] Error posixError(std::string_view whatFailed, int errorNumber);

}  // namespace vornic

#endif
