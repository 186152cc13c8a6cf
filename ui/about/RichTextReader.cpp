#include "ui/about/RichTextReader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "base/ASCII.h"
#include "base/StringEncoding.h"
#include "base/Utf8.h"

namespace vornic {
namespace {

constexpr std::string_view kBegin = R"({\rtf)";
constexpr unsigned kDefaultHalfPoints = 24;
constexpr unsigned kLargestHalfPoints = 2 * 1638;

/// Groups that hold something else than the text.
constexpr std::array<std::string_view, 17> kDestinations{
    "annotation", "colortbl", "filetbl", "fldinst",  "fonttbl",   "footer",
    "footerf",    "footerl",  "footerr", "footnote", "header",    "headerf",
    "headerl",    "headerr",  "info",    "pict",     "stylesheet"};

/// Words that stand for a character.
constexpr std::array<std::pair<std::string_view, std::string_view>, 18> kCharacterWords{{
    {"par", "\n"},
    {"line", "\n"},
    {"sect", "\n"},
    {"page", "\n"},
    {"row", "\n"},
    {"tab", "\t"},
    {"cell", "\t"},
    {"emdash", "\u2014"},
    {"endash", "\u2013"},
    {"emspace", "\u2003"},
    {"enspace", "\u2002"},
    {"qmspace", "\u2005"},
    {"bullet", "\u2022"},
    {"lquote", "\u2018"},
    {"rquote", "\u2019"},
    {"ldblquote", "\u201C"},
    {"rdblquote", "\u201D"},
    {"zwnj", "\u200C"},
}};

/// The characters of the bytes 0x80 to 0xFF, each in UTF-8.
using UpperHalf = std::array<std::string, 128>;

UpperHalf upperHalfOf(platform::StringEncoding encoding) {
    UpperHalf characters;
    for (std::size_t index = 0; index < characters.size(); ++index) {
        const char byte = static_cast<char>(index + 0x80);
        characters.at(index) =
            platform::decodeString(std::string_view(&byte, 1), encoding).value_or("\uFFFD");
    }
    return characters;
}

/// The encoding that the number of an ANSI code page stands for.
platform::StringEncoding codePage(std::int32_t number) {
    switch (number) {
        case 1250:
            return platform::StringEncoding::windowsLatin2;
        case 1251:
            return platform::StringEncoding::windowsCyrillic;
        case 1253:
            return platform::StringEncoding::windowsGreek;
        case 1254:
            return platform::StringEncoding::windowsTurkish;
        case 10000:
            return platform::StringEncoding::macRoman;
        default:
            return platform::StringEncoding::windowsLatin1;
    }
}

/// A word behind a backslash and the number behind it.
struct ControlWord {
    std::string_view name;
    std::optional<std::int32_t> number;
    /// For words that switch something on and, with a 0, off.
    [[nodiscard]] bool isOn() const { return number.value_or(1) != 0; }
};

/// What holds inside a group.
struct Group {
    std::uint16_t halfPoints = kDefaultHalfPoints;
    /// How many characters stand behind a Unicode escape for readers that do not know it.
    std::uint16_t fallbackLength = 1;
    bool isBold = false;
    bool isItalic = false;
    bool isHidden = false;
    bool isIgnored = false;
};

class Reader {
  public:
    explicit Reader(std::string_view rtf) : text_(rtf) {}

    std::vector<StyledRun> read() {
        do {
            readNext();
        } while (!groups_.empty() && position_ < text_.size());
        endSurrogate();
        return std::move(runs_);
    }

  private:
    void readNext() {
        const char character = text_[position_++];
        switch (character) {
            case '{':
                openGroup();
                return;
            case '}':
                closeGroup();
                return;
            case '\\':
                readControl();
                return;
            case '\r':
            case '\n':
            case '\0':
                return;
            default:
                readByte(character);
        }
    }

    void openGroup() {
        endSurrogate();
        fallbackLeft_ = 0;
        groups_.push_back(groups_.empty() ? Group{} : groups_.back());
        isAtGroupStart_ = true;
    }

    void closeGroup() {
        endSurrogate();
        fallbackLeft_ = 0;
        groups_.pop_back();
    }

    void readControl() {
        if (position_ >= text_.size()) {
            return;
        }
        if (isLetter(text_[position_])) {
            const ControlWord word = readWord();
            // The data behind this word is no text, even where the word is a fallback.
            if (word.name == "bin") {
                skipBytes(word.number.value_or(0));
            }
            if (!isFallback()) {
                performWord(word);
            }
            return;
        }
        const char symbol = text_[position_++];
        if (symbol == '\'') {
            readHexByte();
        } else if (!isFallback()) {
            performSymbol(symbol);
        }
    }

    ControlWord readWord() {
        const std::size_t begin = position_;
        while (position_ < text_.size() && isLetter(text_[position_])) {
            ++position_;
        }
        ControlWord word{.name = text_.substr(begin, position_ - begin), .number = readNumber()};
        if (position_ < text_.size() && text_[position_] == ' ') {
            ++position_;
        }
        return word;
    }

    std::optional<std::int32_t> readNumber() {
        std::size_t end = position_;
        if (end < text_.size() && text_[end] == '-') {
            ++end;
        }
        const std::size_t digits = end;
        while (end < text_.size() && isDigit(text_[end])) {
            ++end;
        }
        if (end == digits) {
            return std::nullopt;
        }
        std::int32_t number = 0;
        const auto result = std::from_chars(text_.data() + position_, text_.data() + end, number);
        position_ = end;
        return result.ec == std::errc() ? number : 0;
    }

    void skipBytes(std::int32_t count) {
        const auto wanted = static_cast<std::size_t>(std::max(count, 0));
        position_ += std::min(wanted, text_.size() - position_);
    }

    void performSymbol(char symbol) {
        switch (symbol) {
            case '*':
                groups_.back().isIgnored = true;
                return;
            case '\n':
            case '\r':
                append("\n");
                return;
            case '\t':
                append("\t");
                return;
            case '~':
                append("\u00A0");
                return;
            case '_':
                append("\u2011");
                return;
            case '\\':
            case '{':
            case '}':
                append(std::string_view(&symbol, 1));
                return;
            default:
                // A hyphen that shows only at the end of a line, and marks of indexes.
                return;
        }
    }

    void readHexByte() {
        unsigned byte = 0;
        const char* begin = text_.data() + position_;
        const char* end = begin + std::min<std::size_t>(2, text_.size() - position_);
        const auto result = std::from_chars(begin, end, byte, 16);
        if (result.ptr == begin + 2) {
            position_ += 2;
            readByte(static_cast<char>(byte));
        }
    }

    /// A byte of text, written as it is or by its number.
    void readByte(char byte) {
        isAtGroupStart_ = false;
        if (isFallback()) {
            return;
        }
        const auto value = static_cast<unsigned char>(byte);
        if (value >= 0x80) {
            append(upperHalf().at(value - 0x80U));
        } else if (value >= 0x20 || byte == '\t') {
            append(std::string_view(&byte, 1));
        }
    }

    const UpperHalf& upperHalf() {
        if (!upperHalf_) {
            upperHalf_ = upperHalfOf(encoding_);
        }
        return *upperHalf_;
    }

    void setEncoding(platform::StringEncoding encoding) {
        if (encoding != encoding_) {
            encoding_ = encoding;
            upperHalf_.reset();
        }
    }

    void performWord(const ControlWord& word) {
        const bool isAtGroupStart = std::exchange(isAtGroupStart_, false);
        const auto character =
            std::find_if(kCharacterWords.begin(), kCharacterWords.end(),
                         [&](const auto& entry) { return entry.first == word.name; });
        if (character != kCharacterWords.end()) {
            append(character->second);
        } else if (isAtGroupStart && std::find(kDestinations.begin(), kDestinations.end(),
                                               word.name) != kDestinations.end()) {
            groups_.back().isIgnored = true;
        } else if (!performStyle(word)) {
            performEncoding(word);
        }
    }

    bool performStyle(const ControlWord& word) {
        Group& group = groups_.back();
        if (word.name == "b") {
            group.isBold = word.isOn();
        } else if (word.name == "i") {
            group.isItalic = word.isOn();
        } else if (word.name == "v") {
            group.isHidden = word.isOn();
        } else if (word.name == "fs") {
            setHalfPoints(word.number.value_or(0));
        } else if (word.name == "plain") {
            group.isBold = group.isItalic = group.isHidden = false;
            group.halfPoints = kDefaultHalfPoints;
        } else {
            return false;
        }
        return true;
    }

    void setHalfPoints(std::int32_t number) {
        if (number > 0) {
            groups_.back().halfPoints = static_cast<std::uint16_t>(
                std::min(static_cast<unsigned>(number), kLargestHalfPoints));
        }
    }

    void performEncoding(const ControlWord& word) {
        if (word.name == "u") {
            readUnicode(word.number.value_or(0xFFFD));
        } else if (word.name == "uc") {
            groups_.back().fallbackLength =
                static_cast<std::uint16_t>(std::clamp(word.number.value_or(1), 0, 0xFFFF));
        } else if (word.name == "mac") {
            setEncoding(platform::StringEncoding::macRoman);
        } else if (word.name == "ansicpg") {
            setEncoding(codePage(word.number.value_or(0)));
        }
    }

    /// A UTF-16 unit, of which those above 0x7FFF are usually written as negative numbers.
    void readUnicode(std::int32_t number) {
        const char32_t unit = static_cast<std::uint32_t>(number) & 0xFFFFU;
        if (unit >= 0xD800 && unit <= 0xDBFF) {
            endSurrogate();
            highSurrogate_ = unit;
        } else if (unit >= 0xDC00 && unit <= 0xDFFF && highSurrogate_ != 0) {
            const char32_t high = std::exchange(highSurrogate_, 0);
            appendCode(0x10000 + ((high - 0xD800) << 10U) + (unit - 0xDC00));
        } else if (unit == 0x2028 || unit == 0x2029) {
            append("\n");
        } else if (unit >= 0x20 || unit == '\t') {
            appendCode(unit);
        }
        fallbackLeft_ = groups_.back().fallbackLength;
    }

    /// Half a character whose other half did not come.
    void endSurrogate() {
        if (std::exchange(highSurrogate_, 0) != 0) {
            appendCode(0xFFFD);
        }
    }

    /// Whether what comes next only stands for a Unicode escape before it; counts it.
    bool isFallback() {
        if (fallbackLeft_ == 0) {
            return false;
        }
        --fallbackLeft_;
        return true;
    }

    void appendCode(char32_t code) {
        std::string character;
        appendUtf8(character, code);
        append(character);
    }

    void append(std::string_view text) {
        endSurrogate();
        const Group& group = groups_.back();
        if (group.isIgnored || group.isHidden) {
            return;
        }
        const double pointSize = group.halfPoints / 2.0;
        const bool continues = !runs_.empty() && runs_.back().isBold == group.isBold &&
                               runs_.back().isItalic == group.isItalic &&
                               runs_.back().pointSize == pointSize;
        if (!continues) {
            runs_.push_back({.text = "",
                             .isBold = group.isBold,
                             .isItalic = group.isItalic,
                             .pointSize = pointSize});
        }
        runs_.back().text += text;
    }

    std::string_view text_;
    std::size_t position_ = 0;
    std::vector<Group> groups_;
    bool isAtGroupStart_ = false;
    unsigned fallbackLeft_ = 0;
    char32_t highSurrogate_ = 0;
    platform::StringEncoding encoding_ = platform::StringEncoding::windowsLatin1;
    std::optional<UpperHalf> upperHalf_;
    std::vector<StyledRun> runs_;
};

}  // namespace

std::optional<std::vector<StyledRun>> readRichText(std::string_view rtf) {
    if (!rtf.starts_with(kBegin)) {
        return std::nullopt;
    }
    return Reader(rtf).read();
}

}  // namespace vornic
