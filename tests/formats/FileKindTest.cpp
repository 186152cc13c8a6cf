#include <gtest/gtest.h>

#include "formats/FileKind.h"

namespace vornic {
namespace {

TEST(FileKind, aRepairGoesByTheExtensionInAnyCase) {
    EXPECT_EQ(fileKindOfPath("/a/Cut.fcpxml"), FileKind::fcpxml);
    EXPECT_EQ(fileKindOfPath("/a/Cut.FcpXML"), FileKind::fcpxml);
    EXPECT_EQ(fileKindOfPath("/a/Cut.xml"), FileKind::xmeml);
    EXPECT_EQ(fileKindOfPath("/a.fcpxml/Cut"), FileKind::xmeml);
    EXPECT_EQ(fileKindOfPath("/a/.fcpxml"), FileKind::xmeml);
    EXPECT_EQ(fileKindOfPath("/a/Cut.fcpxmld"), FileKind::xmeml);
}

TEST(FileKind, everythingElseGoesByTheRootElement) {
    EXPECT_EQ(fileKindOfRoot("xmeml"), FileKind::xmeml);
    EXPECT_EQ(fileKindOfRoot("fcpxml"), FileKind::fcpxml);
    EXPECT_EQ(fileKindOfRoot("FCPXML"), FileKind::other);
    EXPECT_EQ(fileKindOfRoot(""), FileKind::none);
}

TEST(FileKind, hasTheNameOfItsRootElement) {
    for (const FileKind kind : {FileKind::xmeml, FileKind::fcpxml}) {
        EXPECT_EQ(fileKindOfRoot(nameOf(kind)), kind);
    }
    EXPECT_EQ(nameOf(FileKind::other), "other");
    EXPECT_EQ(nameOf(FileKind::none), "none");
}

TEST(FileKind, isTheNumberThatADocumentHas) {
    EXPECT_EQ(xmlTypeOf(FileKind::xmeml), 0);
    EXPECT_EQ(xmlTypeOf(FileKind::fcpxml), 1);
    EXPECT_EQ(fileKindOfType(0), FileKind::xmeml);
    EXPECT_EQ(fileKindOfType(2), FileKind::fcpxml);
}

}  // namespace
}  // namespace vornic
