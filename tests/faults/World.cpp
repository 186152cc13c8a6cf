#include "tests/faults/World.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <sys/stat.h>
#include <sys/xattr.h>

namespace vornic::test {

namespace fs = std::filesystem;

namespace {

std::string bytesOf(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    return bytes.str();
}

bool isTemporary(const fs::path& path) {
    const std::string name = path.filename();
    // The working copy of a change in place has a name that says whose it is.
    constexpr std::array kVerbs = {".vornic-mend", ".vornic-relink", ".vornic-convert"};
    const bool isWorkingCopy = std::any_of(kVerbs.begin(), kVerbs.end(), [&](const char* verb) {
        return name.ends_with(verb) || name.ends_with(std::string(verb) + ".trashinfo");
    });
    return name.starts_with(".") && name.find(".vornic-") != std::string::npos && !isWorkingCopy;
}

void collectTrash(const fs::path& folder, std::vector<std::string>& trash) {
    std::error_code error;
    for (const auto& entry : fs::recursive_directory_iterator(folder, error)) {
        if (entry.is_regular_file(error) && !isTemporary(entry.path())) {
            trash.push_back(bytesOf(entry.path()));
        }
    }
}

std::string metadataOf(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return "";
    }
    std::string text = std::to_string(status.st_mode) + " " + std::to_string(status.st_uid) + " " +
                       std::to_string(status.st_gid);
    std::array<char, 4096> names{};
    const ssize_t length = listxattr(path.c_str(), names.data(), names.size());
    std::map<std::string, std::string> attributes;
    for (ssize_t at = 0; at < length;) {
        const std::string name = names.data() + at;
        std::array<char, 4096> value{};
        const ssize_t size = getxattr(path.c_str(), name.c_str(), value.data(), value.size());
        attributes[name] = std::string(value.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
        at += static_cast<ssize_t>(name.size()) + 1;
    }
    for (const auto& [name, value] : attributes) {
        text += " " + name + "=" + value;
    }
    return text;
}

}  // namespace

bool World::isInTrash(const std::string& bytes) const {
    return std::find(trash.begin(), trash.end(), bytes) != trash.end();
}

bool World::holds(const std::string& bytes) const {
    return isInTrash(bytes) || std::any_of(files.begin(), files.end(),
                                           [&](const auto& file) { return file.second == bytes; });
}

std::string World::summary() const {
    std::string text = "files:";
    for (const auto& [name, bytes] : files) {
        text += " " + name + "(" + std::to_string(bytes.size()) + ")";
    }
    text += "; Trash:";
    for (const std::string& bytes : trash) {
        text += " " + std::to_string(bytes.size());
    }
    for (const auto& [path, bytes] : temporaries) {
        text += "; temporary: " + path + "(" + std::to_string(bytes.size()) + ")";
    }
    return text;
}

World lookAround(const std::string& root, const std::string& name) {
    World world;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(root + "/files", error)) {
        if (isTemporary(entry.path())) {
            continue;
        }
        world.files[entry.path().filename()] =
            entry.is_symlink(error) ? "-> " + fs::read_symlink(entry.path(), error).string()
                                    : bytesOf(entry.path());
    }
    for (const auto& entry : fs::recursive_directory_iterator(root, error)) {
        if (isTemporary(entry.path())) {
            world.temporaries[fs::relative(entry.path(), root, error)] = bytesOf(entry.path());
        }
    }
    collectTrash(root + "/home/.Trash", world.trash);
    if (!fs::is_symlink(root + "/home/.Trash", error)) {
        collectTrash(root + "/home/.local/share/Trash/files", world.trash);
    }
    world.metadata = metadataOf(root + "/files/" + name);
    return world;
}

}  // namespace vornic::test
