// What counts as exact in the figures.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "bench/SalvageScore.h"

namespace vornic::bench {

namespace {

bool isExact(FaultKind kind, const FaultyText& faulty, std::vector<std::string> copies) {
    return scoreOf(kind, faulty, copies).exact == 1;
}

const std::string kWhole = "<a>\n  <b c=\"1\">x y</b>\n  <d/>\n</a>";

}  // namespace

TEST(SalvageScore, takesTheOriginalAloneForExact) {
    const FaultyText faulty{"", kWhole, {}, 0};
    const auto isOriginal = [&](const std::string& copy) {
        return isExact(FaultKind::endTagTwice, faulty, {copy});
    };
    EXPECT_TRUE(isOriginal(kWhole));
    EXPECT_FALSE(isOriginal("<a>\n  <b c=\"1\">x y</b>\n  <e/>\n</a>"));
    EXPECT_FALSE(isOriginal("<a>\n  <b c=\"2\">x y</b>\n  <d/>\n</a>"));
    EXPECT_FALSE(isOriginal("<a>\n  <b c=\"1\">x  y</b>\n  <d/>\n</a>"));
    EXPECT_FALSE(isOriginal("<a>\n  <b c=\"1\">x y </b>\n  <d/>\n</a>"));
    EXPECT_FALSE(isOriginal("<a><b c=\"1\">x y</b>\n  <d/>\n</a>"));
    EXPECT_FALSE(isOriginal("<a>\n  <b c=\"1\">x y</b>\n  <d/></a>"));
    EXPECT_FALSE(isExact(FaultKind::endTagTwice, faulty, {}));
    EXPECT_FALSE(isExact(FaultKind::endTagTwice, faulty, {kWhole, kWhole}));
}

TEST(SalvageScore, letsWhiteSpaceAroundATagThatWasPutBackDiffer) {
    const FaultyText faulty{"", kWhole, {kWhole.find("</b>")}, 0};
    const auto isOriginal = [&](const std::string& copy) {
        return isExact(FaultKind::endTagLost, faulty, {copy});
    };
    EXPECT_TRUE(isOriginal("<a>\n  <b c=\"1\">x y\n  </b><d/>\n</a>"));
    EXPECT_FALSE(isOriginal("<a>\n  <b c=\"1\"> x y</b>\n  <d/>\n</a>"));
    EXPECT_FALSE(isOriginal("<a>\n  <b c=\"1\">x</b> y\n  <d/>\n</a>"));
    EXPECT_FALSE(isOriginal("<a>\n  <b c=\"1\">x y</b>\n  <d/></a>"));
}

TEST(SalvageScore, asksForAllThatStoodInFrontOfACut) {
    const FaultyText inText{"<a>\n  <b c=\"1\">x y</b>\n  <e>tex", kWhole, {}, 0};
    EXPECT_TRUE(
        isExact(FaultKind::cutOff, inText, {"<a>\n  <b c=\"1\">x y</b>\n  <e>tex</e></a>"}));
    EXPECT_FALSE(
        isExact(FaultKind::cutOff, inText, {"<a>\n  <b c=\"1\">x y</b>\n  <e>te</e></a>"}));
    EXPECT_FALSE(
        isExact(FaultKind::cutOff, inText, {"<a>\n  <b c=\"1\">x y</b>\n  <ee>tex</ee></a>"}));
    EXPECT_FALSE(isExact(FaultKind::cutOff, inText, {"<a>\n  <b c=\"1\">x y</b></a>"}));
    const FaultyText inTag{"<a>\n  <b c=\"1\">x y</b>\n  <e f", kWhole, {}, 0};
    EXPECT_TRUE(isExact(FaultKind::cutOff, inTag, {"<a>\n  <b c=\"1\">x y</b>\n  </a>"}));
    EXPECT_FALSE(isExact(FaultKind::cutOff, inTag, {"<a>\n  <b>x y</b>\n  </a>"}));
}

TEST(SalvageScore, countsTheCharactersThatAreLeft) {
    const Score score = scoreOf(FaultKind::endTagLost, {"", "<a b='12'>345<!--6--></a>", {}, 0},
                                {"<a b='1'>35<!--6--></a>"});
    EXPECT_EQ(score.characters, 6U);
    EXPECT_EQ(score.kept, 4U);
    EXPECT_EQ(score.wellFormed, 1U);
    EXPECT_EQ(score.exact, 0U);
}

}  // namespace vornic::bench
