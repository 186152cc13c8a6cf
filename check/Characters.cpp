#include "check/Characters.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

#include "base/Utf8.h"
#include "xml/text/NumberReference.h"
#include "xml/text/XMLCharacters.h"

namespace vornic {

namespace {

using std::string_view;

constexpr string_view kCDATAStart = "<![CDATA";
constexpr string_view kCDATAEnd = "]]>";
// The longest reference that the filter of a repair takes for one, from & to the semicolon.
constexpr std::size_t kLongestKnownReference = 6;

constexpr char32_t kFirstRemoved = 0xE000;
constexpr char32_t kByteOrderMark = 0xFEFF;
constexpr char32_t kDelete = 0x7F;
constexpr char32_t kFirstControl = 0x80;
constexpr char32_t kLastControl = 0x9F;
constexpr char32_t kNextLine = 0x85;

// What the numbers from 0x80 on are in Windows-1252, from which they mostly come; 0 for none.
constexpr std::array<char16_t, 32> kWindowsCharacters = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

bool isControl(char32_t c) {
    return c == kDelete || (c >= kFirstControl && c <= kLastControl && c != kNextLine);
}

class Scan {
  public:
    Scan(string_view text, std::size_t root, Findings& findings)
        : text_(text), root_(root), findings_(findings) {}

    void run() {
        for (at_ = nextStop(0); at_ < text_.size(); at_ = nextStop(at_)) {
            takeStop();
        }
    }

  private:
    static constexpr auto kStops = [] {
        std::array<bool, 256> stops{};
        stops['<'] = stops['>'] = stops['&'] = stops[0x7F] = stops[0xC2] = true;
        std::fill(stops.begin() + 0xEE, stops.end(), true);
        return stops;
    }();

    [[nodiscard]] std::size_t nextStop(std::size_t from) const {
        while (from < text_.size() && !kStops[static_cast<unsigned char>(text_[from])]) {
            ++from;
        }
        return from;
    }

    void takeStop() {
        switch (text_[at_]) {
            case '<':
                return openMarkup();
            case '>':
                return closeMarkup();
            case '&':
                return takeReference();
            default:
                return takeCharacter();
        }
    }

    void openMarkup() {
        if (!inTag_ && !inCDATA_) {
            inTag_ = true;
            inCDATA_ = text_.size() - at_ > kCDATAStart.size() &&
                       text_.substr(at_).starts_with(kCDATAStart);
        }
        ++at_;
    }

    void closeMarkup() {
        inTag_ = false;
        inCDATA_ = inCDATA_ && (at_ < 2 || text_.substr(at_ - 2, 3) != kCDATAEnd);
        ++at_;
    }

    void takeReference() {
        const NumberReference reference = numberReferenceAt(text_.substr(at_));
        if (reference.length == 0 || inCDATA_) {
            ++at_;
            return;
        }
        const NumberReference next = numberReferenceAt(text_.substr(at_ + reference.length));
        const bool isPair = reference.isFirstHalf() && next.isSecondHalf();
        const char32_t character = isPair ? characterOf(reference, next) : reference.number;
        const TextSpan place{at_, reference.length + (isPair ? next.length : 0)};
        at_ += place.length;
        if (isControl(character)) {
            addControl(place, character);
        } else if (!inTag_ && place.length > kLongestKnownReference &&
                   xmlchars::isAllowed(character)) {
            addLongReference(place, character);
        }
    }

    void addLongReference(TextSpan place, char32_t character) {
        Finding* const finding = findings_.add("characters-long-reference"_rule, place);
        if (finding == nullptr) {
            return;
        }
        finding->arguments = {{"reference", std::string(place.of(text_))}};
        // Others would be markup, or would be taken out instead.
        if (character > kLastControl && character < kFirstRemoved) {
            finding->mend = Mend{Confidence::ask,
                                 "write the character itself",
                                 {{place.offset, place.length, utf8(character)}}};
        }
    }

    void takeCharacter() {
        const char* const start = text_.data() + at_;
        const xmlchars::Decoded decoded = xmlchars::decode(start, text_.data() + text_.size());
        const TextSpan place{at_, std::max<std::size_t>(decoded.length, 1)};
        const char32_t character = decoded.character;
        at_ += place.length;
        if (isControl(character)) {
            return addControl(place, character);
        }
        const bool isTold = character == kByteOrderMark && place.offset < root_;
        if (character < kFirstRemoved || !xmlchars::isAllowed(character) || inCDATA_ || isTold) {
            return;
        }
        if (Finding* const finding = findings_.add("characters-removed-by-repair"_rule, place)) {
            finding->arguments = {{"character", std::string(place.of(text_))},
                                  {"code", codePointName(character)}};
        }
    }

    void addControl(TextSpan place, char32_t character) {
        Finding* const finding = findings_.add("characters-control"_rule, place);
        if (finding == nullptr) {
            return;
        }
        const char16_t meant =
            character == kDelete ? u'\0' : kWindowsCharacters.at(character - kFirstControl);
        const std::string right = meant == 0 ? std::string() : utf8(meant);
        finding->arguments = {{"code", codePointName(character)},
                              {"right", right.empty() ? "go" : "perhaps be " + right}};
        finding->mend = Mend{Confidence::ask,
                             right.empty() ? "take the character out" : "write " + right,
                             {{place.offset, place.length, right}}};
    }

    static std::string utf8(char32_t character) {
        std::string text;
        appendUtf8(text, character);
        return text;
    }

    string_view text_;
    std::size_t root_;
    Findings& findings_;
    std::size_t at_ = 0;
    // As the filter of a repair sees it: a comment ends with its first >.
    bool inTag_ = false;
    bool inCDATA_ = false;
};

}  // namespace

bool hasOddCharacters(string_view text) {
    // Loops of one length that compilers turn into vector instructions: no branch, and a result as
    // narrow as a byte.
    constexpr std::size_t kBlock = 4096;
    std::array<char, kBlock + 1> rest{};
    for (std::size_t start = 0; start < text.size(); start += kBlock) {
        const char* bytes = text.data() + start;
        if (text.size() - start <= kBlock) {
            rest.fill(' ');
            std::copy(bytes, text.data() + text.size(), rest.begin());
            bytes = rest.data();
        }
        std::uint8_t found = 0;
        for (std::size_t at = 0; at < kBlock; ++at) {
            const auto value = static_cast<unsigned char>(bytes[at]);
            const bool isReference = (bytes[at] == '&') & (bytes[at + 1] == '#');
            found |= static_cast<std::uint8_t>((value >= 0xEE) | (value == 0x7F) | (value == 0xC2) |
                                               isReference);
        }
        if (found != 0) {
            return true;
        }
    }
    return false;
}

bool checkCharacters(string_view text, std::size_t root, Findings& findings) {
    const bool isOdd = hasOddCharacters(text);
    if (isOdd) {
        Scan(text, root, findings).run();
    }
    return isOdd;
}

}  // namespace vornic
