#include <QFileInfo>
#include <string>

#include "desktop/FileIcons.h"
#include "tests/desktop/DesktopTest.h"

namespace vornic::test {
namespace {

class FileIconsTest : public DesktopTest {
  protected:
    static QString typeOf(const std::string& path) {
        return FileIcons().type(QFileInfo(QString::fromStdString(path)));
    }
};

TEST_F(FileIconsTest, readsIntoNoFile) {
    const std::string content("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
    const std::string path = sandbox.write("picture", content);
    const QFileInfo info(QString::fromStdString(path));
    ASSERT_NE(QFileIconProvider().type(info), typeOf("nothing")) << "the toolkit reads it";
    EXPECT_EQ(typeOf(path), typeOf("nothing"));
}

TEST_F(FileIconsTest, knowsKindsByTheirNames) {
    EXPECT_NE(typeOf(sandbox.write("a.xml", "")), typeOf("nothing"));
    EXPECT_EQ(typeOf(sandbox.folder()), QStringLiteral("Folder"));
    EXPECT_FALSE(FileIcons().icon(QFileInfo(QString::fromStdString(sandbox.folder()))).isNull());
}

}  // namespace
}  // namespace vornic::test
