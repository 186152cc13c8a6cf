// Files by other people's programs, from the folder that VORNIC_SAMPLES names.

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/ContentOf.h"
#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/texts/SampleFiles.h"

namespace vornic::test {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

struct Kind {
    const char* folder;
    /// What the repair makes of its files.
    bool mayBeSound;
    bool mayBeRepaired;
};

void PrintTo(const Kind& kind, std::ostream* stream) {
    *stream << kind.folder;
}

constexpr Kind kKinds[] = {
    {"xmeml", true, true}, {"fcpxml", true, true},    {"damaged", false, false},
    {"bad", false, false}, {"xmlconf", false, false},
};

}  // namespace

class SampleFilesTest : public ProgramTest, public ::testing::WithParamInterface<Kind> {
  protected:
    void SetUp() override {
        const auto folder = samplesFolder();
        if (!folder) {
            GTEST_SKIP() << "VORNIC_SAMPLES is not set";
        }
        samples_ = filesBelow(*folder + "/" + GetParam().folder);
        if (samples_.empty()) {
            GTEST_SKIP() << "there are no files below " << *folder << "/" << GetParam().folder;
        }
    }

    /// Puts a copy of the sample alone into the folder and empties the Trash.
    [[nodiscard]] std::string copyOf(const std::string& sample) const {
        fs::remove_all(files.folder());
        removeTrash(files.home());
        fs::create_directory(files.folder());
        return files.write("cut" + fs::path(sample).extension().string(), readBytes(sample));
    }

    void expectUntouched(const std::string& path, const std::string& bytes) const {
        EXPECT_TRUE(readBytes(path) == bytes);
        EXPECT_THAT(namesIn(files.trash()), IsEmpty());
    }

    void expectRepaired(const std::string& path, const std::string& bytes) const {
        const std::string repaired = readBytes(path);
        const std::string name = fs::path(path).filename().string();
        EXPECT_EQ(namesIn(files.trash()), std::vector<std::string>{name});
        EXPECT_TRUE(readBytes(files.trash() + "/" + name) == bytes);
        EXPECT_TRUE(contentOf(repaired) == contentOf(bytes)) << repaired;
        const ProgramResult again = files.repair({path});
        EXPECT_THAT(again.output, HasSubstr("No repair was necessary."));
        EXPECT_TRUE(readBytes(path) == repaired);
    }

    std::vector<std::string> samples_;
};

TEST_P(SampleFilesTest, areRepairedOrLeftUntouched) {
    for (const std::string& sample : samples_) {
        SCOPED_TRACE(sample);
        const std::string path = copyOf(sample);
        const std::string bytes = readBytes(path);
        const ProgramResult result = files.repair({path});
        EXPECT_EQ(result.signal, 0);
        EXPECT_TRUE(result.errors.empty() || tellsOriginal(result.errors, files.trash()));
        EXPECT_EQ(namesIn(files.folder()).size(), 1U);
        if (result.status == 0 && result.output.find("was repaired") != std::string::npos) {
            EXPECT_TRUE(GetParam().mayBeRepaired);
            expectRepaired(path, bytes);
            continue;
        }
        expectUntouched(path, bytes);
        const bool isSound = result.output.find("No repair was necessary.") != std::string::npos;
        EXPECT_EQ(result.status, isSound ? 0 : 1);
        EXPECT_TRUE(!isSound || GetParam().mayBeSound);
        if (!isSound) {
            EXPECT_THAT(result.output, HasSubstr("Unable to repair file."));
        }
    }
}

TEST_P(SampleFilesTest, areConvertedWithoutLossOrLeftUntouched) {
    for (const std::string& sample : samples_) {
        SCOPED_TRACE(sample);
        const std::string path = copyOf(sample);
        const std::string bytes = readBytes(path);
        const ProgramResult result = files.convert({"-convertxmeml", "3", path});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(namesIn(files.folder()).size(), 1U);
        if (!result.output.empty() || !result.errors.empty()) {
            expectUntouched(path, bytes);
            continue;
        }
        const std::string converted = readBytes(path);
        EXPECT_THAT(converted, HasSubstr("version=\"3\""));
        EXPECT_EQ(files.convert({"-convertxmeml", "3", path}).errors, "");
        EXPECT_TRUE(readBytes(path) == converted);
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, SampleFilesTest, ::testing::ValuesIn(kKinds),
                         [](const auto& tested) { return std::string(tested.param.folder); });

}  // namespace vornic::test
