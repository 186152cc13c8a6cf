#include "platform/volumes/MountTable.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <utility>

#include "base/Replaceable.h"

namespace vornic::platform {
namespace {

using Table = std::function<std::vector<MountedVolume>()>;

Replaceable<Table>& substitute() {
    static Replaceable<Table> instance;
    return instance;
}

bool isOctalDigit(char character) {
    return character >= '0' && character <= '7';
}

/// Blanks, line breaks and backslashes stand in the table as a backslash and three octal digits.
std::string unescaped(std::string_view field) {
    std::string text;
    text.reserve(field.size());
    for (std::size_t index = 0; index < field.size(); ++index) {
        const std::string_view digits = field.substr(index + 1, 3);
        if (field[index] != '\\' || digits.size() < 3 ||
            !std::all_of(digits.begin(), digits.end(), isOctalDigit)) {
            text += field[index];
            continue;
        }
        text += static_cast<char>((digits[0] - '0') * 64 + (digits[1] - '0') * 8 + digits[2] - '0');
        index += digits.size();
    }
    return text;
}

std::string nameOfType(const std::string& type) {
    return type == "hfsplus" ? "hfs+" : type;
}

/// id, parent, device number, root, MOUNT POINT, options, any number of tags, "-", TYPE, DEVICE, …
std::optional<MountedVolume> volumeInLine(const std::string& line) {
    std::istringstream words(line);
    std::string word;
    std::string mountPoint;
    for (int number = 1; number <= 5 && words >> word; ++number) {
        mountPoint = word;
    }
    while (words >> word && word != "-") {
    }
    std::string type;
    std::string device;
    if (!mountPoint.starts_with('/') || !(words >> type >> device)) {
        return std::nullopt;
    }
    return MountedVolume{.mountPoint = unescaped(mountPoint),
                         .filesystemType = nameOfType(unescaped(type)),
                         .device = unescaped(device)};
}

std::vector<MountedVolume> systemVolumes() {
    std::ostringstream text;
    text << std::ifstream("/proc/self/mountinfo").rdbuf();
    return volumesInMountInfo(text.str());
}

}  // namespace

std::vector<MountedVolume> mountedVolumes() {
    const Table table = substitute().value();
    return table ? table() : systemVolumes();
}

std::vector<MountedVolume> volumesInMountInfo(std::string_view text) {
    // A folder's path begins those of the folders in it, so that backwards these come first.
    std::map<std::string, MountedVolume, std::greater<>> byMountPoint;
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);) {
        if (std::optional<MountedVolume> volume = volumeInLine(line)) {
            byMountPoint.insert_or_assign(volume->mountPoint, *volume);
        }
    }
    std::vector<MountedVolume> volumes;
    volumes.reserve(byMountPoint.size());
    for (auto& [mountPoint, volume] : byMountPoint) {
        volumes.push_back(std::move(volume));
    }
    return volumes;
}

void setMountTable(std::function<std::vector<MountedVolume>()> table) {
    substitute().set(std::move(table));
}

}  // namespace vornic::platform
