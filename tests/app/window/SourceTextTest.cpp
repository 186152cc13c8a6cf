#include <string>

#include <gtest/gtest.h>

#include "app/window/Inspection.h"
#include "app/window/SourceText.h"
#include "xml/text/TextPlace.h"

namespace vornic {
namespace {

using Kind = SourceText::Kind;

// The pieces of a row, each as its kind's number and its text.
std::string piecesOf(const SourceText& source, std::size_t row) {
    constexpr std::string_view kLetters = "xtavrcd?!";
    std::string text;
    for (const SourceText::Piece& piece : source.piecesOf(row)) {
        text += kLetters[static_cast<std::size_t>(piece.kind)];
        text += "[" + std::string(source.row(row).substr(piece.offset, piece.length)) + "]";
    }
    return text;
}

TEST(SourceText, endsLinesWhereEditorsEndThem) {
    const auto source = SourceText::of("a\nb\r\nc\rd");
    ASSERT_EQ(source->rowCount(), 4U);
    EXPECT_EQ(source->row(0), "a");
    EXPECT_EQ(source->row(1), "b");
    EXPECT_EQ(source->row(2), "c");
    EXPECT_EQ(source->row(3), "d");
    EXPECT_EQ(source->lineOf(3), 4U);
}

TEST(SourceText, hasOneEmptyRowOfAnEmptyFile) {
    const auto source = SourceText::of("");
    EXPECT_EQ(source->rowCount(), 1U);
    EXPECT_EQ(source->row(0), "");
    EXPECT_EQ(source->lineCount(), 1U);
}

TEST(SourceText, numbersLinesAsFindingsDo) {
    const std::string text = "<a>\r\n\r<b/>\n\n</a>";
    const auto source = SourceText::of(text);
    for (std::size_t offset = 0; offset < text.size(); ++offset) {
        if (text[offset] == '\n' || text[offset] == '\r') {
            continue;
        }
        TextPlace place(text);
        place.moveTo(offset);
        EXPECT_EQ(source->lineOf(source->rowAt(offset)), place.line()) << offset;
    }
}

TEST(SourceText, breaksALineThatIsTooLongWithoutCuttingACharacter) {
    std::string line(SourceText::kLongestRow - 1, 'x');
    line += "\xC3\xA9";
    const auto source = SourceText::of("<a>\n" + line + "z\n</a>");
    ASSERT_EQ(source->rowCount(), 4U);
    EXPECT_EQ(source->lineCount(), 3U);
    EXPECT_EQ(source->row(1), line);
    EXPECT_EQ(source->row(2), "z");
    EXPECT_FALSE(source->beginsLine(2));
    EXPECT_EQ(source->lineOf(2), 2U);
    EXPECT_EQ(source->lineOf(3), 3U);
    EXPECT_EQ(source->rowOfLine(2), 1U);
    EXPECT_EQ(source->rowOfLine(3), 3U);
    EXPECT_EQ(source->line(2), line + "z");
    EXPECT_EQ(linesOf(*source), (std::vector<std::string_view>{"<a>", source->line(2), "</a>"}));
}

TEST(SourceText, reportsThePartsOfALine) {
    const auto source = SourceText::of("<a b=\"1 &amp; 2\" c='3'>x &lt; y</a>");
    EXPECT_EQ(piecesOf(*source, 0),
              "t[<a ]a[b=]v[\"1 ]r[&amp;]v[ 2\"]a[ c=]v['3']t[>]x[x ]r[&lt;]x[ y]t[</a>]");
}

TEST(SourceText, knowsWhatALineBeginsInsideOf) {
    const auto source = SourceText::of(
        "<?xml\n?><!DOCTYPE a [\n<!ELEMENT a ANY>]><!-- one\ntwo -->"
        "<![CDATA[<b>\n]]><a\nb=\"\n\">");
    EXPECT_EQ(piecesOf(*source, 1), "?[?>]![<!DOCTYPE a []");
    EXPECT_EQ(piecesOf(*source, 2), "![<!ELEMENT a ANY>]>]c[<!-- one]");
    EXPECT_EQ(piecesOf(*source, 3), "c[two -->]d[<![CDATA[<b>]");
    EXPECT_EQ(piecesOf(*source, 4), "d[]]>]t[<a]");
    EXPECT_EQ(piecesOf(*source, 6), "v[\"]t[>]");
}

TEST(SourceText, showsBytesThatAreNoTextAsTheyAre) {
    const auto source = SourceText::of("<a>caf\xE9</a>");
    EXPECT_FALSE(source->isDecoded());
    EXPECT_EQ(source->row(0), "<a>caf\xE9</a>");
}

TEST(SourceText, decodesWhatTheFileDeclares) {
    const auto source =
        SourceText::of("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<a>caf\xE9</a>");
    EXPECT_TRUE(source->isDecoded());
    EXPECT_EQ(source->row(1), "<a>caf\xC3\xA9</a>");
}

TEST(SourceText, findsTextForwardAndBackwards) {
    const auto source = SourceText::of("<Clip/>\n<clip/>\n");
    EXPECT_EQ(source->find("CLIP", 0), 1U);
    EXPECT_EQ(source->find("clip", 2), 9U);
    EXPECT_EQ(source->find("clip", 10), std::string_view::npos);
    EXPECT_EQ(source->findBefore("clip", 9), 1U);
    EXPECT_EQ(source->findBefore("clip", 1), std::string_view::npos);
    EXPECT_EQ(source->findBefore("clip", source->text().size()), 9U);
}

}  // namespace
}  // namespace vornic
