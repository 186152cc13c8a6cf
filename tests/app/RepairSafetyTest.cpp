// The user's file is never lost, whatever happens to a repair and however many run at once.

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/app/ProgramTest.h"
#include "tests/support/machine/FileState.h"

namespace vornic::test {

namespace fs = std::filesystem;

class RepairSafetyTest : public ProgramTest {
  protected:
    static constexpr unsigned kSeed = 20'091'027;

    /// Long enough for each stage of a repair to take a while.
    static std::string longDamaged() {
        std::string added;
        for (int clip = 0; clip < 400; ++clip) {
            added += "        <name>Clip " + std::to_string(clip) + "</name>\n";
        }
        std::string text = damagedXMEML();
        text.insert(text.find("    </sequence>"), added);
        return text;
    }

    static std::string withoutForbidden(std::string text) {
        std::erase(text, '\v');
        return text;
    }

    void startAnew() const {
        fs::remove_all(files.folder());
        removeTrash(files.home());
        fs::create_directory(files.folder());
    }

    /// The files in a folder that hold exactly these bytes.
    static int countOf(const std::string& bytes, const std::string& folder) {
        int count = 0;
        for (const std::string& name : namesIn(folder)) {
            count += readBytes(folder + "/" + name) == bytes ? 1 : 0;
        }
        return count;
    }

    [[nodiscard]] std::string listing() const {
        return ::testing::PrintToString(namesIn(files.folder())) +
               ::testing::PrintToString(namesIn(files.trash()));
    }
};

TEST_F(RepairSafetyTest, killedAtAnyMomentItLeavesTheFileOrTheRepairedOneAndTheNextRunTidiesUp) {
    constexpr int kRounds = 150;
    const std::string damaged = longDamaged();
    const std::string repaired = withoutForbidden(damaged);
    const std::string path = files.write("cut.xml", damaged);
    const auto whole = files.repair({path}).elapsed;
    std::mt19937 random(kSeed);
    // The whole span of a run, with some room behind it.
    std::uniform_int_distribution<std::int64_t> moments(
        0, std::chrono::microseconds(whole).count() * 5 / 4);
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        startAnew();
        ASSERT_EQ(files.write("cut.xml", damaged), path);
        RunningProgram program(files.repairer({"--quiet", path}));
        std::this_thread::sleep_for(std::chrono::microseconds(moments(random)));
        program.sendSignal(SIGKILL);
        program.finish();
        const bool untouched = exists(path) && readBytes(path) == damaged;
        if (untouched) {
            EXPECT_EQ(countOf(damaged, files.trash()), 0) << listing();
            EXPECT_EQ(files.repair({"--quiet", path}).status, 0);
            EXPECT_EQ(readBytes(path), repaired);
        } else {
            // At no moment is there nothing at the path.
            EXPECT_EQ(readBytes(path), repaired) << listing();
            EXPECT_EQ(countOf(damaged, files.trash()) + countOf(damaged, files.folder()), 1)
                << listing();
            EXPECT_EQ(files.repair({"--quiet", path}).status, 0);
            EXPECT_EQ(countOf(damaged, files.trash()), 1) << listing();
            EXPECT_EQ(readBytes(path), repaired) << listing();
        }
    }
}

TEST_F(RepairSafetyTest, killedAtAnyMomentAConversionLeavesTheOldFileOrTheNewOne) {
    constexpr int kRounds = 100;
    const std::string before = withoutForbidden(longDamaged());
    std::string after = before;
    after.replace(after.find("version=\"5\""), 11, "version=\"3\"");
    const std::string path = files.write("cut.xml", before);
    const auto whole = files.convert({"-convertxmeml", "3", path}).elapsed;
    EXPECT_EQ(readBytes(path), after);
    std::mt19937 random(kSeed);
    std::uniform_int_distribution<std::int64_t> moments(
        0, std::chrono::microseconds(whole).count() * 5 / 4);
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        startAnew();
        ASSERT_EQ(files.write("cut.xml", before), path);
        RunningProgram program(files.converter({"-convertxmeml", "3", path}));
        std::this_thread::sleep_for(std::chrono::microseconds(moments(random)));
        program.sendSignal(SIGKILL);
        program.finish();
        const std::string found = readBytes(path);
        EXPECT_TRUE(found == before || found == after) << found;
    }
}

TEST_F(RepairSafetyTest, twoRepairsOfOneFileAtOnceNeverLoseIt) {
    constexpr int kRounds = 120;
    const std::string damaged = longDamaged();
    const std::string repaired = withoutForbidden(damaged);
    std::mt19937 random(kSeed);
    std::uniform_int_distribution<int> delays(0, 4'000);
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        startAnew();
        const std::string path = files.write("cut.xml", damaged);
        RunningProgram first(files.repairer({"--quiet", path}));
        std::this_thread::sleep_for(std::chrono::microseconds(delays(random)));
        RunningProgram second(files.repairer({"--quiet", path}));
        const ProgramResult firstResult = first.finish();
        const ProgramResult secondResult = second.finish();
        EXPECT_EQ(firstResult.signal, 0);
        EXPECT_EQ(secondResult.signal, 0);
        const bool untouched = exists(path) && readBytes(path) == damaged;
        EXPECT_EQ(countOf(damaged, files.trash()) >= 1 || untouched, true) << listing();
        if (exists(path) && !untouched) {
            EXPECT_EQ(readBytes(path), repaired) << listing();
        }
        if (firstResult.status == 0 && secondResult.status == 0) {
            EXPECT_EQ(readBytes(path), repaired) << listing();
        }
    }
}

TEST_F(RepairSafetyTest, twoRepairsOfTwoFilesAtOnceDoNotDisturbEachOther) {
    constexpr int kRounds = 20;
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        startAnew();
        const std::string one = files.writeDamaged("one.xml");
        const std::string two = files.writeDamaged("two.xml");
        RunningProgram first(files.repairer({one}));
        RunningProgram second(files.repairer({two}));
        EXPECT_EQ(first.finish().output, repairedReport(one));
        EXPECT_EQ(second.finish().output, repairedReport(two));
        EXPECT_EQ(readBytes(one), repairedXMEML());
        EXPECT_EQ(readBytes(two), repairedXMEML());
        EXPECT_EQ(countOf(damagedXMEML(), files.trash()), 2);
    }
}

TEST_F(RepairSafetyTest, aRepairAndAConversionAtOnceNeverLoseTheFile) {
    constexpr int kRounds = 60;
    const std::string damaged = longDamaged();
    const std::string repaired = withoutForbidden(damaged);
    const auto converted = [](std::string text) {
        return text.replace(text.find("version=\"5\""), 11, "version=\"3\"");
    };
    std::mt19937 random(kSeed);
    std::uniform_int_distribution<int> delays(0, 4'000);
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        startAnew();
        const std::string path = files.write("cut.xml", damaged);
        RunningProgram repair(files.repairer({"--quiet", path}));
        std::this_thread::sleep_for(std::chrono::microseconds(delays(random)));
        RunningProgram conversion(files.converter({"-convertxmeml", "3", path}));
        EXPECT_EQ(conversion.finish().status, 0);
        EXPECT_EQ(repair.finish().signal, 0);
        const std::string found = readBytes(path);
        EXPECT_TRUE(found == repaired || found == converted(repaired) || found == damaged) << found;
    }
}

}  // namespace vornic::test
