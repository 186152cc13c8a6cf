#include "base/PathText.h"

namespace vornic {

std::string withoutTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') {
        path.remove_suffix(1);
    }
    return std::string(path);
}

std::string withTrailingSlash(std::string_view path) {
    std::string folder = withoutTrailingSlashes(path);
    if (!folder.empty() && folder.back() != '/') {
        folder += '/';
    }
    return folder;
}

std::string parentFolder(std::string_view path) {
    const std::string trimmed = withoutTrailingSlashes(path);
    const std::size_t slash = trimmed.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : withoutTrailingSlashes(std::string_view(trimmed).substr(0, slash));
}

std::string lastComponent(std::string_view path) {
    const std::string trimmed = withoutTrailingSlashes(path);
    if (trimmed == "/") {
        return "";
    }
    const std::size_t slash = trimmed.rfind('/');
    return slash == std::string::npos ? trimmed : trimmed.substr(slash + 1);
}

std::string joinPath(std::string_view folder, std::string_view name) {
    if (folder.empty()) {
        return withoutTrailingSlashes(name);
    }
    std::string joined = withoutTrailingSlashes(folder);
    const std::size_t first = name.find_first_not_of('/');
    if (first == std::string_view::npos) {
        return joined;
    }
    if (joined.back() != '/') {
        joined += '/';
    }
    joined.append(name, first);
    joined.resize(joined.find_last_not_of('/') + 1);
    return joined;
}

bool isPlainName(std::string_view name) {
    return !name.empty() && name != "." && name != ".." &&
           name.find('/') == std::string_view::npos && name.find('\0') == std::string_view::npos;
}

SplitName splitExtension(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size() ||
        name.find(' ', dot) != std::string_view::npos) {
        return {.stem = std::string(name), .extension = ""};
    }
    return {.stem = std::string(name.substr(0, dot)), .extension = std::string(name.substr(dot))};
}

std::string pathExtension(std::string_view path) {
    const std::string extension = splitExtension(lastComponent(path)).extension;
    return extension.empty() ? "" : extension.substr(1);
}

std::string withoutExtension(std::string_view path) {
    std::string whole = withoutTrailingSlashes(path);
    whole.resize(whole.size() - splitExtension(lastComponent(whole)).extension.size());
    return whole;
}

std::string_view truncateUTF8(std::string_view text, std::size_t length) {
    if (text.size() <= length) {
        return text;
    }
    constexpr std::size_t kLongestTail = 3;
    for (std::size_t back = 0; back <= kLongestTail && back <= length; ++back) {
        const auto byte = static_cast<unsigned char>(text[length - back]);
        if ((byte & 0xC0U) != 0x80U) {
            return text.substr(0, length - back);
        }
    }
    return text.substr(0, length);
}

std::string numberedName(const std::string& name, long attempt, std::size_t longest) {
    constexpr std::size_t kLongestExtension = 64;
    SplitName parts = splitExtension(name);
    if (parts.extension.size() > kLongestExtension) {
        parts = {.stem = name, .extension = ""};
    }
    const std::string number = attempt == 1 ? "" : " " + std::to_string(attempt);
    const std::string ending = number + parts.extension;
    return std::string(truncateUTF8(parts.stem, longest - ending.size())) + ending;
}

}  // namespace vornic
