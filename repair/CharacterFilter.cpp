#include "repair/CharacterFilter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>

#include "foundation/FormatString.h"
#include "foundation/QMLog.h"
#include "foundation/Text.h"
#include "platform/Exception.h"

namespace vornic {

namespace {

// The bar needs no maximum for texts that are filtered in no time.
constexpr std::size_t kLengthThatNeedsAMaximum = 512001;
// The bar is told every index but the multiples of this one.
constexpr std::int64_t kSilentInterval = 6144;
// How many units may pass before the observer is asked and told again.
constexpr std::int64_t kUnitsPerRound = 4096;
// How far behind an ampersand the semicolon of a reference may stand.
constexpr int kReferenceReach = 6;

constexpr std::string_view kCDATAStart = "<![CDATA";
constexpr std::string_view kCDATAEnd = "]]>";

// What a byte means in one of the three states of the scan.
using ByteTable = std::array<bool, 256>;

constexpr bool isKeptASCII(unsigned byte) {
    return byte == '\t' || byte == '\n' || byte == '\r' || (byte >= 0x20 && byte <= 0x7E);
}

// Bytes that are copied as they are, without a look at anything else.
constexpr ByteTable plainBytes(std::string_view special) {
    ByteTable table{};
    for (unsigned byte = 0; byte < table.size(); ++byte) {
        table[byte] = isKeptASCII(byte) && special.find(static_cast<char>(byte)) == special.npos;
    }
    return table;
}

constexpr ByteTable plainBytesInCDATA() {
    ByteTable table{};
    for (unsigned byte = 0; byte < 0x80; ++byte) {
        table[byte] = byte != '<' && byte != '>';
    }
    return table;
}

constexpr ByteTable kPlainInText = plainBytes("<>&\"'");
constexpr ByteTable kPlainInTag = plainBytes("<>");
constexpr ByteTable kPlainInCDATA = plainBytesInCDATA();

struct Character {
    std::uint32_t codePoint = 0;
    int bytes = 1;
    int units = 1;
};

Character decode(const unsigned char* at) {
    if (*at < 0x80) {
        return {*at, 1, 1};
    }
    if (*at < 0xE0) {
        return {((at[0] & 0x1FU) << 6U) | (at[1] & 0x3FU), 2, 1};
    }
    if (*at < 0xF0) {
        return {((at[0] & 0x0FU) << 12U) | ((at[1] & 0x3FU) << 6U) | (at[2] & 0x3FU), 3, 1};
    }
    return {((at[0] & 0x07U) << 18U) | ((at[1] & 0x3FU) << 12U) | ((at[2] & 0x3FU) << 6U) |
                (at[3] & 0x3FU),
            4, 2};
}

class Scan {
  public:
    Scan(std::string_view text, CharacterFilterObserver& observer)
        : observer_(observer),
          begin_(reinterpret_cast<const unsigned char*>(text.data())),
          at_(begin_),
          end_(begin_ + text.size()) {
        // Memory that is reserved and never written costs nothing; a second allocation would.
        output_.reserve(text.size() * 2);
    }

    std::optional<std::string> run() {
        while (at_ < end_) {
            if (observer_.isCancelled()) {
                return std::nullopt;
            }
            const std::int64_t roundEnd = index_ + kUnitsPerRound;
            while (at_ < end_ && index_ < roundEnd && !stopped_) {
                copyPlainRun(roundEnd);
                if (at_ < end_ && index_ < roundEnd) {
                    takeCharacter();
                }
            }
            tellFinished();
            if (stopped_) {
                return std::nullopt;
            }
        }
        return std::move(output_);
    }

  private:
    void copyPlainRun(std::int64_t roundEnd) {
        const ByteTable& plain = inCDATA_ ? kPlainInCDATA : (inTag_ ? kPlainInTag : kPlainInText);
        const unsigned char* limit = at_ + std::min<std::ptrdiff_t>(end_ - at_, roundEnd - index_);
        const unsigned char* start = at_;
        while (at_ < limit && plain[*at_]) {
            ++at_;
        }
        output_.append(reinterpret_cast<const char*>(start), static_cast<std::size_t>(at_ - start));
        index_ += at_ - start;
    }

    void takeCharacter() {
        if (inTag_ || inCDATA_) {
            takeInMarkup();
        } else {
            takeInText();
        }
    }

    void takeInMarkup() {
        if (*at_ == '<') {
            replaceByte("&lt;");
        } else if (*at_ == '>') {
            closeMarkup();
        } else if (inCDATA_) {
            keepCharacter();
        } else {
            classify();
        }
    }

    void takeInText() {
        switch (*at_) {
            case '"':
                return replaceByte("&quot;");
            case '\'':
                return replaceByte("&apos;");
            case '>':
                return replaceByte("&gt;");
            case '&':
                return replaceByte(beginsReference() ? "&" : "&amp;");
            case '<':
                return openMarkup();
            default:
                return classify();
        }
    }

    void openMarkup() {
        inTag_ = true;
        inCDATA_ = static_cast<std::size_t>(end_ - at_) > kCDATAStart.size() &&
                   std::equal(kCDATAStart.begin(), kCDATAStart.end(), at_);
        replaceByte("<");
    }

    void closeMarkup() {
        if (index_ < 2) {
            throw platform::RangeException(formatString(
                "a range of 3 characters at index %lli lies outside the text", index_ - 2));
        }
        inTag_ = false;
        if (std::equal(kCDATAEnd.begin(), kCDATAEnd.end(), at_ - 2)) {
            inCDATA_ = false;
        }
        replaceByte(">");
    }

    // A character that is no plain ASCII, outside CDATA.
    void classify() {
        const Character character = decode(at_);
        if (character.codePoint < 0x20 || character.codePoint >= 0xD800) {
            remove(character);
            return;
        }
        std::array<char, 12> digits;
        char* const last =
            std::to_chars(digits.data(), digits.data() + digits.size(), character.codePoint).ptr;
        output_.append("&#");
        output_.append(digits.data(), last);
        output_.push_back(';');
        pass(character);
    }

    void remove(const Character& character) {
        at_ += character.bytes;
        for (int unit = 0; unit < character.units && !stopped_; ++unit) {
            tellFinished();
            observer_.removedUnit(index_);
            ++index_;
            stopped_ = observer_.isCancelled();
        }
    }

    void keepCharacter() {
        const Character character = decode(at_);
        output_.append(reinterpret_cast<const char*>(at_),
                       static_cast<std::size_t>(character.bytes));
        pass(character);
    }

    void replaceByte(std::string_view replacement) {
        output_.append(replacement);
        ++at_;
        ++index_;
    }

    void pass(const Character& character) {
        at_ += character.bytes;
        index_ += character.units;
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

    void tellFinished() {
        if (firstUntold_ < index_) {
            observer_.finishedUnits(firstUntold_, index_ - 1);
            firstUntold_ = index_;
        }
    }

    CharacterFilterObserver& observer_;
    const unsigned char* begin_;
    const unsigned char* at_;
    const unsigned char* end_;
    std::string output_;
    std::int64_t index_ = 0;
    std::int64_t firstUntold_ = 0;
    bool inTag_ = false;
    bool inCDATA_ = false;
    bool stopped_ = false;
};

class HostObserver : public CharacterFilterObserver {
  public:
    explicit HostObserver(RepairHost& host) : host_(host) {}

    bool isCancelled() override { return host_.progressCancelled(); }

    void removedUnit(std::int64_t index) override {
        host_.appendErrorInfoText(formatString("Invalid character at byte %i removed.", index));
        host_.setFileHasErrs(true);
        host_.setFileWasRepaired(true);
    }

    void finishedUnits(std::int64_t first, std::int64_t last) override {
        host_.setProgressValues(first, last, kSilentInterval);
    }

  private:
    RepairHost& host_;
};

}  // namespace

std::optional<std::string> filterInvalidCharacters(std::string_view text,
                                                   CharacterFilterObserver& observer) {
    return Scan(text, observer).run();
}

std::optional<std::string> filterInvalidCharsInString(RepairHost& host, std::string_view text) {
    if (host.progressCancelled()) {
        return std::nullopt;
    }
    QMLog::appendLog("Filtering invalid characters from string...");
    const std::size_t length = utf16Length(text);
    if (length >= kLengthThatNeedsAMaximum) {
        host.setProgressMax(static_cast<std::int64_t>(length));
    }
    HostObserver observer(host);
    std::optional<std::string> filtered = filterInvalidCharacters(text, observer);
    if (filtered) {
        host.setIndeterminateProgress();
    }
    return filtered;
}

std::string stripInvalidCharsFromData(std::string_view data) {
    QMLog::appendLog("Stripping invalid characters from data...");
    std::string kept;
    kept.reserve(data.size());
    std::copy_if(data.begin(), data.end(), std::back_inserter(kept),
                 [](char byte) { return byte >= 0x20 && byte <= 0x7E; });
    return kept;
}

}  // namespace vornic
