#include "media/MediaPath.h"

#include <algorithm>
#include <array>
#include <optional>

#include "base/ASCII.h"
#include "base/PercentEncoding.h"
#include "base/Text.h"
#include "base/Utf8.h"
#include "formats/FileURL.h"

namespace vornic {

namespace {

constexpr std::string_view kScheme = "file:";
constexpr std::string_view kLocalhost = "localhost";
// What may stand in a segment as it is (RFC 3986, section 3.3), besides letters, digits and the
// unreserved marks.
constexpr std::string_view kSegmentCharacters = "!$&'()*+,;=:@";

bool startsWithoutCase(std::string_view text, std::string_view start) {
    return text.size() >= start.size() && lowercased(text.substr(0, start.size())) == start;
}

bool isSlash(char c) {
    return c == '/' || c == '\\';
}

// "C:", "C:/A", "C:\A".
bool hasDrive(std::string_view text) {
    return text.size() >= 2 && isLetter(text[0]) && text[1] == ':' &&
           (text.size() == 2 || isSlash(text[2]));
}

// The same, with a colon that may be encoded.
bool hasWrittenDrive(std::string_view text) {
    return hasDrive(text) ||
           (text.size() >= 4 && isLetter(text[0]) && startsWithoutCase(text.substr(1), "%3a") &&
            (text.size() == 4 || isSlash(text[4])));
}

// A scheme has two letters at least: one letter and a colon is a drive (RFC 3986, section 3.1).
bool hasScheme(std::string_view text) {
    const std::size_t colon = text.find(':');
    return colon != std::string_view::npos && colon >= 2 &&
           platform::isURLScheme(text.substr(0, colon));
}

std::string withForwardSlashes(std::string_view text) {
    std::string result(text);
    std::replace(result.begin(), result.end(), '\\', '/');
    return result;
}

// Without the empty ones and ".".
std::vector<std::string> componentsOf(std::string_view path) {
    std::vector<std::string> components;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        if (const std::string_view name = path.substr(0, end); !name.empty() && name != ".") {
            components.emplace_back(name);
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return components;
}

// A stray percent sign stands for itself.
std::string decoded(std::string_view text) {
    return platform::percentDecoded(encodedURL(text)).value_or(std::string(text));
}

// "//Volumes/A": a slash too many of a path that was put behind "file:///". No server has such a
// name.
bool isLocalRoot(const std::vector<std::string>& components) {
    constexpr std::array<std::string_view, 7> kRoots = {"Volumes", "Users", "home", "media",
                                                        "mnt",     "run",   "tmp"};
    return !components.empty() &&
           std::find(kRoots.begin(), kRoots.end(), components[0]) != kRoots.end();
}

MediaPath windowsPath(std::string_view path) {
    return {PathStyle::windows, componentsOf(withForwardSlashes(path)), ""};
}

// Of a decoded path that begins with a slash, or a drive behind one.
MediaPath absolutePath(std::string_view path) {
    std::string_view rest = path;
    while (rest.starts_with('/')) {
        rest.remove_prefix(1);
    }
    if (hasDrive(rest)) {
        return windowsPath(rest);
    }
    MediaPath read{PathStyle::posix, componentsOf(path), ""};
    if (path.starts_with("//") && read.components.size() > 1 && !isLocalRoot(read.components)) {
        read.style = PathStyle::unc;
    }
    return read;
}

MediaPath sharePath(std::string_view path) {
    return {PathStyle::unc, componentsOf(path), ""};
}

WrittenPath readPlain(std::string_view text) {
    if (hasDrive(text)) {
        return {PathForm::plain, windowsPath(text)};
    }
    if (text.starts_with("\\\\")) {
        return {PathForm::plain, sharePath(withForwardSlashes(text))};
    }
    if (text.starts_with('/')) {
        return {PathForm::plain, absolutePath(text)};
    }
    if (text.empty() || hasScheme(text)) {
        return {PathForm::other, {PathStyle::none, {}, std::string(text)}};
    }
    return {PathForm::relative, {PathStyle::relative, componentsOf(decoded(text)), ""}};
}

// @param rest what stands behind "file:".
WrittenPath readURL(std::string_view rest) {
    if (!rest.starts_with("//")) {
        const bool isAbsolute = rest.starts_with('/') || hasWrittenDrive(rest);
        return isAbsolute ? WrittenPath{PathForm::singleSlash, absolutePath(decoded(rest))}
                          : WrittenPath{PathForm::relative,
                                        {PathStyle::relative, componentsOf(decoded(rest)), ""}};
    }
    rest.remove_prefix(2);
    if (startsWithoutCase(rest, kLocalhost)) {
        const std::string_view path = rest.substr(kLocalhost.size());
        const std::string_view inside = path.substr(path.starts_with('/') ? 1 : 0);
        if (hasWrittenDrive(inside)) {
            return {hasDrive(inside) ? PathForm::localhost : PathForm::windows,
                    absolutePath(decoded(inside))};
        }
        if (path.empty() || isSlash(path[0])) {
            return {PathForm::localhost, absolutePath(decoded(path))};
        }
    }
    if (rest.starts_with('/') || hasWrittenDrive(rest)) {
        return {PathForm::tripleSlash, absolutePath(decoded(rest))};
    }
    if (rest.starts_with("\\\\")) {
        return {PathForm::tripleSlash, sharePath(withForwardSlashes(decoded(rest)))};
    }
    return {PathForm::host, sharePath(decoded(rest))};
}

std::string encodedName(std::string_view name) {
    return platform::percentEncoded(name, kSegmentCharacters);
}

// What stands in front of the first name, for a path of the style.
std::string_view headOf(PathForm form, PathStyle style) {
    const bool isShare = style == PathStyle::unc;
    switch (form) {
        case PathForm::localhost:
            return isShare ? "file://localhost//" : "file://localhost/";
        case PathForm::windows:
            return "file://localhost/";
        case PathForm::singleSlash:
            return "file:/";
        case PathForm::host:
            return "file://";
        default:
            return isShare ? "file:////" : "file:///";
    }
}

PathForm fittingForm(PathForm form, PathStyle style, PathForm fallback) {
    const bool isShare = style == PathStyle::unc;
    if (form == PathForm::relative || form == PathForm::other) {
        form = fallback;
    }
    if (form == PathForm::windows && style != PathStyle::windows) {
        return isShare ? PathForm::host : PathForm::localhost;
    }
    if ((form == PathForm::host && !isShare) || (form == PathForm::singleSlash && isShare)) {
        return PathForm::tripleSlash;
    }
    return form;
}

std::string joined(const std::vector<std::string>& names, char separator) {
    std::string text;
    for (const std::string& name : names) {
        text += text.empty() ? "" : std::string(1, separator);
        text += name;
    }
    return text;
}

std::string plainText(const MediaPath& path, bool hasForwardSlashes) {
    if (path.style == PathStyle::posix) {
        return "/" + joined(path.components, '/');
    }
    const char separator = hasForwardSlashes ? '/' : '\\';
    const std::string head = path.style == PathStyle::unc ? std::string(2, separator) : "";
    const bool isDriveAlone = path.style == PathStyle::windows && path.components.size() == 1;
    return head + joined(path.components, separator) +
           (isDriveAlone ? std::string(1, separator) : "");
}

// Whether XML can hold a path as it is, and a program reads it as it was written: no control
// characters, nothing but UTF-8, and no blanks that are taken for white space around it.
bool canBePlain(std::string_view text) {
    if (text.ends_with(' ') || text.starts_with(' ')) {
        return false;
    }
    for (std::size_t at = 0; at < text.size();) {
        const Utf8Character character = utf8CharacterAt(text, at);
        if (!character.isValid || character.code < U' ' || character.code == 0xFFFE ||
            character.code == 0xFFFF) {
            return false;
        }
        at += character.length;
    }
    return true;
}

std::string urlText(PathForm form, const MediaPath& path, const std::vector<std::string>& names) {
    std::vector<std::string> written = names;
    if (form == PathForm::windows && !written.empty() && written[0] == path.components[0]) {
        written[0].replace(written[0].find(':'), 1, "%3a");
    }
    return std::string(headOf(form, path.style)) + joined(written, '/');
}

}  // namespace

std::string_view nameOf(PathForm form) {
    constexpr std::array<std::string_view, 8> kNames = {"localhost",    "triple-slash", "windows",
                                                        "single-slash", "host",         "plain",
                                                        "relative",     "other"};
    return kNames[static_cast<std::size_t>(form)];
}

std::string MediaPath::text() const {
    switch (style) {
        case PathStyle::posix:
            return "/" + joined(components, '/');
        case PathStyle::unc:
            return "//" + joined(components, '/');
        case PathStyle::none:
            return other;
        default:
            return joined(components, '/');
    }
}

WrittenPath readMediaPath(std::string_view url) {
    // Blanks in front are no beginning of a path.
    url.remove_prefix(std::min(url.find_first_not_of(" \t\r\n"), url.size()));
    return startsWithoutCase(url, kScheme) ? readURL(url.substr(kScheme.size())) : readPlain(url);
}

MediaPath localPath(std::string_view path) {
    return {PathStyle::posix, componentsOf(path), ""};
}

MediaPath readTypedPath(std::string_view text) {
    if (text.starts_with("//")) {
        return absolutePath(text);
    }
    return readMediaPath(text).path;
}

std::string writtenAs(PathForm form, const MediaPath& path, PathForm fallback) {
    form = fittingForm(form, path.style, fallback);
    if (form == PathForm::plain) {
        std::string text = plainText(path, false);
        return canBePlain(text) ? text : writtenAs(fallback, path, fallback);
    }
    std::vector<std::string> names;
    for (const std::string& component : path.components) {
        names.push_back(encodedName(component));
    }
    return urlText(form, path, names);
}

std::string writtenLike(std::string_view url, const MediaPath& path, std::size_t kept,
                        PathForm fallback) {
    const WrittenPath old = readMediaPath(url);
    const PathForm form = fittingForm(old.form, path.style, fallback);
    if (form == PathForm::plain) {
        const bool hasForwardSlashes =
            url.find('\\') == std::string_view::npos && old.path.style == PathStyle::windows;
        std::string text = plainText(path, hasForwardSlashes);
        return canBePlain(text) ? text : writtenAs(fallback, path, fallback);
    }
    std::vector<std::string> names;
    for (const std::string& component : path.components) {
        names.push_back(encodedName(component));
    }
    // An encoded slash, or a backslash, parts names as well: then nothing is kept.
    const std::vector<std::string> raw = componentsOf(url);
    for (std::size_t back = 1; back <= std::min({kept, raw.size(), names.size()}); ++back) {
        const std::string& written = raw[raw.size() - back];
        if (decoded(written) != path.components[path.components.size() - back]) {
            break;
        }
        names[names.size() - back] = encodedURL(written);
    }
    return urlText(form, path, names);
}

}  // namespace vornic
