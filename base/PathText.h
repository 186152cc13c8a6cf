#ifndef VORNIC_BASE_PATH_TEXT_H
#define VORNIC_BASE_PATH_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

/// Taking paths and file names apart as bytes, without a look at the disk. All operations are pure
/// and may be called from any thread.
namespace vornic {

/// The longest name that a folder entry may have, in bytes.
inline constexpr std::size_t kLongestName = 255;

/// The path without trailing slashes; "/" (also for "///") and "" stay.
[[nodiscard]] std::string withoutTrailingSlashes(std::string_view path);

/// The path with exactly one slash at its end; "" stays. What lies in the folder begins with it.
[[nodiscard]] std::string withTrailingSlash(std::string_view path);

/// The folder that holds the path's last component: "/a" for "/a/b", "/" for "/b", "." for "b".
[[nodiscard]] std::string parentFolder(std::string_view path);

/// The last component, trailing slashes ignored; "" for "/" and "".
[[nodiscard]] std::string lastComponent(std::string_view path);

/// `folder` and `name` with exactly one slash between them and none at the end. An absolute name is
/// put below the folder too; without a folder it is the name, without a name the folder.
[[nodiscard]] std::string joinPath(std::string_view folder, std::string_view name);

/// True for a name that a folder entry may have: not "", "." or "..", without slash and NUL.
[[nodiscard]] bool isPlainName(std::string_view name);

/// A name before and after the dot of its extension: "Cut" and ".xml". A name that begins with its
/// only dot, ends with a dot, or has a blank after the dot has no extension.
struct SplitName {
    std::string stem;
    std::string extension;
};
[[nodiscard]] SplitName splitExtension(std::string_view name);

/// The extension of the path's last component without its dot, "" when it has none.
[[nodiscard]] std::string pathExtension(std::string_view path);

/// The path without the extension of its last component and the dot before it, and without trailing
/// slashes: "/b/c" for "/b/c.xml".
[[nodiscard]] std::string withoutExtension(std::string_view path);

/// At most `length` bytes from the front of the text, cut where a UTF-8 character begins.
[[nodiscard]] std::string_view truncateUTF8(std::string_view text, std::size_t length);

/// A name that is free where others are taken: "Cut.xml", then "Cut 2.xml", "Cut 3.xml" and so on.
/// @param attempt from 1 on
/// @param longest how many bytes the name may have; the part before the number is cut, between
///     characters of UTF-8
[[nodiscard]] std::string numberedName(const std::string& name, long attempt, std::size_t longest);

}  // namespace vornic

#endif
