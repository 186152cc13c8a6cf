#include "xml/writer/XMLTextWriter.h"

#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "base/Utf8.h"
#include "xml/text/XMLCharacters.h"

namespace vornic {

namespace {

using xmlchars::afterSpace;
using xmlchars::is;

constexpr std::string_view kCDATAStart = "<![CDATA[";
// What has been passed is handed on in pieces of about this length.
constexpr std::ptrdiff_t kPieceLength = std::ptrdiff_t{256} * 1024;

bool isSpecialInText(char c) {
    return c == '<' || c == '&' || c == '>' || c == '\r';
}

// The first character in text that begins markup or is not written as it stands.
const char* specialInText(const char* at, const char* end) {
#if defined(__SSE2__)
    // The less-than and greater-than signs differ in one bit.
    const __m128i oneBit = _mm_set1_epi8(2);
    for (; end - at >= static_cast<std::ptrdiff_t>(sizeof(__m128i)); at += sizeof(__m128i)) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        const __m128i special =
            _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8('&')),
                                      _mm_cmpeq_epi8(block, _mm_set1_epi8('\r'))),
                         _mm_cmpeq_epi8(_mm_or_si128(block, oneBit), _mm_set1_epi8('>')));
        if (const int places = _mm_movemask_epi8(special); places != 0) {
            return at + std::countr_zero(static_cast<unsigned>(places));
        }
    }
#endif
    while (at != end && !isSpecialInText(*at)) {
        ++at;
    }
    return at;
}

// The character that a reference stands for; `reference` is what lies between the ampersand and the
// semicolon.
char32_t referencedCharacter(std::string_view reference) {
    if (reference[0] == '#') {
        const bool hexadecimal = reference[1] == 'x';
        const std::string_view digits = reference.substr(hexadecimal ? 2 : 1);
        std::uint32_t value = 0;
        std::from_chars(digits.data(), digits.data() + digits.size(), value, hexadecimal ? 16 : 10);
        return value;
    }
    switch (reference[0]) {
        case 'l':
            return '<';
        case 'g':
            return '>';
        case 'q':
            return '"';
        default:
            return reference == "amp" ? '&' : '\'';
    }
}

}  // namespace

void XMLTextWriter::write(std::string_view afterRootTag) {
    at_ = afterRootTag.data();
    end_ = at_ + afterRootTag.size();
    uncopied_ = at_;
    takeContent();
    while (depth_ != 0 && !out_.stopped()) {
        takeNode();
    }
    takeBlank(afterSpace(at_, end_), 0);
    while (at_ != end_ && !out_.stopped()) {
        takeMarkup();
        takeBlank(afterSpace(at_, end_), 0);
    }
    copyPassed();
}

// What follows a start tag. Most elements hold nothing but text, and those are passed whole.
void XMLTextWriter::takeContent() {
    const char* const special = specialInText(at_, end_);
    const char* const markup = *special == '\r' ? afterSpace(at_, end_) : special;
    if (*markup == '<' && markup[1] != '/') {
        if (std::string_view(markup, kCDATAStart.size()) != kCDATAStart) {
            return;
        }
        takeRaw(markup + kCDATAStart.size(), "]]>");
    } else {
        at_ = special;
        while (*at_ != '<') {
            takeSpecial(Place::text);
            at_ = specialInText(at_, end_);
        }
    }
    takeEndTag();
}

// A child of an element that holds no text, or the element's end, with the white space before it.
void XMLTextWriter::takeNode() {
    if (at_ - uncopied_ > kPieceLength) {
        copyPassed();
    }
    const char* const markup = afterSpace(at_, end_);
    const bool isEnd = markup[1] == '/';
    takeBlank(markup, isEnd ? depth_ - 1 : depth_);
    if (isEnd) {
        takeEndTag();
    } else {
        takeMarkup();
    }
}

void XMLTextWriter::takeMarkup() {
    switch (at_[1]) {
        case '!':
            takeRaw(at_ + 4, "-->");
            break;
        case '?':
            takeInstruction();
            break;
        default:
            takeStartTag();
    }
}

void XMLTextWriter::takeStartTag() {
    passName(1);
    while (*at_ != '>' && *at_ != '/') {
        const char* const next = afterSpace(at_, end_);
        if (*next == '>' || *next == '/') {
            replaceUpTo(next, "");
            break;
        }
        if (next - at_ != 1 || *at_ != ' ') {
            replaceUpTo(next, " ");
        }
        at_ = next;
        takeAttribute();
    }
    if (*at_ == '/') {
        at_ += 2;
        return;
    }
    ++at_;
    ++depth_;
    takeContent();
}

void XMLTextWriter::takeEndTag() {
    passName(2);
    replaceUpTo(afterSpace(at_, end_), "");
    ++at_;
    --depth_;
}

void XMLTextWriter::takeAttribute() {
    while (*at_ != '=' && !is(*at_, xmlchars::kSpace)) {
        ++at_;
    }
    replaceUpTo(afterSpace(at_, end_), "");
    ++at_;
    replaceUpTo(afterSpace(at_, end_), "");
    const char quote = *at_;
    takeQuote();
    while (*at_ != quote) {
        if (is(*at_, xmlchars::kPlainValue) && *at_ != '>' && !is(*at_, xmlchars::kSpace)) {
            ++at_;
        } else {
            takeSpecial(Place::value);
        }
    }
    takeQuote();
}

void XMLTextWriter::takeQuote() {
    if (*at_ == '"') {
        ++at_;
    } else {
        replaceUpTo(at_ + 1, "\"");
    }
}

// Line ends, and in values all white space, are taken as XML 1.0 sections 2.11 and 3.3.3 say.
void XMLTextWriter::takeSpecial(Place place) {
    switch (*at_) {
        case '&':
            takeReference(place);
            break;
        case '>':
            replaceUpTo(at_ + 1, "&gt;");
            break;
        case '\r':
            replaceUpTo(at_ + (at_ + 1 != end_ && at_[1] == '\n' ? 2 : 1),
                        place == Place::value ? " " : "\n");
            break;
        case '\t':
        case '\n':
            replaceUpTo(at_ + 1, " ");
            break;
        case '"':
            replaceUpTo(at_ + 1, "&quot;");
            break;
        default:
            ++at_;
    }
}

void XMLTextWriter::takeReference(Place place) {
    const auto* const semicolon =
        static_cast<const char*>(std::memchr(at_, ';', static_cast<std::size_t>(end_ - at_)));
    const std::string_view reference(at_ + 1, static_cast<std::size_t>(semicolon - at_ - 1));
    if (reference == "amp" || reference == "lt" || reference == "gt") {
        at_ = semicolon + 1;
        return;
    }
    std::string character;
    appendUtf8(character, referencedCharacter(reference));
    copyPassed();
    if (place == Place::value) {
        out_.putValue(character.c_str());
    } else {
        out_.putText(character.c_str());
    }
    at_ = semicolon + 1;
    uncopied_ = at_;
}

void XMLTextWriter::takeInstruction() {
    at_ += 2;
    while (!is(*at_, xmlchars::kSpace) && *at_ != '?') {
        ++at_;
    }
    const char* const data = afterSpace(at_, end_);
    if (data != at_ && (data[0] == '?' && data[1] == '>')) {
        replaceUpTo(data, "");
    } else if (data != at_) {
        replaceUpTo(data, " ");
    }
    takeRaw(data, "?>");
}

// Passes what stands from `content` to an end mark, and the mark.
void XMLTextWriter::takeRaw(const char* content, std::string_view mark) {
    const std::string_view rest(content, static_cast<std::size_t>(end_ - content));
    const char* const close = content + rest.find(mark);
    at_ = content;
    while (const void* const found =
               std::memchr(at_, '\r', static_cast<std::size_t>(close - at_))) {
        at_ = static_cast<const char*>(found);
        replaceUpTo(at_ + (at_[1] == '\n' ? 2 : 1), "\n");
    }
    at_ = close + mark.size();
}

// The white space before a node, which goes to a line of its own.
void XMLTextWriter::takeBlank(const char* markup, std::size_t depth) {
    const std::string_view beginning =
        out_.lineBeginning(depth, static_cast<std::size_t>(at_ - uncopied_));
    if (std::string_view(at_, static_cast<std::size_t>(markup - at_)) == beginning) {
        at_ = markup;
    } else {
        replaceUpTo(markup, beginning);
    }
}

// Passes the opening of a tag, of so many bytes, and the name that follows.
void XMLTextWriter::passName(std::ptrdiff_t opening) {
    at_ += opening;
    while (is(*at_, xmlchars::kName) || !xmlchars::isASCII(*at_)) {
        ++at_;
    }
}

void XMLTextWriter::replaceUpTo(const char* end, std::string_view replacement) {
    if (at_ == end && replacement.empty()) {
        return;
    }
    copyPassed();
    out_.put(replacement);
    at_ = end;
    uncopied_ = end;
}

void XMLTextWriter::copyPassed() {
    out_.put(std::string_view(uncopied_, static_cast<std::size_t>(at_ - uncopied_)));
    uncopied_ = at_;
}

}  // namespace vornic
