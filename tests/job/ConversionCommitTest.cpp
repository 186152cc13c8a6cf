#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "job/ConversionCommit.h"
#include "tests/support/texts/EngineTest.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;

std::string xmeml(const std::string& version) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"" +
           version + "\">\n</xmeml>\n";
}

class ConversionCommitTest : public test::EngineTest {
  protected:
    static ConversionResult commit(XMLDocument* document, const std::string& path) {
        return commitConversion(document, {.current = 5, .target = 4, .version = "4"}, path);
    }
};

TEST_F(ConversionCommitTest, writesTheDocumentInThePlansVersionAndNothingElse) {
    const std::string path = sandbox.write("Cut.xml", "old");
    const auto before = std::distance(fs::directory_iterator(sandbox.folder()), {});
    const ConversionResult result = commit(test::parsed(xmeml("5")).get(), path);
    EXPECT_FALSE(result.saveError || result.loadCodesError || result.writeCodesError);
    EXPECT_EQ(test::readBytes(path), xmeml("4"));
    EXPECT_EQ(std::distance(fs::directory_iterator(sandbox.folder()), {}), before);
}

class KeptOriginalTest : public ConversionCommitTest {
  protected:
    // Converts the document of a file, after something has happened.
    ConversionResult convert(const std::string& path, const std::function<void()>& meanwhile = {}) {
        ErrorSlot error;
        const auto document = XMLDocument::load(path, XMLMode::tolerant, error);
        EXPECT_TRUE(document);
        if (meanwhile) {
            meanwhile();
        }
        return commitConversionKeepingOriginal(
            *document, {.current = 5, .target = 4, .version = "4"}, path,
            {.tell = [](const std::string&) {}, .stop = StopToken([this] { return isStopped; })},
            observer);
    }
    [[nodiscard]] std::ptrdiff_t items() const {
        return std::distance(fs::directory_iterator(sandbox.folder()), {});
    }
    SwapObserver observer;
    bool isStopped = false;
};

TEST_F(KeptOriginalTest, movesTheFileAsItWasToTheTrash) {
    const std::string path = sandbox.write("Cut.xml", xmeml("5"));
    const auto before = items();
    const ConversionResult result = convert(path);
    EXPECT_FALSE(result.saveError || result.loadCodesError || result.writeCodesError);
    EXPECT_EQ(test::readBytes(path), xmeml("4"));
    EXPECT_EQ(test::readBytes(result.original), xmeml("5"));
    EXPECT_EQ(items(), before);
}

TEST_F(KeptOriginalTest, leavesAFileThatAnotherProgramHasChanged) {
    const std::string path = sandbox.write("Cut.xml", xmeml("5"));
    const auto before = items();
    const ConversionResult result = convert(path, [this] { sandbox.write("Cut.xml", xmeml("3")); });
    ASSERT_TRUE(result.saveError);
    EXPECT_NE(result.saveError->localizedDescription().find("another program has changed it"),
              std::string::npos);
    EXPECT_EQ(test::readBytes(path), xmeml("3"));
    EXPECT_EQ(result.original, "");
    EXPECT_EQ(items(), before);
}

TEST_F(KeptOriginalTest, leavesAFileThatAnotherProgramHasOpenToWriteIt) {
    const std::string path = sandbox.write("Cut.xml", xmeml("5"));
    const ConversionResult result = [&] {
        const std::ofstream writer(path, std::ios::app);
        return convert(path);
    }();
    EXPECT_TRUE(result.saveError);
    EXPECT_EQ(test::readBytes(path), xmeml("5"));
}

TEST_F(ConversionCommitTest, reportsAFailedSaveAsAFailureToLoadTheCodesToo) {
    const std::string path = sandbox.path("none/Cut.xml");
    const ConversionResult result = commit(test::parsed(xmeml("5")).get(), path);
    ASSERT_TRUE(result.saveError && result.loadCodesError);
    EXPECT_EQ(result.saveError->description, result.loadCodesError->description);
    EXPECT_FALSE(result.writeCodesError);
}

TEST_F(ConversionCommitTest, setsTheCodesAloneWithoutADocument) {
    const std::string path = sandbox.write("Cut.xml", "old");
    const ConversionResult result = commit(nullptr, path);
    EXPECT_FALSE(result.saveError || result.loadCodesError || result.writeCodesError);
    EXPECT_EQ(test::readBytes(path), "old");
}

}  // namespace
}  // namespace vornic
