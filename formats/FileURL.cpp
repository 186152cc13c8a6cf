#include "formats/FileURL.h"

#include <algorithm>

#include "base/ASCII.h"
#include "base/PathText.h"

namespace vornic {

namespace {

constexpr std::string_view kScheme = "file:";

// What may stand in a path as it is (RFC 3986, section 3.3).
bool isPathCharacter(char c) {
    return isLetter(c) || isDigit(c) ||
           std::string_view("-._~!$&'()*+,;=:@/").find(c) != std::string_view::npos;
}

bool isEncodedAt(std::string_view text, std::size_t at) {
    return text[at] == '%' && at + 2 < text.size() && hexDigit(text[at + 1]) &&
           hexDigit(text[at + 2]);
}

bool hasDrive(std::string_view text) {
    return text.size() >= 2 && isLetter(text[0]) && text[1] == ':' &&
           (text.size() == 2 || text[2] == '/' || text[2] == '\\');
}

// Schemes count in any case of their letters (RFC 3986, section 3.1).
bool hasFileScheme(std::string_view url) {
    return url.size() >= kScheme.size() &&
           std::equal(kScheme.begin(), kScheme.end(), url.begin(),
                      [](char wanted, char c) { return (c | (isLetter(c) ? 0x20 : 0)) == wanted; });
}

struct Parts {
    std::string_view host;
    // From its first slash.
    std::string_view path;
};

// Of what follows the scheme.
Parts partsOf(std::string_view rest) {
    if (!rest.starts_with("//")) {
        return {{}, rest};
    }
    rest.remove_prefix(2);
    const std::size_t slash = std::min(rest.find('/'), rest.size());
    return {rest.substr(0, slash), rest.substr(slash)};
}

bool isEncoded(std::string_view path) {
    for (std::size_t at = 0; at < path.size(); ++at) {
        if (!isPathCharacter(path[at]) && !isEncodedAt(path, at)) {
            return false;
        }
    }
    return true;
}

bool isWindowsPath(std::string_view url) {
    if (url.find('\\') != std::string_view::npos || hasDrive(url)) {
        return true;
    }
    if (!hasFileScheme(url)) {
        return false;
    }
    std::string_view host = partsOf(url.substr(kScheme.size())).host;
    if (host.starts_with("localhost")) {
        host.remove_prefix(std::string_view("localhost").size());
    }
    return hasDrive(host);
}

}  // namespace

FileURLFault faultOfFileURL(std::string_view url) {
    if (isWindowsPath(url)) {
        return FileURLFault::windowsPath;
    }
    if (!hasFileScheme(url)) {
        return FileURLFault::notAbsolute;
    }
    const std::string_view rest = url.substr(kScheme.size());
    const Parts parts = partsOf(rest);
    if (!rest.starts_with("//") || !parts.path.starts_with('/')) {
        return FileURLFault::notAbsolute;
    }
    if (!isEncoded(parts.path)) {
        return FileURLFault::notEncoded;
    }
    if (!parts.host.empty() && parts.host != "localhost") {
        return FileURLFault::otherHost;
    }
    const bool isNamed = !parts.path.ends_with('/') && !pathExtension(parts.path).empty();
    return isNamed ? FileURLFault::none : FileURLFault::noExtension;
}

std::string encodedURL(std::string_view url) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string encoded;
    for (std::size_t at = 0; at < url.size(); ++at) {
        const char c = url[at];
        if (isPathCharacter(c) || isEncodedAt(url, at)) {
            encoded += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            encoded += '%';
            encoded += kDigits[byte >> 4U];
            encoded += kDigits[byte & 0x0FU];
        }
    }
    return encoded;
}

std::string fileURLOfPath(std::string_view path) {
    if (hasFileScheme(path)) {
        path.remove_prefix(kScheme.size());
    }
    return path.starts_with('/') && !path.starts_with("//") ? "file://" + encodedURL(path) : "";
}

std::string fileURLOfWindowsPath(std::string_view url) {
    std::string path(url);
    std::replace(path.begin(), path.end(), '\\', '/');
    std::string_view rest = path;
    if (hasFileScheme(rest)) {
        rest.remove_prefix(kScheme.size());
    }
    while (rest.starts_with('/')) {
        rest.remove_prefix(1);
    }
    if (rest.starts_with("localhost")) {
        rest.remove_prefix(std::string_view("localhost").size());
        rest.remove_prefix(rest.starts_with('/') ? 1 : 0);
    }
    return hasDrive(rest) ? "file:///" + encodedURL(rest) : "";
}

}  // namespace vornic
