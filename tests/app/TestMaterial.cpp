#include "tests/app/TestMaterial.h"

#include <array>
#include <filesystem>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vornic::test {

namespace fs = std::filesystem;

namespace {

bool everybodyMayEnter(fs::path folder) {
    struct stat status {};
    for (; folder != folder.parent_path(); folder = folder.parent_path()) {
        if (stat(folder.c_str(), &status) != 0 || (status.st_mode & S_IXOTH) == 0) {
            return false;
        }
    }
    return true;
}

std::string makeCopyFolder() {
    std::string pattern = (fs::temp_directory_path() / "vornic-material-XXXXXX").string();
    EXPECT_NE(mkdtemp(pattern.data()), nullptr);
    constexpr mode_t kForEverybody = 0755;
    EXPECT_EQ(chmod(pattern.c_str(), kForEverybody), 0);
    return pattern;
}

}  // namespace

TestMaterial::TestMaterial()
    : programs_(fs::path(VORNIC_PROGRAM).parent_path()), fixtures_(VORNIC_FIXTURES) {
    if (getuid() != 0 || (everybodyMayEnter(programs_) && everybodyMayEnter(fixtures_))) {
        return;
    }
    copy_ = makeCopyFolder();
    fs::create_directory(copy_ + "/bin");
    for (const char* program : {VORNIC_PROGRAM, VORNIC_REPAIR_PROGRAM, VORNIC_CHECK_PROGRAM,
                                VORNIC_MEDIA_PROGRAM, VORNIC_CONVERT_PROGRAM}) {
        fs::copy(program, copy_ + "/bin");
    }
    fs::copy(bundle(), copy_ + "/Vornic.app", fs::copy_options::recursive);
    fs::copy(fixtures_, copy_ + "/data", fs::copy_options::recursive);
    programs_ = copy_ + "/bin";
    fixtures_ = copy_ + "/data";
}

TestMaterial::~TestMaterial() {
    if (!copy_.empty()) {
        std::error_code ignored;
        fs::remove_all(copy_, ignored);
    }
}

std::string TestMaterial::program(std::string_view name) const {
    return programs_ + "/" + std::string(name);
}

std::string TestMaterial::fixture(std::string_view name) const {
    return fixtures_ + "/" + std::string(name);
}

std::string TestMaterial::bundle() const {
    return fs::path(programs_).parent_path().string() + "/Vornic.app";
}

}  // namespace vornic::test
