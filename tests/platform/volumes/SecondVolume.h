#ifndef VORNIC_TESTS_PLATFORM_VOLUMES_SECOND_VOLUME_H
#define VORNIC_TESTS_PLATFORM_VOLUMES_SECOND_VOLUME_H

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

#include <sys/stat.h>

namespace vornic::test {

/// A folder on the machine's memory volume, removed with the object.
class SecondVolume {
  public:
    SecondVolume() {
        std::string pattern = "/dev/shm/vornic-test-XXXXXX";
        if (mkdtemp(pattern.data()) != nullptr) {
            folder_ = pattern;
        }
    }
    ~SecondVolume() {
        std::error_code ignored;
        if (!folder_.empty()) {
            std::filesystem::remove_all(folder_, ignored);
        }
    }
    SecondVolume(const SecondVolume&) = delete;
    SecondVolume& operator=(const SecondVolume&) = delete;

    [[nodiscard]] const std::string& folder() const { return folder_; }
    [[nodiscard]] std::string path(std::string_view name) const {
        return folder_ + "/" + std::string(name);
    }
    /// True when the folder is there and does not lie on the same volume as `other`.
    [[nodiscard]] bool isApartFrom(const std::string& other) const {
        struct stat here {};
        struct stat there {};
        return !folder_.empty() && stat(folder_.c_str(), &here) == 0 &&
               stat(other.c_str(), &there) == 0 && here.st_dev != there.st_dev;
    }

  private:
    std::string folder_;
};

}  // namespace vornic::test

#endif
