#include <chrono>
#include <filesystem>

#include <gtest/gtest.h>

#include "platform/settings/ZoneData.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::platform {

namespace {

using namespace std::chrono_literals;

struct Change {
    std::int64_t time;
    int setting;
};

struct Setting {
    std::int32_t offset;
    std::string abbreviation;
};

std::string number(std::int64_t value, int size) {
    std::string bytes;
    for (int shift = (size - 1) * 8; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(static_cast<std::uint64_t>(value) >> shift & 0xFFU);
    }
    return bytes;
}

std::string part(const std::vector<Change>& changes, const std::vector<Setting>& settings,
                 int timeSize) {
    std::string names;
    std::string types;
    std::string body;
    for (const Setting& setting : settings) {
        types += number(setting.offset, 4) + number(0, 1) +
                 number(static_cast<std::int64_t>(names.size()), 1);
        names += setting.abbreviation + std::string(1, '\0');
    }
    for (const Change& change : changes) {
        body += number(change.time, timeSize);
    }
    for (const Change& change : changes) {
        body += number(change.setting, 1);
    }
    const auto size = [](const auto& list) { return static_cast<std::int64_t>(list.size()); };
    return "TZif2" + std::string(27, '\0') + number(size(changes), 4) + number(size(settings), 4) +
           number(size(names), 4) + body + types + names;
}

// A TZif file of version 2.
std::string zone(const std::vector<Change>& changes, const std::vector<Setting>& settings,
                 const std::string& rule) {
    return part({}, {settings.front()}, 4) + part(changes, settings, 8) + "\n" + rule + "\n";
}

std::int64_t at(int year, int month, int day, int hour) {
    const std::chrono::year_month_day date{std::chrono::year(year),
                                           std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    return (std::chrono::sys_days(date).time_since_epoch() + std::chrono::hours(hour)) / 1s;
}

class ZoneDataTest : public test::SandboxTest {
  protected:
    void write(const std::string& name, const std::string& bytes) {
        std::filesystem::create_directories(
            std::filesystem::path(sandbox.path(name)).parent_path());
        sandbox.write(name, bytes);
    }
    [[nodiscard]] std::optional<std::int32_t> offset(std::string_view name,
                                                     std::int64_t local) const {
        return ZoneData(sandbox.folder()).offsetAt(name, local);
    }

    // An hour ahead, from 1,000,000 to 2,000,000 two.
    const std::string summer =
        zone({{1'000'000, 1}, {2'000'000, 0}}, {{3600, "AT"}, {7200, "AST"}}, "AT-1");
};

TEST_F(ZoneDataTest, knowsTheClocksOfAZone) {
    write("Land/City", summer);
    EXPECT_EQ(offset("Land/City", 500'000), 3600);
    EXPECT_EQ(offset("Land/City", 1'500'000), 7200);
    EXPECT_EQ(offset("Land/City", 3'000'000), 3600);
    EXPECT_EQ(offset("Land/Other", 3'000'000), std::nullopt);
}

TEST_F(ZoneDataTest, guessesNoHourThatIsPassedTwiceOrLeftOut) {
    write("Land/City", summer);
    EXPECT_EQ(offset("Land/City", 2'000'000 + 5400), std::nullopt);
    EXPECT_EQ(offset("AST", 2'000'000 + 5400), 7200) << "the abbreviation says which";
    EXPECT_EQ(offset("AT", 2'000'000 + 5400), 3600);
    EXPECT_EQ(offset("Land/City", 1'000'000 + 5400), std::nullopt);
    EXPECT_EQ(offset("AST", 500'000), std::nullopt) << "not in winter";
}

TEST_F(ZoneDataTest, guessesNoAbbreviationThatTwoZonesUse) {
    write("Land/City", summer);
    write("Land/Far", zone({}, {{-18'000, "AT"}}, "AT5"));
    EXPECT_EQ(offset("AT", 500'000), std::nullopt);
    EXPECT_EQ(offset("AT", 1'500'000), -18'000) << "in the City it is summer";
    EXPECT_EQ(offset("AST", 1'500'000), 7200);
    write("AT", summer);
    EXPECT_EQ(offset("AT", 1'500'000), std::nullopt) << "a zone and an abbreviation";
}

TEST_F(ZoneDataTest, guessesNothingBeyondTheDatesOfAFile) {
    write("Land/City", zone({{1'000'000, 1}, {2'000'000, 0}}, {{3600, "AT"}, {7200, "AST"}},
                            "AT-1AST,M3.5.0,M10.5.0/3"));
    EXPECT_EQ(offset("Land/City", 1'500'000), 7200);
    EXPECT_EQ(offset("Land/City", 3'000'000), std::nullopt);
}

TEST_F(ZoneDataTest, readsNothingFromDamagedFiles) {
    for (std::size_t length = 0; length < summer.size() - 6; ++length) {
        EXPECT_FALSE(TimeZone::read(std::string_view(summer).substr(0, length))) << length;
    }
    EXPECT_FALSE(TimeZone::read(part({{1, 7}}, {{0, "A"}}, 4)));
    EXPECT_EQ(ZoneData(sandbox.path("none")).offsetAt("AT", 0), std::nullopt);
}

TEST_F(ZoneDataTest, knowsTheZonesOfTheSystem) {
    const ZoneData& system = ZoneData::ofSystem();
    if (!std::filesystem::exists("/usr/share/zoneinfo/Europe/Berlin")) {
        GTEST_SKIP() << "the system has no zone data";
    }
    EXPECT_EQ(system.offsetAt("Europe/Berlin", at(2024, 7, 1, 12)), 7200);
    EXPECT_EQ(system.offsetAt("CEST", at(2024, 7, 1, 12)), 7200);
    EXPECT_EQ(system.offsetAt("CET", at(2024, 1, 1, 12)), 3600);
    EXPECT_EQ(system.offsetAt("EDT", at(2019, 7, 1, 12)), -4 * 3600);
    EXPECT_EQ(system.offsetAt("CST", at(2019, 1, 1, 12)), std::nullopt) << "China and Chicago";
    EXPECT_EQ(system.offsetAt("XYZ", at(2019, 1, 1, 12)), std::nullopt);
}

}  // namespace

}  // namespace vornic::platform
