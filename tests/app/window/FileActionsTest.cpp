#include <string>

#include <gtest/gtest.h>

#include "app/window/FileActions.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::test {
namespace {

constexpr const char* kDamaged =
    "<?xml version=\"1.0\"?>\n<xmeml version=\"5\">\n<a>x & y</a>\n<b>x & z</b>\n</xmeml>\n";
constexpr const char* kHalfMended =
    "<?xml version=\"1.0\"?>\n<xmeml version=\"5\">\n<a>x & y</a>\n<b>x &amp; z</b>\n</xmeml>\n";

class FileActionsTest : public SandboxTest {
  protected:
    // Mends the second ampersand.
    FileActionResult mendOne() {
        const auto inspection = inspect(path, "", {});
        const Finding& last = inspection->file.report.findings.kept().back();
        const MendPreview preview = previewMends(inspection->file, {&last});
        return mendInPlace(path, preview.request, "test", "1");
    }

    std::string path = sandbox.write("cut.xml", kDamaged);
};

TEST_F(FileActionsTest, showWhatChosenMendsWouldDoAndWriteNothing) {
    const FileState before = fileState(path);
    const auto inspection = inspect(path, "", {});
    const auto& findings = inspection->file.report.findings.kept();
    const MendPreview preview = previewMends(inspection->file, {&findings.back()});
    EXPECT_EQ(preview.count, 1U);
    EXPECT_EQ(preview.refusal, "");
    EXPECT_NE(preview.difference.find("-<b>x & z</b>\n+<b>x &amp; z</b>\n"), std::string::npos);
    EXPECT_EQ(preview.difference.find("+<a>"), std::string::npos);
    EXPECT_EQ(fileState(path), before);
}

TEST_F(FileActionsTest, makeTheChosenMendAndBringTheOriginalBack) {
    const FileActionResult mended = mendOne();
    EXPECT_TRUE(mended.isDone);
    EXPECT_TRUE(mended.isUndoable);
    EXPECT_EQ(readBytes(path), kHalfMended);
    EXPECT_EQ(readBytes(mended.replaced), kDamaged);
    EXPECT_EQ(readBytes(originalOf(path)), kDamaged);
    const RestoreResult restored = restoreOriginal(path, "test", "1", false);
    EXPECT_TRUE(restored.isDone);
    EXPECT_EQ(restored.failure, "");
    EXPECT_EQ(readBytes(path), kDamaged);
    EXPECT_EQ(readBytes(restored.replaced), kHalfMended);
}

TEST_F(FileActionsTest, saveAMendedCopyAndLeaveWhatIsThere) {
    const FileState before = fileState(path);
    const std::string taken = sandbox.write("copy.xml", "mine");
    const FileActionResult saved = saveMendedCopy(path, taken);
    ASSERT_TRUE(saved.isDone) << saved.failure;
    EXPECT_EQ(saved.replaced, sandbox.path("copy 2.xml"));
    EXPECT_NE(readBytes(saved.replaced).find("<a>x &amp; y</a>"), std::string::npos);
    EXPECT_EQ(readBytes(taken), "mine");
    EXPECT_EQ(fileState(path), before);
    EXPECT_EQ(saved.notes.front(), "2 mends were made in it.");
    EXPECT_FALSE(saveMendedCopy(path, sandbox.path("no folder/copy.xml")).isDone);
}

TEST_F(FileActionsTest, askBeforeAFileIsReplacedThatHasChangedSince) {
    ASSERT_TRUE(mendOne().isDone);
    sandbox.write("cut.xml", "<mine/>");
    EXPECT_EQ(restoreOriginal(path, "test", "1", false).end, UndoResult::End::changed);
    EXPECT_EQ(readBytes(path), "<mine/>");
    EXPECT_TRUE(restoreOriginal(path, "test", "1", true).isDone);
    EXPECT_EQ(readBytes(path), kDamaged);
}

TEST_F(FileActionsTest, writeAVersionAndKeepTheOriginal) {
    for (const char* const tag : {"<xmeml>", "<xmeml version=\"\">", "<xmeml version=\"9\">"}) {
        const std::string before = "\xEF\xBB\xBF" + std::string(tag) + "<a/></xmeml>\n";
        sandbox.write("cut.xml", before);
        const FileActionResult set = setVersionInPlace(path, "4", "test", "1");
        ASSERT_TRUE(set.isDone) << set.failure;
        EXPECT_TRUE(set.isUndoable);
        EXPECT_EQ(readBytes(path), "\xEF\xBB\xBF<xmeml version=\"4\"><a/></xmeml>\n");
        EXPECT_EQ(readBytes(set.replaced), before);
    }
    const FileActionResult other = setVersionInPlace(path, "1.10", "test", "1");
    EXPECT_FALSE(other.isDone) << "one of the other format";
    EXPECT_EQ(other.failure, "The file " + path + " cannot be changed: XMEML has no version 1.10.");
    sandbox.write("other.xml", "<project/>");
    EXPECT_EQ(setVersionInPlace(sandbox.path("other.xml"), "4", "test", "1").failure,
              "The file " + sandbox.path("other.xml") +
                  " cannot be changed: it is neither FCPXML nor XMEML.");
    EXPECT_FALSE(setVersionInPlace(sandbox.path("gone.xml"), "4", "test", "1").isDone);
}

TEST_F(FileActionsTest, sayThatThereIsNothingToRestore) {
    const RestoreResult restored = restoreOriginal(path, "test", "1", false);
    EXPECT_FALSE(restored.isDone);
    EXPECT_EQ(restored.end, UndoResult::End::nothingToUndo);
    EXPECT_NE(restored.failure.find(path), std::string::npos);
    EXPECT_EQ(originalOf(path), "");
}

TEST_F(FileActionsTest, mendNoFileThatHasChangedSinceItWasChecked) {
    const auto inspection = inspect(path, "", {});
    const std::vector<const Finding*> safe = safelyMendable(inspection->file.report.findings);
    EXPECT_EQ(safe.size(), 2U);
    const MendPreview preview = previewMends(inspection->file, safe);
    sandbox.write("cut.xml", "<a>&</a>");
    EXPECT_NE(previewMends(inspection->file, safe).refusal, "");
    const FileActionResult result = mendInPlace(path, preview.request, "test", "1");
    EXPECT_FALSE(result.isDone);
    EXPECT_NE(result.failure, "");
    EXPECT_EQ(readBytes(path), "<a>&</a>");
}

}  // namespace
}  // namespace vornic::test
