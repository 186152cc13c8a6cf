// vornic-media on volumes that are silent, or not there.

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/fakes/SilentVolume.h"

namespace vornic::test {

namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

// The volume is mounted before root's rights are given up.
struct MountedSilence {
    MountedSilence() {
        std::string pattern = (fs::temp_directory_path() / "vornic-silent-XXXXXX").string();
        EXPECT_NE(mkdtemp(pattern.data()), nullptr);
        folder = pattern;
        volume = std::make_unique<SilentVolume>(folder.string());
    }
    ~MountedSilence() {
        volume.reset();
        std::error_code ignored;
        fs::remove(folder, ignored);
    }
    MountedSilence(const MountedSilence&) = delete;
    MountedSilence& operator=(const MountedSilence&) = delete;

    fs::path folder;
    std::unique_ptr<SilentVolume> volume;
};

class MediaVolumesTest : private MountedSilence, public ProgramTest {
  protected:
    void SetUp() override {
        if (!volume->isMounted()) {
            GTEST_SKIP() << "may not mount a FUSE volume";
        }
        const std::string silent = "file://" + folder.string();
        static_cast<void>(files.write("there.mov", ""));
        static_cast<void>(files.write(
            "Cut.fcpxml", "<fcpxml version=\"1.8\"><resources><asset id=\"r1\" src=\"" + silent +
                              "/a.mov\"/><asset id=\"r2\" src=\"there.mov\"/><asset id=\"r3\" "
                              "src=\"" +
                              silent + "/x/b.mov\"/></resources></fcpxml>"));
    }
    [[nodiscard]] ProgramSettings program(const std::string& name,
                                          std::vector<std::string> arguments) const {
        ProgramSettings settings = files.repairer(std::move(arguments));
        settings.program = material.program(name);
        return settings;
    }
    [[nodiscard]] std::string silentFolder() const { return folder.string(); }

    // Twice the limit of a volume, and what a busy machine needs.
    static constexpr std::chrono::milliseconds kSoon{8000};
};

TEST_F(MediaVolumesTest, aSilentVolumeHoldsUpNeitherTheRunNorItsEnd) {
    const ProgramResult result =
        runProgram(program("vornic-media", {"missing", "Cut.fcpxml", "Cut.fcpxml"}));
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("no answer  " + silentFolder() + "/a.mov\n"));
    EXPECT_THAT(result.output, HasSubstr("no answer  " + silentFolder() + "/x/b.mov\n"));
    EXPECT_LT(result.elapsed, kSoon);
    EXPECT_GE(result.elapsed, std::chrono::milliseconds(2000));
}

TEST_F(MediaVolumesTest, aCheckWarnsOfWhatItCouldNotLookFor) {
    const ProgramResult result =
        runProgram(program("vornic-check", {"--media", "--only", "media", "Cut.fcpxml"}));
    EXPECT_EQ(result.status, 0) << "whether it is there is not known";
    EXPECT_THAT(result.output, HasSubstr("WARNING(media-no-answer): Cut.fcpxml"));
    EXPECT_LT(result.elapsed, kSoon);
}

TEST_F(MediaVolumesTest, aSearchOfASilentFolderFindsNothingAndSaysSo) {
    const ProgramResult result =
        runProgram(program("vornic-media", {"relink", "--search", silentFolder(), "Cut.fcpxml"}));
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr(silentFolder() + " could not be looked through.\n"));
    EXPECT_LT(result.elapsed, kSoon);
}

TEST_F(MediaVolumesTest, aSignalEndsTheWaitingAtOnce) {
    RunningProgram running(program("vornic-media", {"missing", "Cut.fcpxml"}));
    // Long enough to be asking, and less than the limit.
    usleep(700000);
    running.sendSignal(SIGINT);
    const ProgramResult result = running.finish();
    EXPECT_EQ(result.status, 130);
    EXPECT_LT(result.elapsed, std::chrono::milliseconds(1900));
}

}  // namespace

}  // namespace vornic::test
