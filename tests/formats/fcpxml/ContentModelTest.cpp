#include <initializer_list>

#include <gtest/gtest.h>

#include "formats/fcpxml/ContentModel.h"

namespace vornic::fcpxml {

namespace {

// Whether an element with these children has what the model asks for.
bool accepts(const ContentModel& model, std::initializer_list<const char*> children) {
    ContentModel::State state = ContentModel::kStart;
    for (const char* child : children) {
        state = model.next(state, Catalogue::shared().idOf(child));
        if (state == ContentModel::kRefused) {
            return false;
        }
    }
    return model.mayEnd(state);
}

ContentModel modelOf(const char* text) {
    return {text, Catalogue::shared()};
}

}  // namespace

TEST(FCPXMLContentModel, readsASequence) {
    const ContentModel model = modelOf("(note, marker?, data)");
    EXPECT_TRUE(accepts(model, {"note", "data"}));
    EXPECT_TRUE(accepts(model, {"note", "marker", "data"}));
    EXPECT_FALSE(accepts(model, {"note"}));
    EXPECT_FALSE(accepts(model, {"marker", "note", "data"}));
    EXPECT_FALSE(accepts(model, {"note", "data", "data"}));
}

TEST(FCPXMLContentModel, readsAChoice) {
    const ContentModel model = modelOf("(note | marker)");
    EXPECT_TRUE(accepts(model, {"note"}));
    EXPECT_TRUE(accepts(model, {"marker"}));
    EXPECT_FALSE(accepts(model, {}));
    EXPECT_FALSE(accepts(model, {"note", "marker"}));
}

TEST(FCPXMLContentModel, readsRepetitions) {
    const ContentModel many = modelOf("((note | marker)*, data+)");
    EXPECT_TRUE(accepts(many, {"data"}));
    EXPECT_TRUE(accepts(many, {"note", "note", "marker", "data", "data"}));
    EXPECT_FALSE(accepts(many, {"note"}));
    EXPECT_FALSE(accepts(many, {"data", "note"}));
}

TEST(FCPXMLContentModel, readsGroupsThatMayBeLeftOut) {
    const ContentModel model = modelOf("(note?, (marker, data)?)");
    EXPECT_TRUE(accepts(model, {}));
    EXPECT_TRUE(accepts(model, {"marker", "data"}));
    EXPECT_FALSE(accepts(model, {"marker"}));
    EXPECT_FALSE(accepts(model, {"note", "data"}));
}

TEST(FCPXMLContentModel, countsANameThatStandsTwice) {
    const ContentModel model = modelOf("(crop-rect?, (pan-rect, pan-rect)?)");
    EXPECT_TRUE(accepts(model, {"crop-rect", "pan-rect", "pan-rect"}));
    EXPECT_FALSE(accepts(model, {"pan-rect"}));
    EXPECT_FALSE(accepts(model, {"pan-rect", "pan-rect", "pan-rect"}));
}

TEST(FCPXMLContentModel, reportsWhatMayStandNext) {
    const Catalogue& catalogue = Catalogue::shared();
    const ContentModel model = modelOf("(note?, marker*, data)");
    const std::vector<ElementId> all{catalogue.idOf("note"), catalogue.idOf("marker"),
                                     catalogue.idOf("data")};
    EXPECT_EQ(model.possible(ContentModel::kStart), all);
    EXPECT_EQ(model.names(), all);
    const ContentModel::State after = model.next(ContentModel::kStart, all[1]);
    EXPECT_EQ(model.nameOf(after), all[1]);
    EXPECT_EQ(model.possible(after), (std::vector<ElementId>{all[1], all[2]}));
}

TEST(FCPXMLContentModel, findsTheNextPlaceOfAName) {
    const Catalogue& catalogue = Catalogue::shared();
    const ContentModel model = modelOf("(note, marker, data?)");
    const ContentModel::State marker = model.reach(ContentModel::kStart, catalogue.idOf("marker"));
    ASSERT_NE(marker, ContentModel::kRefused);
    EXPECT_EQ(model.nameOf(marker), catalogue.idOf("marker"));
    EXPECT_EQ(model.reach(marker, catalogue.idOf("note")), ContentModel::kRefused);
}

TEST(FCPXMLContentModel, reportsWhatMayStandMoreThanOnce) {
    const Catalogue& catalogue = Catalogue::shared();
    const ContentModel model = modelOf("(note, (marker | keyword)*, crop-rect, crop-rect)");
    EXPECT_FALSE(model.mayRepeat(catalogue.idOf("note")));
    EXPECT_TRUE(model.mayRepeat(catalogue.idOf("keyword")));
    EXPECT_TRUE(model.mayRepeat(catalogue.idOf("crop-rect")));
    EXPECT_FALSE(model.mayRepeat(catalogue.idOf("data")));
}

}  // namespace vornic::fcpxml
