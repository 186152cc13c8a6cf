#include "tests/support/machine/FileState.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace vornic::test {

namespace fs = std::filesystem;

namespace {

std::string contents(const std::string& path, mode_t mode) {
    std::error_code error;
    if (S_ISLNK(mode)) {
        return fs::read_symlink(path, error).string();
    }
    if (!S_ISREG(mode)) {
        return {};
    }
    std::ifstream stream(path, std::ios::binary);
    EXPECT_TRUE(stream.good()) << path;
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    return bytes.str();
}

std::string attribute(const std::string& path, const std::string& name) {
    std::string value(static_cast<std::size_t>(
                          std::max<ssize_t>(lgetxattr(path.c_str(), name.c_str(), nullptr, 0), 0)),
                      '\0');
    EXPECT_EQ(lgetxattr(path.c_str(), name.c_str(), value.data(), value.size()),
              static_cast<ssize_t>(value.size()));
    return value;
}

std::map<std::string, std::string> attributesOf(const std::string& path) {
    std::map<std::string, std::string> attributes;
    std::string names(
        static_cast<std::size_t>(std::max<ssize_t>(llistxattr(path.c_str(), nullptr, 0), 0)), '\0');
    const ssize_t length = llistxattr(path.c_str(), names.data(), names.size());
    std::istringstream stream(
        names.substr(0, static_cast<std::size_t>(std::max<ssize_t>(length, 0))));
    for (std::string name; std::getline(stream, name, '\0');) {
        if (name.starts_with("user.")) {
            attributes[name] = attribute(path, name);
        }
    }
    return attributes;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const FileState& state) {
    constexpr std::size_t kShown = 2000;
    stream << "mode " << std::oct << state.mode << std::dec << ", owner " << state.owner << ':'
           << state.group << ", " << state.bytes.size() << " bytes\n"
           << state.bytes.substr(0, kShown) << '\n';
    for (const auto& [name, value] : state.attributes) {
        stream << name << " = " << ::testing::PrintToString(value) << '\n';
    }
    return stream;
}

FileState fileState(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) {
        ADD_FAILURE() << "there is no " << path;
        return {};
    }
    return {contents(path, status.st_mode), status.st_mode, status.st_uid, status.st_gid,
            attributesOf(path)};
}

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

void removeTrash(const std::string& home) {
    std::filesystem::remove_all(home + "/.Trash");
    std::filesystem::remove_all(home + "/.local/share/Trash");
}

void writeBytes(const std::string& path, std::string_view bytes) {
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    EXPECT_TRUE(stream.good()) << path;
}

bool setAttribute(const std::string& path, const std::string& name, const std::string& value) {
    return setxattr(path.c_str(), name.c_str(), value.data(), value.size(), 0) == 0;
}

std::string xmemlFinderInfo() {
    constexpr std::size_t kLength = 32;
    std::string value = "XML KeyG";
    value.resize(kLength, '\0');
    return value;
}

}  // namespace vornic::test
