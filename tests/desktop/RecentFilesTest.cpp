#include <string>
#include <vector>

#include "desktop/RecentFiles.h"
#include "tests/desktop/DesktopTest.h"

namespace vornic::test {
namespace {

using Paths = std::vector<std::string>;

class RecentFilesTest : public DesktopTest {};

TEST_F(RecentFilesTest, areNoneAtFirst) {
    EXPECT_EQ(RecentFiles::paths(), Paths{});
}

TEST_F(RecentFilesTest, beginWithTheLatest) {
    const std::string a = sandbox.write("a.xml", "");
    const std::string b = sandbox.write("b.xml", "");
    RecentFiles::add(a);
    RecentFiles::add(b);
    EXPECT_EQ(RecentFiles::paths(), (Paths{b, a}));
    RecentFiles::add(a);
    EXPECT_EQ(RecentFiles::paths(), (Paths{a, b}));
    RecentFiles::clear();
    EXPECT_EQ(RecentFiles::paths(), Paths{});
}

TEST_F(RecentFilesTest, areTenAtMost) {
    for (int file = 0; file < 12; ++file) {
        RecentFiles::add(sandbox.write(std::to_string(file), ""));
    }
    EXPECT_EQ(RecentFiles::paths().size(), RecentFiles::kMost);
    EXPECT_EQ(RecentFiles::paths().front(), sandbox.path("11"));
    EXPECT_EQ(RecentFiles::paths().back(), sandbox.path("2"));
}

TEST_F(RecentFilesTest, leaveOutWhatHasGone) {
    const std::string a = sandbox.write("a.xml", "");
    RecentFiles::add(a);
    RecentFiles::add(sandbox.path("gone.xml"));
    EXPECT_EQ(RecentFiles::paths(), Paths{a});
}

TEST_F(RecentFilesTest, leaveOutNamesThatAreNoText) {
    RecentFiles::add(sandbox.write("\xFF.xml", ""));
    EXPECT_EQ(RecentFiles::paths(), Paths{});
}

}  // namespace
}  // namespace vornic::test
