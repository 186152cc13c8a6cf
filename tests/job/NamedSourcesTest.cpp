#include <filesystem>
#include <optional>

#include <gtest/gtest.h>

#include "job/NamedSources.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic {
namespace {

namespace fs = std::filesystem;

class NamedSourceTest : public test::SandboxTest {
  protected:
    std::string path = sandbox.write("Cut.xml", "");
    std::string other = sandbox.write("Other.xml", "");
};

TEST_F(NamedSourceTest, isKnownWhileTheObjectLives) {
    EXPECT_FALSE(NamedSource::isAt(path));
    {
        const NamedSource named(path);
        EXPECT_TRUE(NamedSource::isAt(path));
        EXPECT_FALSE(NamedSource::isAt(other));
    }
    EXPECT_FALSE(NamedSource::isAt(path));
}

TEST_F(NamedSourceTest, isKnownUntilTheLastOneWhoNamedItLetsGo) {
    std::optional<NamedSource> first(std::in_place, path);
    const NamedSource second(path);
    first.reset();
    EXPECT_TRUE(NamedSource::isAt(path));
}

TEST_F(NamedSourceTest, isKnownUnderEverySpelling) {
    fs::create_directory_symlink(sandbox.folder(), sandbox.path("folder"));
    const NamedSource named(sandbox.folder() + "/./folder//Cut.xml");
    EXPECT_TRUE(NamedSource::isAt(path));
    EXPECT_FALSE(NamedSource::isAt(other));
}

TEST_F(NamedSourceTest, isAlsoWhatANamedLinkLeadsTo) {
    const std::string link = sandbox.path("link.xml");
    fs::create_symlink("Cut.xml", link);
    const NamedSource named(link);
    EXPECT_TRUE(NamedSource::isAt(link));
    EXPECT_TRUE(NamedSource::isAt(path));
    EXPECT_FALSE(NamedSource::isAt(other));
}

TEST_F(NamedSourceTest, isNoOtherNameOfTheSameFile) {
    const std::string second = sandbox.path("Cut-backup.xml");
    fs::create_hard_link(path, second);
    const NamedSource named(path);
    EXPECT_TRUE(NamedSource::isAt(path));
    EXPECT_FALSE(NamedSource::isAt(second));
}

TEST_F(NamedSourceTest, isNothingWhereNothingStands) {
    const NamedSource named(sandbox.path("none"));
    EXPECT_FALSE(NamedSource::isAt(sandbox.path("none")));
}

}  // namespace
}  // namespace vornic
