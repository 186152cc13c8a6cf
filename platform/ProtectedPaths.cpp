#include "platform/ProtectedPaths.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>

#include "platform/FileSystem.h"
#include "platform/PathText.h"

namespace vornic::platform {
namespace {

constexpr std::array<std::string_view, 7> kTrees{"/etc", "/boot", "/dev",  "/proc",
                                                 "/sys", "/lib",  "/lib64"};
constexpr std::array<std::string_view, 9> kFolders{"/home", "/root", "/run", "/mnt",      "/media",
                                                   "/srv",  "/opt",  "/tmp", "/usr/local"};

std::string withSingleSlashes(std::string_view path) {
    std::string result;
    result.reserve(path.size());
    for (const char character : path) {
        if (character != '/' || !result.ends_with('/')) {
            result += character;
        }
    }
    return withoutTrailingSlashes(result);
}

bool isInTree(std::string_view path, std::string_view tree) {
    return path == tree || (path.starts_with(tree) && path[tree.size()] == '/');
}

/// The path with every link followed; nothing when it leads nowhere.
std::optional<std::string> resolved(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                           &std::free);
    return real ? std::optional<std::string>(real.get()) : std::nullopt;
}

/// Without "." and "..", as if no component were a link: for what cannot be resolved yet.
std::string lexicallyNormal(const std::string& path) {
    return withoutTrailingSlashes(std::filesystem::path(path).lexically_normal().string());
}

bool saysFolder(const std::string& path) {
    const std::string last = lastComponent(path);
    return path.ends_with('/') || last.empty() || last == "." || last == "..";
}

void add(std::vector<std::string>& forms, std::string form) {
    if (std::find(forms.begin(), forms.end(), form) == forms.end()) {
        forms.push_back(std::move(form));
    }
}

}  // namespace

bool isProtectedPath(std::string_view path) {
    const std::string compared = withSingleSlashes(path);
    const auto holds = [&](std::string_view tree) { return isInTree(compared, tree); };
    return std::any_of(kTrees.begin(), kTrees.end(), holds) ||
           std::find(kFolders.begin(), kFolders.end(), compared) != kFolders.end();
}

std::vector<std::string> formsOfPath(const std::string& path) {
    std::vector<std::string> forms{path};
    if (path.empty()) {
        return forms;
    }
    const std::string absolute = absolutePath(path).value_or("/" + path);
    const std::string last = lastComponent(absolute);
    const std::optional<std::string> folder = resolved(parentFolder(absolute));
    if (!folder) {
        add(forms, lexicallyNormal(absolute));
    } else if (!last.empty() && last != "." && last != "..") {
        add(forms, joinPath(*folder, last));
    }
    if (saysFolder(absolute)) {
        add(forms, resolved(absolute).value_or(lexicallyNormal(absolute)));
    }
    return forms;
}

bool leadsToProtectedPath(const std::string& path) {
    std::vector<std::string> forms = formsOfPath(path);
    int errorNumber = 0;
    const std::optional<std::string> target = resolveFinalLink(path, errorNumber);
    for (const std::string& form : formsOfPath(target.value_or(path))) {
        add(forms, form);
    }
    return std::any_of(forms.begin(), forms.end(), isProtectedPath);
}

}  // namespace vornic::platform
