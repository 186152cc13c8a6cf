#ifndef VORNIC_MEDIA_MEDIA_PATH_H
#define VORNIC_MEDIA_MEDIA_PATH_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vornic {

/// Where the path of a media file begins.
enum class PathStyle {
    /// At the root folder of macOS or Linux: "/Volumes/A/x.mov".
    posix,
    /// At a drive: "C:/A/x.mov".
    windows,
    /// At a share of a server: "//server/share/A/x.mov".
    unc,
    /// Nowhere: "x.mov".
    relative,
    /// What names no file: another scheme, or nothing.
    none,
};

/// How it is written.
enum class PathForm {
    /// file://localhost/Volumes/A/x.mov, file://localhost/C:/A/x.mov
    localhost,
    /// file:///Volumes/A/x.mov
    tripleSlash,
    /// As Windows programs write it: file://localhost/C%3a/A/x.mov
    windows,
    /// file:/Volumes/A/x.mov
    singleSlash,
    /// With the name of a server: file://server/share/A/x.mov
    host,
    /// No URL: /Volumes/A/x.mov, C:\A\x.mov, \\server\share\x.mov
    plain,
    /// A URL without a beginning: A/x.mov
    relative,
    /// Another scheme, or nothing.
    other,
};

/// "localhost", "triple-slash", "windows", "single-slash", "host", "plain", "relative", "other".
[[nodiscard]] std::string_view nameOf(PathForm form);

/// The path of a media file, whatever it is written like.
struct MediaPath {
    PathStyle style = PathStyle::none;
    /// The names on the way to the file, decoded: a drive with its colon, or a server and a share,
    /// count as the first ones. Bytes as the file has them, mostly UTF-8.
    std::vector<std::string> components;
    /// For `none`: what is written.
    std::string other;

    /// With forward slashes, whatever the style: "/Volumes/A B/x.mov", "C:/A/x.mov",
    /// "//server/share/x.mov".
    [[nodiscard]] std::string text() const;
    /// The file's name; "" for none.
    [[nodiscard]] std::string name() const {
        return components.empty() ? std::string() : components.back();
    }
    friend bool operator==(const MediaPath&, const MediaPath&) = default;
};

/// A path and what it was written like.
struct WrittenPath {
    PathForm form = PathForm::other;
    MediaPath path;
};

/// Takes apart what a project names a media file by: a URL (RFC 8089, its Windows forms of appendix
/// E, and what exporters make of them), or a path. Doubled slashes and "." count for nothing. In a
/// URL, "#" and "?" belong to the name: exporters that forget to encode are many, and queries and
/// fragments of files do not count.
/// @param url as a program sees it, references replaced.
[[nodiscard]] WrittenPath readMediaPath(std::string_view url);

/// The path of a file of this computer, whatever its names look like.
[[nodiscard]] MediaPath localPath(std::string_view path);

/// A path as a user types it: also a URL.
[[nodiscard]] MediaPath readTypedPath(std::string_view text);

/// Writes a path in a form, each name percent-encoded as it has to be. Where the form has no room
/// for the path's style the nearest one is taken: a path of macOS or Linux has no drive and becomes
/// "localhost" for `windows`; `host` is for shares alone; `relative` and `other` hold no absolute
/// path and become `fallback`, and so does a plain path that
/// XML cannot hold as it is.
[[nodiscard]] std::string writtenAs(PathForm form, const MediaPath& path, PathForm fallback);

/// The same in the form that a URL has. What the last components of the URL are encoded like stays,
/// as far as it is right.
/// @param kept how many components at the end of `path` are those at the end of `url`.
[[nodiscard]] std::string writtenLike(std::string_view url, const MediaPath& path, std::size_t kept,
                                      PathForm fallback);

}  // namespace vornic

#endif
