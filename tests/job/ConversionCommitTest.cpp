#include <filesystem>
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

TEST_F(ConversionCommitTest, tellsAFailedSaveAsAFailureToLoadTheCodesToo) {
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
