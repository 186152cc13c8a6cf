#include "ui/about/RichTextReader.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "base/ASCII.h"
#include "base/Utf8.h"

namespace vornic {
namespace {

constexpr std::string_view kBegin = R"({\rtf)";
constexpr std::int32_t kDefaultHalfPoints = 24;
constexpr std::int32_t kLargestHalfPoints = 2 * 1638;

/// A word behind a backslash and the number behind it.
struct ControlWord {
    std::string_view name;
    std::optional<std::int32_t> number;
};

/// The style inside a group of braces.
struct Group {
    std::int32_t halfPoints = kDefaultHalfPoints;
    bool isBold = false;
    bool isIgnored = false;
};

class Reader {
  public:
    explicit Reader(std::string_view rtf) : text_(rtf) {}

    std::vector<StyledRun> read() {
        do {
            readNext(text_[position_++]);
        } while (!groups_.empty() && position_ < text_.size());
        return std::move(runs_);
    }

  private:
    void readNext(char character) {
        switch (character) {
            case '{':
                groups_.push_back(groups_.empty() ? Group{} : groups_.back());
                isFallbackNext_ = false;
                return;
            case '}':
                groups_.pop_back();
                isFallbackNext_ = false;
                return;
            case '\\':
                readControl();
                return;
            default:
                readCharacter(character);
        }
    }

    void readControl() {
        if (position_ == text_.size()) {
            return;
        }
        if (isLetter(text_[position_])) {
            performWord(readWord());
            return;
        }
        const char symbol = text_[position_++];
        if (symbol == '*') {
            groups_.back().isIgnored = true;
        } else if (symbol == '\n' || symbol == '\r') {
            append("\n");
        } else if (symbol == '\\' || symbol == '{' || symbol == '}') {
            readCharacter(symbol);
        }
    }

    ControlWord readWord() {
        const std::size_t begin = position_;
        while (position_ < text_.size() && isLetter(text_[position_])) {
            ++position_;
        }
        ControlWord word{.name = text_.substr(begin, position_ - begin), .number = std::nullopt};
        std::int32_t number = 0;
        const auto result =
            std::from_chars(text_.data() + position_, text_.data() + text_.size(), number);
        position_ = static_cast<std::size_t>(result.ptr - text_.data());
        if (result.ec == std::errc()) {
            word.number = number;
        }
        if (position_ < text_.size() && text_[position_] == ' ') {
            ++position_;
        }
        return word;
    }

    void performWord(const ControlWord& word) {
        Group& group = groups_.back();
        if (word.name == "fonttbl") {
            group.isIgnored = true;
        } else if (word.name == "b") {
            group.isBold = word.number != 0;
        } else if (word.name == "fs" && word.number.value_or(0) > 0) {
            group.halfPoints = std::min(*word.number, kLargestHalfPoints);
        } else if (word.name == "u" && word.number) {
            appendCode(static_cast<std::uint32_t>(*word.number) & 0xFFFFU);
            isFallbackNext_ = true;
        }
    }

    void readCharacter(char character) {
        const bool isControl = static_cast<unsigned char>(character) < 0x20;
        if (isControl || std::exchange(isFallbackNext_, false)) {
            return;
        }
        appendCode(static_cast<unsigned char>(character) < 0x80 ? character : U'\uFFFD');
    }

    void appendCode(char32_t code) {
        std::string character;
        appendUtf8(character, code);
        append(character);
    }

    void append(std::string_view text) {
        const Group& group = groups_.back();
        if (group.isIgnored) {
            return;
        }
        const double pointSize = group.halfPoints / 2.0;
        const bool continues = !runs_.empty() && runs_.back().isBold == group.isBold &&
                               runs_.back().pointSize == pointSize;
        if (!continues) {
            runs_.push_back({.text = "", .isBold = group.isBold, .pointSize = pointSize});
        }
        runs_.back().text += text;
    }

    std::string_view text_;
    std::size_t position_ = 0;
    std::vector<Group> groups_;
    /// The next character stands for the Unicode escape before it.
    bool isFallbackNext_ = false;
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
