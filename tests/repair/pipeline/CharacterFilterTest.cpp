#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/Exception.h"
#include "repair/pipeline/CharacterFilter.h"
#include "tests/repair/pipeline/ReferenceFilter.h"
#include "tests/support/fakes/RecordingEvents.h"
#include "tests/support/texts/EngineTest.h"

namespace vornic {
namespace {

using Strings = std::vector<std::string>;

/// Writes down what it is told, unit by unit, and can cancel at any call.
class OrderedObserver : public CharacterFilterObserver {
  public:
    explicit OrderedObserver(std::size_t cancelAtCallNumber)
        : cancelAtCallNumber_(cancelAtCallNumber) {}

    bool isCancelled() override { return calls.size() >= cancelAtCallNumber_; }
    void removedUnit(std::int64_t index, TextSpan character) override {
        calls.push_back("removed: " + std::to_string(index) + ", bytes " +
                        std::to_string(character.offset) + " to " +
                        std::to_string(character.end()));
    }
    bool finishedUnits(std::int64_t first, std::int64_t last) override {
        for (std::int64_t index = first; index <= last; ++index) {
            calls.push_back("finished: " + std::to_string(index));
            if (index < last && isCancelled()) {
                return false;
            }
        }
        return true;
    }

    Strings calls;

  private:
    std::size_t cancelAtCallNumber_;
};

/// What a filter does: its result and its calls.
struct Filtering {
    std::optional<std::string> result;
    bool raised = false;
    Strings calls;
    friend bool operator==(const Filtering&, const Filtering&) = default;
};

std::ostream& operator<<(std::ostream& stream, const Filtering& filtering) {
    stream << (filtering.raised ? "raised" : filtering.result.value_or("nothing"));
    for (const std::string& call : filtering.calls) {
        stream << "\n  " << call;
    }
    return stream;
}

using Filter = std::optional<std::string>(std::string_view, CharacterFilterObserver&);

Filtering run(Filter& filter, std::string_view text, std::size_t cancelAtCallNumber = SIZE_MAX) {
    OrderedObserver observer(cancelAtCallNumber);
    Filtering filtering;
    try {
        filtering.result = filter(text, observer);
    } catch (const platform::RangeException&) {
        filtering.raised = true;
    }
    filtering.calls = std::move(observer.calls);
    return filtering;
}

std::optional<std::string> quickFilter(std::string_view text, CharacterFilterObserver& observer) {
    std::optional<FilteredText> filtered = filterInvalidCharacters(text, observer);
    if (!filtered) {
        return std::nullopt;
    }
    const bool isChanged = filtered->isChanged;
    std::string result = std::move(*filtered).of(std::string(text));
    EXPECT_EQ(isChanged, result != text);
    return result;
}

class CharacterFilterTest : public test::EngineTest {
  protected:
    /// Filters a text that begins with the second byte of a file.
    std::optional<std::string> filter(std::string_view text) {
        SourcePlaces places(text, 1);
        std::optional<FilteredText> result =
            filterInvalidCharsInString(places, report, events.stopToken());
        return result ? std::optional(std::move(*result).of(std::string(text))) : std::nullopt;
    }
    std::string filtered(std::string_view text) {
        report.setVerdict({false, false});
        const std::optional<std::string> result = filter(text);
        EXPECT_TRUE(result.has_value());
        return result.value_or("");
    }

    test::RecordingEvents events;
    RepairReport report{events};
};

TEST_F(CharacterFilterTest, yieldsAnEmptyStringForAnEmptyOne) {
    EXPECT_EQ(filtered(""), "");
    EXPECT_EQ(events.calls, Strings{"indeterminate"});
    EXPECT_TRUE(events.progressValues.empty());
    EXPECT_EQ(log.entries(), Strings{"Filtering invalid characters from string..."});
}

TEST_F(CharacterFilterTest, returnsNothingAndLogsNothingWhenItWasCancelledBefore) {
    events.cancelled = true;
    EXPECT_EQ(filter("text"), std::nullopt);
    EXPECT_EQ(events.calls, Strings{});
    EXPECT_EQ(log.entries(), Strings{});
}

TEST_F(CharacterFilterTest, leavesMarkupAndPlainTextAlone) {
    const std::string text = "<?xml version=\"1.0\"?>\r\n<!DOCTYPE xmeml>\n<a b='1'>\tc.d\n</a>";
    EXPECT_EQ(filtered(text), text);
    EXPECT_FALSE(report.verdict().hasErrors);
}

TEST_F(CharacterFilterTest, escapesQuotesAndGreaterThanSignsInText) {
    EXPECT_EQ(filtered("<a>\"b\" 'c' > d</a>"), "<a>&quot;b&quot; &apos;c&apos; &gt; d</a>");
    EXPECT_FALSE(report.verdict().hasErrors);
}

TEST_F(CharacterFilterTest, keepsQuotesAndAmpersandsInsideATag) {
    EXPECT_EQ(filtered("<a b=\"x & y\" c='\"'>"), "<a b=\"x & y\" c='\"'>");
}

TEST_F(CharacterFilterTest, escapesALoneAmpersandInText) {
    EXPECT_EQ(filtered("<a>b & c</a>"), "<a>b &amp; c</a>");
    EXPECT_EQ(filtered("&"), "&amp;");
    EXPECT_EQ(filtered("&&amp;"), "&&amp;");
}

TEST_F(CharacterFilterTest, keepsAReferenceWhoseSemicolonIsFiveUnitsAway) {
    EXPECT_EQ(filtered("&;"), "&;");
    EXPECT_EQ(filtered("&amp;"), "&amp;");
    EXPECT_EQ(filtered("&quot;"), "&quot;");
    EXPECT_EQ(filtered("&#233;"), "&#233;");
}

TEST_F(CharacterFilterTest, escapesAReferenceWhoseSemicolonIsSixUnitsAway) {
    EXPECT_EQ(filtered("&#8364;"), "&amp;#8364;");
    EXPECT_EQ(filtered("&#x1F600;"), "&amp;#x1F600;");
    EXPECT_EQ(filtered("&abcd"), "&amp;abcd");
}

TEST_F(CharacterFilterTest, countsUnitsAndNotBytesUpToTheSemicolon) {
    EXPECT_EQ(filtered("&\u00E9\u00E9\u00E9\u00E9;"), "&&#233;&#233;&#233;&#233;;");
    EXPECT_EQ(filtered("&\U0001F600\U0001F600;"), "&;");
    EXPECT_EQ(filtered("&\U0001F600\U0001F600a;"), "&amp;a;");
}

TEST_F(CharacterFilterTest, findsASemicolonBehindOtherMarkup) {
    EXPECT_EQ(filtered("<a>&</b>;"), "<a>&</b>;");
    EXPECT_EQ(filtered("<a>&</bc>;"), "<a>&amp;</bc>;");
}

TEST_F(CharacterFilterTest, escapesASecondLessThanSignInsideATagAndStaysInIt) {
    EXPECT_EQ(filtered("<a b=\"1<2\" c='\"'>\"</a>"), "<a b=\"1&lt;2\" c='\"'>&quot;</a>");
}

TEST_F(CharacterFilterTest, endsATagAtTheFirstGreaterThanSignEvenInsideAValue) {
    EXPECT_EQ(filtered("<a b=\"1>2\">"), "<a b=\"1>2&quot;&gt;");
}

TEST_F(CharacterFilterTest, turnsOtherCharactersIntoDecimalReferencesAnywhere) {
    EXPECT_EQ(filtered("<caf\u00E9 a='\u6F22'>\u00E9\u007F\u0080\uD7FF</x>"),
              "<caf&#233; a='&#28450;'>&#233;&#127;&#128;&#55295;</x>");
    EXPECT_FALSE(report.verdict().hasErrors);
}

TEST_F(CharacterFilterTest, removesEveryControlCharacterButTabAndLineBreaks) {
    for (int unit = 0; unit < 0x20; ++unit) {
        const std::string text = {'a', static_cast<char>(unit), 'b'};
        const bool isKept = unit == '\t' || unit == '\n' || unit == '\r';
        events = {};
        EXPECT_EQ(filtered(text), isKept ? text : "ab") << unit;
        EXPECT_EQ(events.calls, isKept ? Strings{"indeterminate"}
                                       : (Strings{"error: Invalid character at byte 1 removed.",
                                                  "indeterminate"}))
            << unit;
        EXPECT_EQ(report.verdict(), (Verdict{!isKept, !isKept}));
    }
}

TEST_F(CharacterFilterTest, removesTheWholeRangeFromTheSurrogatesUp) {
    EXPECT_EQ(filtered("a\uE000b\uF8FFc\uFB01d\uFEFFe\uFFFDf\uFFFFg"), "abcdefg");
    EXPECT_EQ(events.report(), (Strings{"error: Invalid character at byte 1 removed.",
                                        "error: Invalid character at byte 3 removed.",
                                        "error: Invalid character at byte 5 removed.",
                                        "error: Invalid character at byte 7 removed.",
                                        "error: Invalid character at byte 9 removed.",
                                        "error: Invalid character at byte 11 removed."}));
}

TEST_F(CharacterFilterTest, removesASurrogatePairWithTwoMessages) {
    EXPECT_EQ(filtered("\u00E9\U0001F600x\U00010000"), "&#233;x");
    EXPECT_EQ(events.report(), (Strings{"error: Invalid character at byte 1 removed.",
                                        "error: Invalid character at byte 2 removed.",
                                        "error: Invalid character at byte 4 removed.",
                                        "error: Invalid character at byte 5 removed."}));
}

TEST_F(CharacterFilterTest, marksTheFileAsRepairedEvenWhenAnEarlierStepHadGivenItUp) {
    report.giveUp();
    EXPECT_EQ(filter("\x01"), "");
    EXPECT_EQ(report.verdict(), (Verdict{true, true}));
}

TEST_F(CharacterFilterTest, keepsEverythingButLessThanSignsInsideCDATA) {
    const std::string kept = "\" ' & > \x01 \x7F \u00E9 \uE000 \U0001F600 ]]";
    EXPECT_EQ(filtered("<a><![CDATA[" + kept + "]]></a>"), "<a><![CDATA[" + kept + "]]></a>");
    EXPECT_EQ(filtered("<![CDATA[a<b<![CDATA[c]]>"), "<![CDATA[a&lt;b&lt;![CDATA[c]]>");
    EXPECT_FALSE(report.verdict().hasErrors);
}

TEST_F(CharacterFilterTest, isBackInTextBehindACDATASection) {
    EXPECT_EQ(filtered("<![CDATA[>]>]]>\"<a>'"), "<![CDATA[>]>]]>&quot;<a>&apos;");
}

TEST_F(CharacterFilterTest, endsACDATASectionWhoseEndSharesItsBrackets) {
    EXPECT_EQ(filtered("<![CDATA]]>\""), "<![CDATA]]>&quot;");
    EXPECT_EQ(filtered("<![CDATA[]]]>\""), "<![CDATA[]]]>&quot;");
}

TEST_F(CharacterFilterTest, doesNotRecogniseACDATASectionInTheLastEightUnits) {
    EXPECT_EQ(filtered("a<![CDATA"), "a<![CDATA");
    // As a tag, it has the non-ASCII character behind it escaped.
    EXPECT_EQ(filtered("a<![CDAT\u00E9"), "a<![CDAT&#233;");
    EXPECT_EQ(filtered("a<![CDATA\u00E9"), "a<![CDATA\u00E9");
    EXPECT_EQ(filtered("a<![cdata[\u00E9"), "a<![cdata[&#233;");
}

TEST_F(CharacterFilterTest, raisesForATextThatBeginsWithAnEmptyTag) {
    EXPECT_THROW(static_cast<void>(filter("<>")), platform::RangeException);
    EXPECT_THROW(static_cast<void>(filter("<><a/>")), platform::RangeException);
    EXPECT_EQ(events.calls, Strings{});
}

TEST_F(CharacterFilterTest, takesAnEmptyTagAnywhereElse) {
    EXPECT_EQ(filtered("a<>\""), "a<>&quot;");
    EXPECT_EQ(filtered("<a>"), "<a>");
    EXPECT_EQ(filtered(">"), "&gt;");
}

TEST_F(CharacterFilterTest, setsNoMaximumForATextOf512000Units) {
    // More bytes than units, so that it shows which of them are counted.
    const std::string text = "\u00E9" + std::string(511999, 'a');
    EXPECT_EQ(filtered(text).size(), 512005U);
    EXPECT_EQ(events.calls, Strings{"indeterminate"});
}

TEST_F(CharacterFilterTest, setsTheMaximumOfATextOf512001Units) {
    const std::string text = "\u00E9" + std::string(512000, 'a');
    EXPECT_EQ(filtered(text).size(), 512006U);
    EXPECT_EQ(events.calls, (Strings{"max: 512001", "indeterminate"}));
}

TEST_F(CharacterFilterTest, reportsIndexesThatAreNoMultiplesOf6144) {
    const std::string text = std::string(20000, 'a') + "\U0001F600<b>\u00E9</b>" +
                             std::string(50000, 'c') + "\x01" + std::string(3000, '"');
    EXPECT_FALSE(filtered(text).empty());
    const std::vector<std::int64_t>& values = events.progressValues;
    ASSERT_GT(values.size(), 4U);
    EXPECT_TRUE(std::is_sorted(values.begin(), values.end()));
    EXPECT_TRUE(std::none_of(values.begin(), values.end(),
                             [](std::int64_t value) { return value % 6144 == 0; }));
    EXPECT_EQ(values.back(), static_cast<std::int64_t>(test::unitsOf(text).size()) - 1);
    events = {};
    EXPECT_FALSE(filtered(std::string(6145, 'a')).empty());
    EXPECT_EQ(events.progressValues, std::vector<std::int64_t>{6143});
    events = {};
    EXPECT_FALSE(filtered(std::string(6144, 'a') + '\x01').empty());
    EXPECT_EQ(events.progressValues, std::vector<std::int64_t>{6143});
}

TEST_F(CharacterFilterTest, reportsARemovalBeforeItsOwnIndexAndAfterAllEarlierOnes) {
    const Filtering filtering = run(quickFilter, "ab\x01\U0001F600z");
    EXPECT_EQ(filtering.calls, (Strings{"finished: 0", "finished: 1", "removed: 2, bytes 2 to 3",
                                        "finished: 2", "removed: 3, bytes 3 to 7", "finished: 3",
                                        "removed: 4, bytes 3 to 7", "finished: 4", "finished: 5"}));
}

TEST_F(CharacterFilterTest, countsEachRemovalAndKeepsItsPlaceInTheFile) {
    EXPECT_EQ(filtered("<a>\n\u00E9\x01</a>"), "<a>\n&#233;</a>");
    EXPECT_EQ(report.findings().count("repair-character-removed"_rule), 1U);
    ASSERT_EQ(report.findings().kept().size(), 1U);
    const Place& where = report.findings().kept().front().where;
    EXPECT_EQ(where.line, 2U);
    EXPECT_EQ(where.column, 2U);
    EXPECT_EQ(where.offset, 7U);
    EXPECT_EQ(where.length, 1U);
}

TEST_F(CharacterFilterTest, leavesTheBarAsItIsWhenItIsCancelled) {
    events.cancelAtStep = "repair-character-removed";
    EXPECT_EQ(filter("a\x01z\x01z"), std::nullopt);
    EXPECT_EQ(events.calls, Strings{"error: Invalid character at byte 1 removed."});
    EXPECT_EQ(events.progressValues, std::vector<std::int64_t>{1});
}

TEST_F(CharacterFilterTest, hasItsResultWhenTheLastUnitIsTheOneThatCancels) {
    const Filtering filtering = run(quickFilter, "a\x01", 3);
    EXPECT_EQ(filtering.result, "a");
    EXPECT_EQ(filtering.calls, (Strings{"finished: 0", "removed: 1, bytes 1 to 2", "finished: 1"}));
}

std::optional<std::string> plainFilter(std::string_view text, CharacterFilterObserver& observer) {
    return test::referenceFilter(text, observer);
}

/// Random texts from pieces that mean something to the filter.
class RandomText {
  public:
    explicit RandomText(std::uint32_t seed) : random_(seed) {}

    std::string make(std::size_t pieces) {
        std::string text;
        for (std::size_t i = 0; i < pieces; ++i) {
            text += piece();
        }
        return text;
    }
    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
    }

  private:
    std::string piece() {
        static const Strings kPieces = {"<",          ">",          "&",
                                        ";",          "\"",         "'",
                                        "<![CDATA[",  "<![CDATA",   "<![CDAT",
                                        "]]>",        "]>",         "]",
                                        "<a>",        "</a>",       "<b c=\"",
                                        "/>",         "<!--",       "-->",
                                        "&amp;",      "&#233;",     "&#8364;",
                                        "\u00E9",     "\u0080",     "\u07FF",
                                        "\u0800",     "\uD7FF",     "\uE000",
                                        "\uFEFF",     "\uFFFD",     "\U00010000",
                                        "\U0001F600", "\U0010FFFF", "\x7F",
                                        "\t",         "\n",         "\r",
                                        " ",          "text",       "a longer piece of plain text"};
        switch (below(8)) {
            case 0:
                return std::string(1, static_cast<char>(below(0x20)));
            case 1:
                // A semicolon at each of the distances that matter.
                return "&" + std::string(below(8), "x<;\""[below(4)]) + ";";
            default:
                return kPieces[below(kPieces.size())];
        }
    }

    std::mt19937 random_;
};

TEST_F(CharacterFilterTest, doesWhatThePlainestFormDoesCallForCall) {
    for (std::uint32_t seed = 0; seed < 3000; ++seed) {
        RandomText random(seed);
        const std::string text = random.make(random.below(60));
        ASSERT_EQ(run(quickFilter, text), run(plainFilter, text))
            << "seed " << seed << ": " << text;
    }
}

TEST_F(CharacterFilterTest, isCancelledWhereThePlainestFormIs) {
    for (std::uint32_t seed = 0; seed < 200; ++seed) {
        RandomText random(seed);
        const std::string text = random.make(1 + random.below(30));
        const std::size_t calls = run(plainFilter, text).calls.size();
        for (std::size_t number = 1; number <= calls; ++number) {
            ASSERT_EQ(run(quickFilter, text, number), run(plainFilter, text, number))
                << "seed " << seed << ", call " << number << ": " << text;
        }
    }
}

TEST_F(CharacterFilterTest, doesWhatThePlainestFormDoesOverManyRounds) {
    for (std::uint32_t seed = 0; seed < 6; ++seed) {
        RandomText random(seed);
        const std::string text = random.make(8000);
        ASSERT_EQ(run(quickFilter, text), run(plainFilter, text)) << "seed " << seed;
    }
}

using StripInvalidCharsFromData = test::EngineTest;

TEST_F(StripInvalidCharsFromData, keepsExactlyThePrintableASCIIBytes) {
    std::string all;
    std::string printable;
    for (int byte = 0; byte < 256; ++byte) {
        all.push_back(static_cast<char>(byte));
        if (byte >= 0x20 && byte <= 0x7E) {
            printable.push_back(static_cast<char>(byte));
        }
    }
    EXPECT_EQ(stripInvalidCharsFromData(all + all), printable + printable);
}

TEST_F(StripInvalidCharsFromData, dropsAMultiByteCharacterWhole) {
    EXPECT_EQ(stripInvalidCharsFromData("caf\u00E9\t\r\n\U0001F600!"), "caf!");
}

TEST_F(StripInvalidCharsFromData, yieldsAnEmptyBufferForAnEmptyOne) {
    EXPECT_EQ(stripInvalidCharsFromData(""), "");
}

}  // namespace
}  // namespace vornic
