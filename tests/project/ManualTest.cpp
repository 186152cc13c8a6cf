// The chapters of the user manual: what they show is what the programs print.

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report/RuleTable.h"
#include "tests/project/Sessions.h"

namespace vornic::test {

namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

constexpr const char* kManual = VORNIC_SOURCE "/docs/manual";

std::vector<std::string> chapters() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(kManual)) {
        if (entry.path().extension() == ".md") {
            names.push_back(entry.path().filename());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string textOf(const std::string& chapter) {
    return readBytes(std::string(kManual) + "/" + chapter);
}

std::string textOfAll() {
    std::string text;
    for (const std::string& chapter : chapters()) {
        text += textOf(chapter);
    }
    return text;
}

}  // namespace

class ManualChapter : public ::testing::TestWithParam<std::string> {};

TEST_P(ManualChapter, showsWhatTheProgramsPrint) {
    const std::string text = textOf(GetParam());
    const SessionPlayer player("manual");
    for (const auto& [name, script] : programsOf(text)) {
        player.addProgram(name, script);
    }
    for (const Session& session : sessionsOf(text)) {
        EXPECT_FALSE(session.commands.empty());
        EXPECT_EQ(player.play(session), session.shown);
    }
}

INSTANTIATE_TEST_SUITE_P(Each, ManualChapter, ::testing::ValuesIn(chapters()),
                         [](const auto& chapter) {
                             std::string name =
                                 chapter.param.substr(3, chapter.param.find('.') - 3);
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

TEST(Manual, showsTheProgramsAtWork) {
    EXPECT_GE(sessionsOf(textOfAll()).size(), 15U);
    EXPECT_TRUE(programsOf(textOfAll()).contains("mend-inbox"));
}

TEST(Manual, namesNoRuleThatThereIsNot) {
    const std::string text = textOfAll();
    std::size_t named = 0;
    for (std::size_t at = text.find('`'); at != std::string::npos; at = text.find('`', at + 1)) {
        const std::string word = text.substr(at + 1, text.find('`', at + 1) - at - 1);
        const std::string group = word.substr(0, word.find('-'));
        const bool isOfAGroup = std::any_of(
            kRuleTable.begin(), kRuleTable.end(),
            [&](const Rule& rule) { return nameOf(rule.group) == group && group != word; });
        const bool isId =
            word.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-") == std::string::npos;
        if (isOfAGroup && isId) {
            ++named;
            EXPECT_TRUE(std::any_of(kRuleTable.begin(), kRuleTable.end(), [&](const Rule& rule) {
                return rule.id == word;
            })) << word;
        }
    }
    EXPECT_GE(named, 10U);
}

TEST(Manual, showsPicturesThatAreThere) {
    const std::string text = textOfAll();
    constexpr std::string_view kFolder = "](../images/";
    std::size_t shown = 0;
    for (std::size_t at = text.find(kFolder); at != std::string::npos;
         at = text.find(kFolder, at + 1)) {
        const std::string path = text.substr(at + 2, text.find(')', at) - at - 2);
        EXPECT_TRUE(fs::exists(fs::path(kManual) / path)) << path;
        // What is shown is also installed.
        EXPECT_THAT(readBytes(std::string(kManual) + "/CMakeLists.txt"),
                    HasSubstr(fs::path(path).stem().string()));
        ++shown;
    }
    EXPECT_GE(shown, 3U);
}

}  // namespace vornic::test
