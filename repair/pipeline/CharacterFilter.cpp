#include "repair/pipeline/CharacterFilter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <vector>

#include "base/Exception.h"
#include "base/FormatString.h"
#include "base/Text.h"
#include "base/Utf8.h"
#include "platform/processes/LargePages.h"
#include "repair/pipeline/SpecialBytes.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

// The bar needs no maximum for texts that are filtered in no time.
constexpr std::size_t kLengthThatNeedsAMaximum = 512001;
// The bar is told every index but the multiples of this one.
constexpr std::int64_t kSilentInterval = 6144;
// How many bytes may pass before the observer is asked and told again.
constexpr std::ptrdiff_t kBytesPerRound = 16384;
// How far behind an ampersand the semicolon of a reference may stand.
constexpr int kReferenceReach = 6;

constexpr std::string_view kCDATAStart = "<![CDATA";
constexpr std::string_view kCDATAEnd = "]]>";

bool isPrintableASCII(unsigned char byte) {
    return byte >= 0x20 && byte <= 0x7E;
}

std::string_view referenceTo(unsigned char markup) {
    switch (markup) {
        case '"':
            return "&quot;";
        case '\'':
            return "&apos;";
        case '>':
            return "&gt;";
        default:
            return "&amp;";
    }
}

struct Character {
    std::uint32_t codePoint = 0;
    int bytes = 1;
    int units = 1;
};

constexpr Character kOneByte;

Character decode(const unsigned char* at) {
    const Utf8Character read = wellFormedUtf8At(reinterpret_cast<const char*>(at));
    return {read.code, static_cast<int>(read.length), read.length == 4 ? 2 : 1};
}

bool isRemoved(std::uint32_t codePoint) {
    const bool isSpace = codePoint == '\t' || codePoint == '\n' || codePoint == '\r';
    return (codePoint < 0x20 && !isSpace) || codePoint >= 0xD800;
}

// Moves what a reading tells of a text to where it is in the filtered text, as long as that has the
// same markup: only text between tags has changed, and into references to the same characters.
class MovedReading {
  public:
    // @param reading of the text, which is well-formed; null for none
    MovedReading(const unsigned char* begin, XMLReading* reading)
        : begin_(begin), reading_(reading), isSame_(reading != nullptr) {}

    [[nodiscard]] bool isThere() const { return reading_ != nullptr; }
    // Whether the reading is that of the filtered text.
    [[nodiscard]] bool isSame() const { return isSame_; }
    void giveUp() { isSame_ = false; }

    void opened(const unsigned char* markup) {
        markup_ = markup;
        quote_ = '\0';
    }
    // A quote in the markup that was opened last.
    void passQuote(unsigned char quote) {
        if (quote_ == '\0' || quote_ == quote) {
            quote_ = quote_ == '\0' ? quote : '\0';
        }
    }
    // What the filter takes for the end of that markup.
    void closed(const unsigned char* end) { isSame_ = isSame_ && isEnd(end); }

    void replaced(const unsigned char* character, std::size_t length, std::size_t newLength) {
        if (isSame_) {
            moveUpTo(static_cast<std::size_t>(character - begin_));
            growth_ += newLength - length;
        }
    }
    void finish() {
        if (isSame_) {
            moveUpTo(std::string_view::npos);
        }
    }

  private:
    [[nodiscard]] bool isEnd(const unsigned char* end) const {
        constexpr std::string_view kEmptyComment = "<!---->";
        const auto length = static_cast<std::size_t>(end + 1 - markup_);
        const std::string_view markup(reinterpret_cast<const char*>(markup_), length);
        if (markup.starts_with("<!--")) {
            return length >= kEmptyComment.size() && markup.ends_with("-->");
        }
        return markup.starts_with("<?") ? markup.ends_with("?>") : quote_ == '\0';
    }

    void moveUpTo(std::size_t offset) {
        moveUpTo(offset, reading_->emptyPairs, nextPair_);
        moveUpTo(offset, reading_->referencedBlanks, nextBlank_);
    }
    void moveUpTo(std::size_t offset, std::vector<std::size_t>& places, std::size_t& next) const {
        for (; next < places.size() && places[next] < offset; ++next) {
            places[next] += growth_;
        }
    }

    const unsigned char* begin_;
    XMLReading* reading_;
    bool isSame_;
    const unsigned char* markup_ = nullptr;
    unsigned char quote_ = '\0';
    std::size_t growth_ = 0;
    std::size_t nextPair_ = 0;
    std::size_t nextBlank_ = 0;
};

class Scan {
  public:
    Scan(std::string_view text, CharacterFilterObserver& observer, XMLReading* reading = nullptr)
        : observer_(observer),
          begin_(reinterpret_cast<const unsigned char*>(text.data())),
          end_(begin_ + text.size()),
          specialBytes_(begin_, end_),
          at_(begin_),
          uncopied_(begin_),
          roundEnd_(begin_),
          reading_(begin_, reading) {}

    std::optional<FilteredText> run() {
        while (at_ < end_) {
            if (observer_.isCancelled()) {
                return std::nullopt;
            }
            roundEnd_ = at_ + std::min(end_ - at_, kBytesPerRound);
            takeRound();
            if (cancelled_ || !tellFinished()) {
                return std::nullopt;
            }
        }
        reading_.finish();
        if (uncopied_ == begin_) {
            return FilteredText{.isRead = reading_.isThere()};
        }
        copyPassed();
        return FilteredText{true, reading_.isSame(), std::move(output_)};
    }

    // Where in the text the byte of the output comes from.
    std::size_t originOf(std::size_t filteredOffset) {
        keepsOutput_ = false;
        for (;;) {
            at_ = specialBytes_.firstFrom(at_);
            const std::size_t kept = written_ + static_cast<std::size_t>(at_ - uncopied_);
            if (filteredOffset < kept) {
                return offsetOf(uncopied_) + (filteredOffset - written_);
            }
            if (at_ == end_) {
                return offsetOf(end_);
            }
            const unsigned char* const character = at_;
            takeCharacter();
            if (at_ == character) {  // a removal waits until all before it is told
                static_cast<void>(tellFinished());
            }
            written_ += output_.size();
            output_.clear();
            if (filteredOffset < written_) {
                return offsetOf(character);
            }
        }
    }

  private:
    [[nodiscard]] std::size_t offsetOf(const unsigned char* place) const {
        return static_cast<std::size_t>(place - begin_);
    }

    void takeRound() {
        while (at_ < roundEnd_) {
            at_ = std::min(specialBytes_.firstFrom(at_), roundEnd_);
            if (at_ < roundEnd_) {
                takeCharacter();
            }
        }
    }

    void takeCharacter() {
        if (inTag_ || inCDATA_) {
            takeInMarkup();
        } else {
            takeInText();
        }
    }

    void takeInMarkup() {
        if (*at_ == '>') {
            closeMarkup();
        } else if (*at_ == '<') {
            reading_.giveUp();
            replace(kOneByte, "&lt;");
        } else if (inCDATA_ || isPrintableASCII(*at_)) {
            if (*at_ == '"' || *at_ == '\'') {
                reading_.passQuote(*at_);
            }
            pass(decode(at_));
        } else {
            reading_.giveUp();
            classify();
        }
    }

    void takeInText() {
        if (*at_ == '<') {
            openMarkup();
        } else if (*at_ == '&' && beginsReference()) {
            pass(kOneByte);
        } else if (isPrintableASCII(*at_)) {
            if (*at_ == '&') {
                reading_.giveUp();
            }
            replace(kOneByte, referenceTo(*at_));
        } else {
            classify();
        }
    }

    void openMarkup() {
        inTag_ = true;
        reading_.opened(at_);
        inCDATA_ = static_cast<std::size_t>(end_ - at_) > kCDATAStart.size() &&
                   std::equal(kCDATAStart.begin(), kCDATAStart.end(), at_);
        pass(kOneByte);
    }

    void closeMarkup() {
        if (index() < 2) {
            throw platform::RangeException(formatString(
                "a range of 3 characters at index %lli lies outside the text", index() - 2));
        }
        inTag_ = false;
        if (!inCDATA_) {
            reading_.closed(at_);
        }
        inCDATA_ = inCDATA_ && !std::equal(kCDATAEnd.begin(), kCDATAEnd.end(), at_ - 2);
        pass(kOneByte);
    }

    // A character that is no plain ASCII, outside CDATA.
    void classify() {
        const Character character = decode(at_);
        if (isRemoved(character.codePoint)) {
            removeInRoundOfItsOwn(character);
            return;
        }
        std::array<char, 16> reference{'&', '#'};
        char* last = std::to_chars(reference.data() + 2, reference.data() + reference.size() - 1,
                                   character.codePoint)
                         .ptr;
        *last++ = ';';
        replace(character, {reference.data(), static_cast<std::size_t>(last - reference.data())});
    }

    // The observer is asked and told just before and just after a removal, which it may answer with
    // a cancellation.
    void removeInRoundOfItsOwn(const Character& character) {
        roundEnd_ = at_;
        reading_.giveUp();
        if (firstUntold_ < index()) {
            return;
        }
        const TextSpan bytes{offsetOf(at_), static_cast<std::size_t>(character.bytes)};
        observer_.removedUnit(firstUntold_, bytes);
        if (character.units == 2) {
            static_cast<void>(observer_.finishedUnits(firstUntold_, firstUntold_));
            ++firstUntold_;
            cancelled_ = observer_.isCancelled();
            if (cancelled_) {
                return;
            }
            observer_.removedUnit(firstUntold_, bytes);
        }
        replace(character, "");
        roundEnd_ = at_;
    }

    // What is kept as it is waits to be copied together with its neighbours.
    void pass(const Character& character) {
        at_ += character.bytes;
        surplusBytes_ += character.bytes - character.units;
    }

    void replace(const Character& character, std::string_view replacement) {
        reserveOutput();
        copyPassed();
        reading_.replaced(at_, static_cast<std::size_t>(character.bytes), replacement.size());
        output_.append(replacement);
        pass(character);
        uncopied_ = at_;
    }

    // A text that nothing is changed in needs no other. Memory that is reserved and never written
    // costs nothing; a second allocation would.
    void reserveOutput() {
        if (uncopied_ == begin_ && keepsOutput_) {
            platform::reserveInLargePages(
                output_, static_cast<std::size_t>(end_ - begin_) / 4 * 5 + kBytesPerRound);
        }
    }

    void copyPassed() {
        output_.append(reinterpret_cast<const char*>(uncopied_),
                       static_cast<std::size_t>(at_ - uncopied_));
    }

    [[nodiscard]] bool beginsReference() const {
        const unsigned char* at = at_;
        for (int units = 0; at < end_ && units < kReferenceReach;) {
            if (*at == ';') {
                return true;
            }
            const Character character = decode(at);
            at += character.bytes;
            units += character.units;
        }
        return false;
    }

    [[nodiscard]] std::int64_t index() const { return at_ - begin_ - surplusBytes_; }

    [[nodiscard]] bool tellFinished() {
        const std::int64_t first = firstUntold_;
        firstUntold_ = index();
        return first == firstUntold_ || observer_.finishedUnits(first, firstUntold_ - 1);
    }

    CharacterFilterObserver& observer_;
    const unsigned char* begin_;
    const unsigned char* end_;
    SpecialBytes specialBytes_;
    const unsigned char* at_;
    // Everything before is in the output.
    const unsigned char* uncopied_;
    const unsigned char* roundEnd_;
    MovedReading reading_;
    std::string output_;
    bool keepsOutput_ = true;
    // How much of the output `originOf` has thrown away.
    std::size_t written_ = 0;
    // How many bytes more than UTF-16 units lie before `at_`.
    std::int64_t surplusBytes_ = 0;
    std::int64_t firstUntold_ = 0;
    bool inTag_ = false;
    bool inCDATA_ = false;
    bool cancelled_ = false;
};

// For who wants to know nothing but the result.
class SilentObserver : public CharacterFilterObserver {
  public:
    bool isCancelled() override { return false; }
    void removedUnit(std::int64_t /*index*/, TextSpan /*character*/) override {}
    bool finishedUnits(std::int64_t /*first*/, std::int64_t /*last*/) override { return true; }
};

class ReportingObserver : public CharacterFilterObserver {
  public:
    ReportingObserver(SourcePlaces& places, RepairReport& report, const StopToken& stop)
        : places_(places), report_(report), stop_(stop) {}

    bool isCancelled() override { return stop_.stopRequested(); }

    void removedUnit(std::int64_t index, TextSpan character) override {
        const std::int64_t sourceIndex = places_.sourceIndex(index, character.offset);
        // The line has room for a 32-bit number.
        report_.add("repair-character-removed"_rule, FindingEffect::removed, character, places_,
                    {{"index", static_cast<std::int32_t>(sourceIndex)}});
    }

    bool finishedUnits(std::int64_t first, std::int64_t last) override {
        // Nobody can see the values in between.
        const std::int64_t latest = last % kSilentInterval == 0 ? last - 1 : last;
        if (latest >= first) {
            report_.events().progressValue(latest);
        }
        return true;
    }

  private:
    SourcePlaces& places_;
    RepairReport& report_;
    const StopToken& stop_;
};

}  // namespace

std::optional<FilteredText> filterInvalidCharacters(std::string_view text,
                                                    CharacterFilterObserver& observer,
                                                    XMLReading* reading) {
    return Scan(text, observer, reading).run();
}

bool isRemovedByFilter(std::string_view piece) {
    for (std::size_t at = 0; at < piece.size();) {
        const Utf8Character character = utf8CharacterAt(piece, at);
        if (!isRemoved(character.code)) {
            return false;
        }
        at += character.length;
    }
    return true;
}

std::size_t originOfFilteredOffset(std::string_view text, std::size_t filteredOffset) {
    SilentObserver observer;
    return Scan(text, observer).originOf(filteredOffset);
}

std::optional<FilteredText> filterInvalidCharsInString(SourcePlaces& places, RepairReport& report,
                                                       const StopToken& stop, XMLReading* reading) {
    if (stop.stopRequested()) {
        return std::nullopt;
    }
    report.log("repair-filtering-text"_rule);
    const std::string_view text = places.text();
    if (text.size() >= kLengthThatNeedsAMaximum) {
        const std::size_t length = utf16Length(text);
        if (length >= kLengthThatNeedsAMaximum) {
            report.events().progressMaximum(static_cast<std::int64_t>(length));
        }
    }
    ReportingObserver observer(places, report, stop);
    std::optional<FilteredText> filtered = filterInvalidCharacters(text, observer, reading);
    if (filtered) {
        report.events().progressIsBusy();
    }
    return filtered;
}

std::string stripInvalidCharsFromData(std::string_view data) {
    std::string kept(data);
    kept.erase(std::remove_if(
                   kept.begin(), kept.end(),
                   [](char byte) { return !isPrintableASCII(static_cast<unsigned char>(byte)); }),
               kept.end());
    return kept;
}

}  // namespace vornic
