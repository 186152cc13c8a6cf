#include <string>

#include <gtest/gtest.h>

#include "app/window/Inspection.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::test {
namespace {

std::string projectNamed(const std::string& name) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n"
           "<sequence>\n<name>" +
           name + "</name>\n</sequence>\n</xmeml>\n";
}

class InspectionTest : public SandboxTest {};

TEST_F(InspectionTest, readsAndChecksAFile) {
    const std::string path = sandbox.write("cut.xml", projectNamed("Cut"));
    std::shared_ptr<const SourceText> early;
    const auto inspection = inspect(path, "", [&](auto source) { early = std::move(source); });
    EXPECT_TRUE(inspection->file.isRead());
    EXPECT_EQ(inspection->file.report.kind, "xmeml");
    EXPECT_EQ(inspection->file.report.path, path);
    EXPECT_EQ(early, inspection->file.source);
    EXPECT_FALSE(inspection->original);
}

TEST_F(InspectionTest, reportsWhyAFileCannotBeRead) {
    const auto inspection = inspect(sandbox.path("gone.xml"), "", {});
    EXPECT_FALSE(inspection->file.isRead());
    ASSERT_TRUE(inspection->file.error);
    EXPECT_FALSE(inspection->file.error->localizedDescription().empty());
}

TEST_F(InspectionTest, comparesWithTheOriginalWithoutRegardToIndentation) {
    const std::string before = sandbox.write("before.xml", "<a>\n<b/>\n<c>old</c>\n</a>\n");
    const std::string after = sandbox.write("after.xml", "<a>\n    <b/>\n    <c>new</c>\n</a>\n");
    const auto inspection = inspect(after, before, {});
    ASSERT_TRUE(inspection->original);
    EXPECT_EQ(inspection->changes, (std::vector<LineChange>{{2, 1, 2, 1}}));
}

TEST_F(InspectionTest, countsLegalCharactersThatHaveGone) {
    // Two full-width signs of one name go, the accent stays.
    const std::string before =
        sandbox.write("before.xml", projectNamed("Caf\xC3\xA9\xEF\xBC\x81\xEF\xBC\x9F"));
    const std::string after = sandbox.write("after.xml", projectNamed("Caf\xC3\xA9"));
    const RemovedCharacters removed = inspect(after, before, {})->removed;
    EXPECT_EQ(removed.count, 2U);
    EXPECT_EQ(removed.lines, 1U);
    EXPECT_TRUE(removed.areNames);
    EXPECT_EQ(removed.firstLine, 5U);
}

TEST_F(InspectionTest, countsWhatAReadingAsASCIIHasTakenAway) {
    const std::string before = sandbox.write("before.xml", projectNamed("Caf\xE9"));
    const std::string after = sandbox.write("after.xml", projectNamed("Caf"));
    EXPECT_EQ(inspect(after, before, {})->removed.count, 1U);
}

TEST_F(InspectionTest, countsNoCharacterThatXMLForbids) {
    const std::string before = sandbox.write("before.xml", projectNamed("Cut\x0B\xEF\xBF\xBF"));
    const std::string after = sandbox.write("after.xml", projectNamed("Cut"));
    EXPECT_EQ(inspect(after, before, {})->removed.count, 0U);
}

}  // namespace
}  // namespace vornic::test
