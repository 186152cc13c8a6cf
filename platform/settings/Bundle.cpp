#include "platform/settings/Bundle.h"

#include <algorithm>
#include <array>
#include <climits>
#include <mutex>
#include <utility>

#include <unistd.h>

#include "base/PathText.h"
#include "platform/files/FileSystem.h"
#include "platform/settings/InstallFolders.h"
#include "platform/settings/PropertyList.h"

namespace vornic::platform {
namespace {

constexpr std::string_view kBundleName = "Vornic.app";

std::string readExecutablePath() {
    std::array<char, PATH_MAX + 1> buffer{};
    const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length <= 0) {
        return "";
    }
    std::string path(buffer.data(), static_cast<std::size_t>(length));
    // The mark that the system puts behind a file that an update has replaced meanwhile.
    constexpr std::string_view kRemoved = " (deleted)";
    if (path.ends_with(kRemoved) && !nodeExists(path)) {
        path.resize(path.size() - kRemoved.size());
    }
    return path;
}

std::string findBundle(const std::string& executableFolder) {
    std::vector<std::string> candidates;
    for (const std::string& folder : installFolders(InstallFolder::libraries)) {
        candidates.push_back(joinPath(folder, kBundleName));
    }
    constexpr int kLevelsUp = 4;
    std::string folder = executableFolder;
    for (int level = 0; level <= kLevelsUp; ++level) {
        candidates.push_back(joinPath(folder, kBundleName));
        folder = parentFolder(folder);
    }
    const auto found = std::find_if(candidates.begin(), candidates.end(), isDirectory);
    return found != candidates.end() ? *found : candidates.front();
}

struct ChosenBundle {
    std::mutex mutex;
    std::optional<Bundle> bundle;
};

ChosenBundle& chosenBundle() {
    static ChosenBundle chosen;
    return chosen;
}

}  // namespace

Bundle::Bundle(std::string path, std::vector<std::string> furtherResourceFolders)
    : path_(std::move(path)), furtherResourceFolders_(std::move(furtherResourceFolders)) {
    path_.resize(withoutTrailingSlashes(path_).size());
}

Bundle Bundle::mainBundle() {
    {
        ChosenBundle& chosen = chosenBundle();
        const std::lock_guard lock(chosen.mutex);
        if (chosen.bundle) {
            return *chosen.bundle;
        }
    }
    const std::string folder = parentFolder(platform::executablePath());
    return Bundle(findBundle(folder), installFolders(InstallFolder::data));
}

void Bundle::setMainBundle(const std::optional<Bundle>& bundle) {
    ChosenBundle& chosen = chosenBundle();
    const std::lock_guard lock(chosen.mutex);
    chosen.bundle = bundle;
}

bool Bundle::exists() const {
    return isDirectory(path_);
}

std::optional<std::string> Bundle::infoString(std::string_view key) const {
    ErrorSlot ignored;
    const std::optional<PropertyList> information =
        PropertyList::readFile(joinPath(path_, "Contents/Info.plist"), ignored);
    const PropertyList* value = information ? information->find(key) : nullptr;
    const std::string* text = value != nullptr ? value->string() : nullptr;
    return text != nullptr ? std::optional(*text) : std::nullopt;
}

std::optional<std::string> Bundle::executablePath() const {
    const std::string name =
        infoString("CFBundleExecutable").value_or(splitExtension(lastComponent(path_)).stem);
    std::string executable = joinPath(joinPath(path_, "Contents/MacOS"), name);
    if (!isPlainName(name) || !isExecutableFile(executable)) {
        return std::nullopt;
    }
    return executable;
}

std::optional<std::string> Bundle::pathForResource(std::string_view name,
                                                   std::string_view type) const {
    std::string file(name);
    if (!type.empty()) {
        file.append(".").append(type);
    }
    std::vector<std::string> folders{joinPath(path_, "Contents/Resources")};
    folders.insert(folders.end(), furtherResourceFolders_.begin(), furtherResourceFolders_.end());
    for (const std::string& folder : folders) {
        std::string candidate = joinPath(folder, file);
        if (!file.empty() && fileExists(candidate)) {
            return candidate;
        }
    }
    return std::nullopt;
}

std::string applicationName() {
    return "Vornic";
}

std::string executablePath() {
    static const std::string path = readExecutablePath();
    return path;
}

}  // namespace vornic::platform
