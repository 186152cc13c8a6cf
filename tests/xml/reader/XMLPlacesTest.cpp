#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "xml/reader/XMLReader.h"

namespace vornic::test {

namespace {

using Lines = std::vector<std::string>;

// What stands in the text at the places that are told.
class PlaceRecorder : public XMLReaderEvents {
  public:
    explicit PlaceRecorder(std::string_view text) : text_(text) {}

    void startElement(std::string_view) override { add("start "); }
    void attribute(std::string_view, std::string_view) override {
        add("attribute ");
        lines.push_back("value " + std::string(valuePlace().of(text_)));
    }
    void finishStartTag() override { add("finish "); }
    void endElement(std::string_view, bool) override { add("end "); }
    void text(std::string_view) override { add("text "); }
    void cdata(std::string_view) override { add("cdata "); }
    void comment(std::string_view) override { add("comment "); }
    void processingInstruction(std::string_view, std::string_view) override { add("instruction "); }
    void documentType(std::string_view, std::string_view) override { add("type "); }

    Lines lines;

  private:
    void add(const char* kind) { lines.push_back(kind + std::string(place().of(text_))); }

    std::string_view text_;
};

Lines placesOf(std::string_view text, XMLMode mode = XMLMode::tolerant) {
    PlaceRecorder recorder(text);
    const XMLReading reading = readXML(text, mode, &recorder);
    EXPECT_FALSE(reading.fault.has_value()) << reading.fault->description;
    return recorder.lines;
}

// Keeps what a sink is told.
class RecordingSink : public XMLMendSink {
  public:
    void mend(const XMLMend& mend, std::string_view name) override {
        mends.push_back(mend);
        names.emplace_back(name);
    }
    void edit(const XMLEdit& edit) override { edits.push_back(edit); }
    void dropped(TextSpan characters) override {
        edits.push_back({characters.offset, characters.length, ""});
    }

    std::vector<XMLMend> mends;
    Lines names;
    std::vector<XMLEdit> edits;
};

// The text as the edits of a sink make it. Inside what an edit takes out there may be others.
std::string mendedBy(std::string_view text, std::vector<XMLEdit> edits) {
    std::stable_sort(edits.begin(), edits.end(), [](const XMLEdit& left, const XMLEdit& right) {
        return left.offset < right.offset;
    });
    std::vector<XMLEdit> apart;
    std::size_t end = 0;
    for (const XMLEdit& edit : edits) {
        if (edit.offset >= end || edit.length == 0) {
            apart.push_back(edit);
            end = std::max(end, edit.offset + edit.length);
        }
    }
    return applyXMLEdits(text, apart);
}

const std::string kFaulty =
    "\n<?xml version='1.0'?><a b=c d e='x'f='&'>1 & 2 < 3 ]]> &nbsp;<!-- - -- --><g/></a>";

}  // namespace

TEST(XMLPlaces, areThoseOfTheWholeConstruct) {
    EXPECT_EQ(
        placesOf("<?p q?><!DOCTYPE a ><a b = 'c&amp;' d=\"\" ><e  />x&lt;<![CDATA[y]]>"
                 "<!--z--></a >",
                 XMLMode::strict),
        (Lines{"instruction <?p q?>", "type <!DOCTYPE a >", "start <a", "attribute b = 'c&amp;'",
               "value c&amp;", "attribute d=\"\"", "value ", "finish >", "start <e", "end />",
               "text x&lt;", "cdata <![CDATA[y]]>", "comment <!--z-->", "end </a >"}));
}

TEST(XMLPlaces, areThoseOfTheTextAsItStandsWhenItIsMended) {
    EXPECT_EQ(placesOf("<a b=c d>x & y</a>"),
              (Lines{"start <a", "attribute b=c", "value c", "attribute d", "value ", "finish >",
                     "text x & y", "end </a>"}));
}

TEST(XMLPlaces, countTheCharactersThatAreDropped) {
    EXPECT_EQ(placesOf("\x01<a\x02 b='\x03x\x04y'\x05>\x06z</a\x07>"),
              (Lines{"start <a", "attribute b='\x03x\x04y'", "value x\x04y", "finish >", "text z",
                     "end </a\x07>"}));
}

TEST(XMLReaderSink, receivesTheSameMendsThatAResultWouldHold) {
    RecordingSink sink;
    const XMLReading told = readXML(kFaulty, XMLMode::tolerant, nullptr, &sink);
    const XMLReading kept = readXML(kFaulty, XMLMode::tolerant);
    EXPECT_FALSE(told.fault.has_value());
    EXPECT_TRUE(told.mends.empty());
    EXPECT_TRUE(told.edits.empty());
    ASSERT_EQ(sink.mends.size(), kept.mends.size());
    for (std::size_t index = 0; index < kept.mends.size(); ++index) {
        EXPECT_EQ(sink.mends[index].code, kept.mends[index].code);
        EXPECT_EQ(sink.mends[index].offset, kept.mends[index].offset);
        EXPECT_EQ(sink.mends[index].what, kept.mends[index].what);
    }
    EXPECT_EQ(mendedBy(kFaulty, sink.edits), applyXMLEdits(kFaulty, kept.edits));
}

TEST(XMLReaderSink, receivesACodeForEachKindOfMend) {
    RecordingSink sink;
    (void)readXML(kFaulty, XMLMode::tolerant, nullptr, &sink);
    std::vector<XMLErrorCode> codes;
    for (const XMLMend& mend : sink.mends) {
        codes.push_back(mend.code);
    }
    EXPECT_EQ(codes, (std::vector<XMLErrorCode>{
                         XMLErrorCode::misplacedXMLDeclaration, XMLErrorCode::malformedAttribute,
                         XMLErrorCode::attributeWithoutValue, XMLErrorCode::missingSpace,
                         XMLErrorCode::malformedReference, XMLErrorCode::malformedReference,
                         XMLErrorCode::strayLessThan, XMLErrorCode::cdataEndInText,
                         XMLErrorCode::undefinedEntity, XMLErrorCode::doubleHyphenInComment}));
    EXPECT_EQ(sink.names[2], "d");
    EXPECT_EQ(sink.names[8], "nbsp");
}

TEST(XMLReaderSink, receivesPlacesThatCountTheDroppedCharacters) {
    const std::string text =
        "<a\x01>\x02 & \x03\x04<b c=\x05"
        "d/></a>";
    RecordingSink sink;
    EXPECT_FALSE(readXML(text, XMLMode::tolerant, nullptr, &sink).fault.has_value());
    ASSERT_EQ(sink.mends.size(), 2U);
    EXPECT_EQ(text[sink.mends[0].offset], '&');
    EXPECT_EQ(text[sink.mends[1].offset], 'd');
    EXPECT_EQ(mendedBy(text, sink.edits), "<a> &amp; <b c=\"d\"/></a>");
}

TEST(XMLReaderSink, hasNoLimit) {
    std::string text = "<a>";
    for (std::size_t count = 0; count <= kXMLMendLimit; ++count) {
        text += "& ";
    }
    text += "</a>";
    class Counter : public XMLMendSink {
      public:
        void mend(const XMLMend&, std::string_view) override { ++mends; }
        void edit(const XMLEdit&) override {}
        void dropped(TextSpan) override {}
        std::size_t mends = 0;
    } counter;
    EXPECT_FALSE(readXML(text, XMLMode::tolerant, nullptr, &counter).fault.has_value());
    EXPECT_EQ(counter.mends, kXMLMendLimit + 1);
    EXPECT_TRUE(readXML(text, XMLMode::tolerant).fault.has_value());
}

TEST(XMLReaderSink, receivesVeryManyForbiddenCharactersWhereTheyStand) {
    std::string text = "<a b='";
    std::string rest = "'>";
    for (int count = 0; count < 100'000; ++count) {
        text += "x\x01\x02";
        rest += "\x03y";
    }
    text += rest + "</a>";
    RecordingSink sink;
    EXPECT_FALSE(readXML(text, XMLMode::tolerant, nullptr, &sink).fault.has_value());
    EXPECT_EQ(sink.edits.size(), 200'000U);
    EXPECT_EQ(mendedBy(text, sink.edits),
              "<a b='" + std::string(100'000, 'x') + "'>" + std::string(100'000, 'y') + "</a>");
}

TEST(XMLReaderSink, receivesNothingInStrictMode) {
    RecordingSink sink;
    EXPECT_TRUE(readXML("<a>&</a>", XMLMode::strict, nullptr, &sink).fault.has_value());
    EXPECT_TRUE(sink.mends.empty());
}

TEST(XMLFaultParts, nameWhatIsConcerned) {
    const std::string crossed = "<a>\n<b></a>";
    const XMLReading reading = readXML(crossed, XMLMode::strict);
    ASSERT_TRUE(reading.faultParts.has_value());
    EXPECT_EQ(reading.faultParts->code, XMLErrorCode::mismatchedEndTag);
    EXPECT_EQ(reading.faultParts->offset, 7U);
    EXPECT_EQ(reading.faultParts->name, "a");
    EXPECT_EQ(reading.faultParts->other, "b");
    EXPECT_EQ(reading.faultParts->otherOffset, 5U);
    EXPECT_FALSE(readXML("<a/>", XMLMode::strict).faultParts.has_value());
}

TEST(XMLFaultParts, nameTheElementThatIsOpenAtTheEnd) {
    const XMLReading reading = readXML("<a\x01>\x02<b>", XMLMode::tolerant);
    ASSERT_TRUE(reading.faultParts.has_value());
    EXPECT_EQ(reading.faultParts->code, XMLErrorCode::unclosedElement);
    EXPECT_EQ(reading.faultParts->name, "b");
    EXPECT_EQ(reading.faultParts->offset, 8U);
    EXPECT_EQ(reading.faultParts->otherOffset, 6U);
}

}  // namespace vornic::test
