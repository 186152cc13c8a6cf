#ifndef VORNIC_FORMATS_FILE_URL_H
#define VORNIC_FORMATS_FILE_URL_H

#include <string>
#include <string_view>

namespace vornic {

/// What can be wrong with the URL of a file (RFC 8089).
enum class FileURLFault {
    none,
    /// No scheme, another one, one slash behind it where programs look for two, or no path.
    notAbsolute,
    /// Backslashes, a drive letter where the host belongs, or `\\server`.
    windowsPath,
    /// Characters that have to be percent-encoded (RFC 3986, section 2), or a stray percent sign.
    notEncoded,
    /// A host that is neither left out nor "localhost".
    otherHost,
    /// A file name without an extension, or none at all.
    noExtension,
};

/// The first of them that the URL has. @param url as a program sees it, references replaced.
[[nodiscard]] FileURLFault faultOfFileURL(std::string_view url);

/// The URL with each character encoded that has to be; what is encoded already stays.
[[nodiscard]] std::string encodedURL(std::string_view url);

/// A path, such as "/Volumes/A B/x.mov" or "file:/Volumes/A%20B/x.mov", as a URL:
/// "file:///Volumes/A%20B/x.mov". "" for one that is not absolute.
[[nodiscard]] std::string fileURLOfPath(std::string_view path);

/// What a Windows path in a URL, or instead of one, means: "file:///C:/a/b.mov". "" where that is
/// not plain.
[[nodiscard]] std::string fileURLOfWindowsPath(std::string_view url);

}  // namespace vornic

#endif
