#ifndef VORNIC_TESTS_SUPPORT_PROGRAMS_HELPER_COPY_H
#define VORNIC_TESTS_SUPPORT_PROGRAMS_HELPER_COPY_H

#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#ifndef VORNIC_AUTH_HELPER
#error "VORNIC_AUTH_HELPER is the path of the root helper"
#endif

namespace vornic::test {

/// A copy of the root helper that every user reaches, wherever the build lies. Make it before the
/// process becomes an unprivileged one.
class HelperCopy {
  public:
    HelperCopy() {
        namespace fs = std::filesystem;
        std::string folder = (fs::temp_directory_path() / "vornic-helper-XXXXXX").string();
        EXPECT_NE(mkdtemp(folder.data()), nullptr);
        folder_ = folder;
        fs::permissions(folder_, fs::perms(0755));
        fs::copy_file(VORNIC_AUTH_HELPER, path());
    }
    ~HelperCopy() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    HelperCopy(const HelperCopy&) = delete;
    HelperCopy& operator=(const HelperCopy&) = delete;

    [[nodiscard]] std::string path() const { return folder_ + "/vornic-auth-helper"; }

  private:
    std::string folder_;
};

/// True when a text stands in a file of some process's folder, such as "environ".
[[nodiscard]] inline bool someProcessHas(const std::string& file, const std::string& text) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream stream(entry.path() / file);
        for (std::string part; std::getline(stream, part, '\0');) {
            if (part.find(text) != std::string::npos) {
                return true;
            }
        }
    }
    return false;
}

[[nodiscard]] inline bool someProcessHasArgument(const std::string& text) {
    return someProcessHas("cmdline", text);
}

}  // namespace vornic::test

#endif
