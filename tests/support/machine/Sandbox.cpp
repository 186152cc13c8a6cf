#include "tests/support/machine/Sandbox.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <sys/stat.h>

namespace vornic::test {

namespace fs = std::filesystem;

Sandbox::Sandbox() {
    std::string pattern = (fs::temp_directory_path() / "vornic-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        ADD_FAILURE() << "cannot make a folder like " << pattern;
        std::abort();
    }
    root_ = pattern;
    folder_ = root_ + "/files";
    home_ = root_ + "/home";
    fs::create_directories(folder_);
    fs::create_directories(home_);
    fs::create_directories(root_ + "/tmp");
    setenv("HOME", home_.c_str(), 1);
    setenv("TMPDIR", (root_ + "/tmp").c_str(), 1);
    setenv("XDG_DATA_HOME", (home_ + "/.local/share").c_str(), 1);
    setenv("XDG_CACHE_HOME", (home_ + "/.cache").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (home_ + "/.config").c_str(), 1);
    unsetenv("XDG_RUNTIME_DIR");
}

Sandbox::~Sandbox() {
    unsetenv("TMPDIR");
    std::error_code ignored;
    fs::permissions(folder_, fs::perms::owner_all, fs::perm_options::add, ignored);
    fs::remove_all(root_, ignored);
}

std::string Sandbox::path(std::string_view name) const {
    return folder_ + "/" + std::string(name);
}

std::string Sandbox::write(std::string_view name, std::string_view bytes) const {
    std::string target = path(name);
    std::ofstream stream(target, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    EXPECT_TRUE(stream.good()) << target;
    return target;
}

std::string readBytes(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    EXPECT_TRUE(stream.good()) << path;
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    return bytes.str();
}

bool exists(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0;
}

}  // namespace vornic::test
