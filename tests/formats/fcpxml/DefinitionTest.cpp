#include <gtest/gtest.h>

#include "formats/fcpxml/Definition.h"

namespace vornic::fcpxml {

TEST(FCPXMLDefinition, knowsTheElementsOfItsVersionAlone) {
    EXPECT_EQ(Definition::of(Version(8)).element("media-rep"), nullptr);
    EXPECT_NE(Definition::of(Version(9)).element("media-rep"), nullptr);
    EXPECT_EQ(Definition::of(Version(9)).element("no-such-thing"), nullptr);
}

TEST(FCPXMLDefinition, hasTheAttributesOfItsVersion) {
    const ElementDefinition* const older = Definition::of(Version(8)).element("asset");
    ASSERT_NE(older, nullptr);
    ASSERT_NE(older->attribute("src"), nullptr);
    EXPECT_EQ(older->attribute("src")->defaultKind, AttributeDefault::required);
    EXPECT_EQ(Definition::of(Version(9)).element("asset")->attribute("src"), nullptr);
}

TEST(FCPXMLDefinition, findsAnAttributeWhereverItIsExpected) {
    const ElementDefinition* const asset = Definition::of(Version(8)).element("asset");
    ASSERT_NE(asset, nullptr);
    for (const std::size_t expected : {0U, 1U, 5U, 1000U}) {
        for (const AttributeDefinition& attribute : asset->attributes) {
            EXPECT_EQ(asset->attribute(attribute.name, expected), &attribute);
        }
        EXPECT_EQ(asset->attribute("no-such-thing", expected), nullptr);
    }
}

TEST(FCPXMLDefinition, readsTheTypesOfAttributes) {
    const ElementDefinition* const clip = Definition::of(Version(10)).element("asset-clip");
    ASSERT_NE(clip, nullptr);
    EXPECT_EQ(clip->attribute("ref")->type, AttributeType::reference);
    EXPECT_EQ(clip->attribute("name")->type, AttributeType::text);
    const AttributeDefinition* const enabled = clip->attribute("enabled");
    EXPECT_EQ(enabled->type, AttributeType::enumerated);
    EXPECT_EQ(enabled->defaultKind, AttributeDefault::value);
    EXPECT_EQ(enabled->defaultValue, "1");
    EXPECT_TRUE(enabled->allows("0"));
    EXPECT_FALSE(enabled->allows("2"));
    EXPECT_EQ(Definition::of(Version(10)).element("asset")->attribute("id")->type,
              AttributeType::id);
}

TEST(FCPXMLDefinition, fixesTheVersion) {
    for (int minor = 0; minor <= Version::kNewestMinor; ++minor) {
        const ElementDefinition* const root = Definition::of(Version(minor)).element("fcpxml");
        ASSERT_NE(root, nullptr);
        const AttributeDefinition* const version = root->attribute("version");
        ASSERT_NE(version, nullptr);
        EXPECT_EQ(version->defaultKind, AttributeDefault::fixed);
        EXPECT_EQ(version->defaultValue, Version(minor).text());
    }
}

TEST(FCPXMLDefinition, reportsTheKindsOfContent) {
    const Definition& definition = Definition::of(Version(13));
    EXPECT_EQ(definition.element("adjust-conform")->kind, ContentKind::empty);
    const ElementDefinition* const text = definition.element("text");
    EXPECT_EQ(text->kind, ContentKind::mixed);
    EXPECT_TRUE(text->allowsInText(Catalogue::shared().idOf("text-style")));
    EXPECT_FALSE(text->allowsInText(Catalogue::shared().idOf("note")));
    EXPECT_EQ(definition.element("note")->kind, ContentKind::mixed);
    EXPECT_TRUE(definition.element("note")->mixedNames.empty());
    EXPECT_EQ(definition.element("spine")->kind, ContentKind::elements);
    EXPECT_TRUE(definition.element("spine")->mentions(Catalogue::shared().idOf("gap")));
}

}  // namespace vornic::fcpxml
