#include "formats/StartTag.h"

#include <algorithm>
#include <array>

namespace vornic {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

// By byte: whether it ends a name. Names are short, so that a table is quicker than a search.
constexpr std::array<bool, 256> kEndsName = [] {
    std::array<bool, 256> table{};
    for (const char c : std::string_view(" \t\r\n=/>\"'")) {
        table[static_cast<unsigned char>(c)] = true;
    }
    return table;
}();

}  // namespace

StartTag::StartTag(std::string_view text, std::size_t offset) : text_(text), at_(offset + 1) {
    skipName();
    elementName_ = text_.substr(offset + 1, at_ - offset - 1);
}

void StartTag::skipName() {
    while (!isAtEnd() && !kEndsName[static_cast<unsigned char>(text_[at_])]) {
        ++at_;
    }
}

// White space, and characters that XML forbids, which a reading leaves out.
void StartTag::skipBlanks() {
    while (!isAtEnd() && static_cast<unsigned char>(text_[at_]) <= ' ') {
        ++at_;
    }
}

bool StartTag::next() {
    skipBlanks();
    while (!isAtEnd() && (text_[at_] == '/' || text_[at_] == '"' || text_[at_] == '\'')) {
        ++at_;
        skipBlanks();
    }
    if (isAtEnd() || text_[at_] == '>') {
        at_ += isAtEnd() ? 0 : 1;
        return false;
    }
    name_.offset = at_;
    // What begins with an equals sign is no name, but has to be passed.
    at_ += text_[at_] == '=' ? 1 : 0;
    skipName();
    name_.length = at_ - name_.offset;
    value_ = {at_, 0};
    const std::size_t afterName = at_;
    skipBlanks();
    if (isAtEnd() || text_[at_] != '=') {
        at_ = afterName;
        return true;
    }
    ++at_;
    skipBlanks();
    readValue();
    return true;
}

void StartTag::readValue() {
    const char quote = isAtEnd() ? '>' : text_[at_];
    if (quote == '"' || quote == '\'') {
        const std::size_t end = std::min(text_.find(quote, at_ + 1), text_.size());
        value_ = {at_ + 1, end - at_ - 1};
        at_ = std::min(end + 1, text_.size());
        return;
    }
    const std::size_t start = at_;
    while (!isAtEnd() && text_[at_] != '>' && kBlanks.find(text_[at_]) == std::string_view::npos &&
           !text_.substr(at_).starts_with("/>")) {
        ++at_;
    }
    value_ = {start, at_ - start};
}

}  // namespace vornic
