#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/window/SalvagePreview.h"
#include "tests/support/machine/FileState.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::test {
namespace {

using ::testing::HasSubstr;

const std::string kBroken =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n"
    "    <sequence>\n        <name>Cut</name>\n        <duration>900</duration>\n</xmeml>\n";

class SalvagePreviewTest : public SandboxTest {
  protected:
    std::string path = sandbox.write("cut.xml", kBroken);
};

TEST_F(SalvagePreviewTest, showsEachGuessAndTheLinesAroundIt) {
    const SalvagePreview preview = previewSalvage(path);
    ASSERT_EQ(preview.refusal, "");
    ASSERT_EQ(preview.copies.size(), 1U);
    ASSERT_FALSE(preview.guesses->findings().empty());
    const ListedFinding& guess = preview.guesses->findings().front();
    EXPECT_THAT(preview.guesses->linesAround(guess), HasSubstr("</xmeml>"));
    EXPECT_THAT(preview.guesses->linesAroundAfter(guess), HasSubstr("</sequence>"));
}

TEST_F(SalvagePreviewTest, savesWhatWasShownAndLeavesTheFile) {
    const FileState before = fileState(path);
    const SalvagePreview preview = previewSalvage(path);
    const std::string taken = sandbox.write("copy.xml", "mine");
    const FileActionResult saved = saveSalvaged(path, preview, taken);
    ASSERT_TRUE(saved.isDone) << saved.failure;
    EXPECT_EQ(saved.replaced, sandbox.path("copy 2.xml"));
    EXPECT_EQ(readBytes(saved.replaced), preview.copies.front());
    EXPECT_EQ(readBytes(taken), "mine");
    EXPECT_EQ(fileState(path), before);
    EXPECT_FALSE(saveSalvaged(path, preview, sandbox.path("no folder/copy.xml")).isDone);
}

TEST_F(SalvagePreviewTest, saysThatThereIsNothingToGuess) {
    path = sandbox.write("cut.xml", "<xmeml version=\"5\"/>\n");
    EXPECT_THAT(previewSalvage(path).refusal, HasSubstr("well-formed"));
    EXPECT_THAT(previewSalvage(sandbox.path("gone.xml")).refusal, HasSubstr("gone.xml"));
    EXPECT_NE(previewSalvage(sandbox.write("cut.xml", "nothing")).refusal, "");
}

}  // namespace
}  // namespace vornic::test
