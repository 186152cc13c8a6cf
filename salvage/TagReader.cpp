#include "salvage/TagReader.h"

#include <algorithm>

#include "xml/text/XMLCharacters.h"

namespace vornic::salvage {

namespace {

using xmlchars::is;
using xmlchars::kSpace;

constexpr std::size_t kFewAttributes = 24;
constexpr std::size_t kNowhere = std::string_view::npos;

// Where ` name=` at the end of a value begins; the whole length when there is none.
std::size_t beforeTrailingAttribute(std::string_view value) {
    if (!value.ends_with('=')) {
        return value.size();
    }
    std::size_t at = value.size() - 1;
    while (at > 0 && !is(value[at - 1], kSpace)) {
        --at;
    }
    const std::string_view name = value.substr(at, value.size() - 1 - at);
    const bool isName = !name.empty() &&
                        xmlchars::nameLength(name.data(), name.data() + name.size()) == name.size();
    if (!isName || at == 0) {
        return value.size();
    }
    return value.find_last_not_of(" \t\r\n", at - 1) + 1;
}

}  // namespace

void TagReader::add(ChangeKind kind, std::size_t offset, std::size_t length, std::size_t other) {
    Change change;
    change.kind = kind;
    change.offset = static_cast<std::uint32_t>(offset);
    change.length = static_cast<std::uint32_t>(length);
    change.other = static_cast<std::uint32_t>(other);
    changes_.push_back(change);
}

std::size_t TagReader::nameEnd(std::size_t at) const {
    return at + xmlchars::nameLength(text_.data() + at, text_.data() + text_.size());
}

std::size_t TagReader::afterSpace(std::size_t at) const {
    return static_cast<std::size_t>(
        xmlchars::afterSpace(text_.data() + at, text_.data() + text_.size()) - text_.data());
}

bool TagReader::isNextLessThan() {
    if (nextLessThan_ < at_) {
        nextLessThan_ = std::min(text_.find('<', at_), text_.size());
    }
    if (nextGreaterThan_ < at_) {
        nextGreaterThan_ = std::min(text_.find('>', at_), text_.size());
    }
    return nextLessThan_ <= nextGreaterThan_;
}

Token TagReader::readStart(std::size_t at, std::size_t nameStart) {
    at_ = nameEnd(nameStart);
    partEnd_ = at_;
    elementName_ = text_.substr(nameStart, at_ - nameStart);
    isEmpty_ = false;
    isCut_ = false;
    attributes_.clear();
    attributeIndex_.clear();
    while (readPart()) {
    }
    return finishStart(at);
}

Token TagReader::finishStart(std::size_t at) {
    Token token;
    token.kind = isEmpty_ ? TokenKind::empty : TokenKind::start;
    token.offset = static_cast<std::uint32_t>(at);
    token.end = static_cast<std::uint32_t>(at_);
    token.name = names_.idOf(elementName_);
    return token;
}

// @return false when the tag has ended.
bool TagReader::readPart() {
    at_ = afterSpace(at_);
    if (isAtEnd()) {
        isCut_ = true;
        return false;
    }
    if (here() == '>') {
        ++at_;
        return false;
    }
    if (here() == '<') {
        closeTagAt(partEnd_);
        return false;
    }
    return here() == '/' ? readSlash() : readAttribute();
}

bool TagReader::readSlash() {
    const std::size_t next = at_ + 1;
    if (next < text_.size() && text_[next] == '>') {
        at_ = next + 1;
        isEmpty_ = true;
        return false;
    }
    const std::size_t after = afterSpace(next);
    if (after < text_.size() && text_[after] == '<') {
        isEmpty_ = true;
        partEnd_ = next;
        closeTagAt(next);
        return false;
    }
    if (after >= text_.size()) {
        at_ = text_.size();
        isCut_ = true;
        return false;
    }
    return readJunk();
}

// The `>` is missing: what follows is content.
void TagReader::closeTagAt(std::size_t offset) {
    if (attributes_.empty() && !isEmpty_) {
        offset = splitName(offset - elementName_.size(), offset);
    }
    add(ChangeKind::closeTag, offset);
    at_ = offset;
}

// `<timebase24</timebase>`: the name ends where a name that is known does, best that of the end tag
// which follows.
std::size_t TagReader::splitName(std::size_t nameStart, std::size_t end) {
    const std::size_t next = text_.find('<', nameStart);
    if (next != kNowhere && next + 2 < text_.size() && text_[next + 1] == '/') {
        const std::size_t length = nameEnd(next + 2) - next - 2;
        const std::string_view following = text_.substr(next + 2, length);
        if (!following.empty() && elementName_.starts_with(following)) {
            elementName_ = following;
            return nameStart + length;
        }
    }
    if (names_.isKnown(names_.find(elementName_))) {
        return end;
    }
    for (std::size_t length = elementName_.size(); length > 1; --length) {
        if (names_.isKnown(names_.find(elementName_.substr(0, length)))) {
            elementName_ = elementName_.substr(0, length);
            return nameStart + length;
        }
    }
    return end;
}

// Characters that begin no attribute: content behind a missing `>`, or nothing of use.
bool TagReader::readJunk() {
    if (isNextLessThan()) {
        if (nextLessThan_ == text_.size()) {
            isCut_ = nextGreaterThan_ == text_.size();
            at_ = text_.size();
            return false;
        }
        closeTagAt(partEnd_);
        return false;
    }
    const std::size_t from = at_;
    while (at_ < nextGreaterThan_ && !is(here(), kSpace) &&
           (at_ == from || here() != '/' || at_ + 1 != nextGreaterThan_)) {
        ++at_;
    }
    add(ChangeKind::removeJunk, from, at_ - from);
    partEnd_ = at_;
    return true;
}

bool TagReader::readAttribute() {
    Attribute attribute;
    const std::size_t end = nameEnd(at_);
    attribute.name = {at_, end - at_};
    const std::size_t equals = afterSpace(end);
    if (end == at_) {
        return readJunk();
    }
    const bool hasEquals = equals < text_.size() && text_[equals] == '=';
    if (hasEquals && !beginsContent(equals + 1)) {
        at_ = afterSpace(equals + 1);
        if (isAtEnd()) {
            isCut_ = true;
            return false;
        }
        readValue(attribute);
        if (isCut_) {
            return false;
        }
        partEnd_ = at_;
        keepAttribute(attribute);
        return true;
    }
    if (isNextLessThan() || !is(text_[at_ - 1], kSpace)) {
        return readJunk();
    }
    // An attribute without a value: a reader that mends takes it.
    at_ = end;
    partEnd_ = end;
    attribute.value = {end, 0};
    attribute.end = end;
    keepAttribute(attribute);
    return true;
}

// Whether what looks like an attribute is text behind a missing `>`: no quotes, and the next tag
// comes before any `>`.
bool TagReader::beginsContent(std::size_t value) {
    const std::size_t at = afterSpace(value);
    const bool isQuoted = at < text_.size() && (text_[at] == '"' || text_[at] == '\'');
    return !isQuoted && at < text_.size() && isNextLessThan() && nextLessThan_ < text_.size();
}

void TagReader::readValue(Attribute& attribute) {
    if (here() == '"' || here() == '\'') {
        readQuotedValue(attribute);
    } else {
        readBareValue(attribute);
    }
    attribute.end = at_;
}

bool TagReader::followsProperly(std::size_t at) const {
    if (at >= text_.size()) {
        return true;
    }
    const char c = text_[at];
    return is(c, kSpace) || c == '>' || c == '/' || c == '<' || c == '?';
}

void TagReader::readQuotedValue(Attribute& attribute) {
    const char quote = here();
    const std::size_t from = at_ + 1;
    const std::size_t end = text_.find(quote, from);
    const std::string_view value = text_.substr(from, end == kNowhere ? kNowhere : end - from);
    const bool isSound = end != kNowhere && value.find('<') == kNowhere &&
                         (followsProperly(end + 1) || !value.ends_with('='));
    const std::size_t closed = isSound ? end : unclosedValueEnd(from, end);
    if (closed == end && end != kNowhere) {
        attribute.value = {from, end - from};
        at_ = end + 1;
        return;
    }
    if (closed == kNowhere) {
        isCut_ = true;
        at_ = text_.size();
        return;
    }
    add(ChangeKind::closeValue, closed);
    attribute.value = {from, closed - from};
    at_ = closed;
}

// Where a value most likely ended whose quote, at `quoteEnd`, may be that of another one.
// @return `quoteEnd` when it is its own after all, npos when the text ends inside of it.
std::size_t TagReader::unclosedValueEnd(std::size_t from, std::size_t quoteEnd) const {
    const std::string_view value =
        text_.substr(from, quoteEnd == kNowhere ? kNowhere : quoteEnd - from);
    const std::size_t markup = value.find('<');
    const std::size_t close = value.find('>');
    const bool isFollowed = quoteEnd != kNowhere && followsProperly(quoteEnd + 1);
    if (quoteEnd != kNowhere && markup == kNowhere) {
        const std::size_t length = beforeTrailingAttribute(value);
        return length == value.size() ? quoteEnd : from + length;
    }
    const bool hasTag = close != kNowhere && markup != kNowhere && close < markup;
    if (isFollowed && !hasTag) {
        return quoteEnd;
    }
    if (close == kNowhere && quoteEnd == kNowhere && markup == kNowhere) {
        return kNowhere;
    }
    // The tag ended with the first `>`, or with the line in front of the next tag.
    std::size_t length = std::min(close, markup);
    if (length == close && length > 0 && value[length - 1] == '/') {
        --length;
    }
    const std::size_t last = value.find_last_not_of(" \t\r\n", length == 0 ? 0 : length - 1);
    return from + (length == 0 || last == kNowhere ? 0 : last + 1);
}

// `name=value`, `name=value"` and `name=x"value"`.
void TagReader::readBareValue(Attribute& attribute) {
    const std::size_t from = at_;
    const std::size_t stop = std::min(text_.find_first_of("\"'=<>", from), text_.size());
    if (stop < text_.size() && stop > from && (text_[stop] == '"' || text_[stop] == '\'') &&
        followsProperly(stop + 1)) {
        add(ChangeKind::openValue, from);
        attribute.value = {from, stop - from};
        // Told by the quote that closes it.
        changes_.back().name = text_[stop] == '"' ? 0 : 1;
        at_ = stop + 1;
        return;
    }
    const bool isQuote = stop < text_.size() && (text_[stop] == '"' || text_[stop] == '\'');
    if (isQuote && std::none_of(text_.begin() + static_cast<std::ptrdiff_t>(from),
                                text_.begin() + static_cast<std::ptrdiff_t>(stop),
                                [](char c) { return is(c, kSpace); })) {
        add(ChangeKind::removeJunk, from, stop - from);
        at_ = stop;
        readQuotedValue(attribute);
        return;
    }
    while (!isAtEnd() && !is(here(), kSpace) && here() != '>' && here() != '<' &&
           !(here() == '/' && at_ + 1 < text_.size() && text_[at_ + 1] == '>')) {
        ++at_;
    }
    isCut_ = isAtEnd();
    attribute.value = {from, at_ - from};
}

void TagReader::keepAttribute(const Attribute& attribute) {
    const std::string_view name = text_.substr(attribute.name.offset, attribute.name.length);
    Attribute* same = nullptr;
    if (attributes_.size() <= kFewAttributes) {
        for (Attribute& other : attributes_) {
            if (text_.substr(other.name.offset, other.name.length) == name) {
                same = &other;
            }
        }
    } else {
        for (std::size_t i = attributeIndex_.size(); i < attributes_.size(); ++i) {
            const TextSpan span = attributes_[i].name;
            attributeIndex_.emplace(text_.substr(span.offset, span.length), i);
        }
        const auto found = attributeIndex_.find(name);
        same = found == attributeIndex_.end() ? nullptr : &attributes_[found->second];
    }
    if (same == nullptr) {
        attributes_.push_back(attribute);
    } else {
        judge(*same, attribute);
    }
}

void TagReader::judge(Attribute& first, const Attribute& second) {
    const auto textOf = [this](TextSpan span) { return text_.substr(span.offset, span.length); };
    const std::string_view old = textOf(first.value);
    const std::string_view newer = textOf(second.value);
    const bool isEqual = old == newer;
    const bool isSecondBetter =
        !isEqual && judge_ && judge_(elementName_, textOf(first.name), old, newer) > 0;
    const Attribute removed = isSecondBetter ? first : second;
    const Attribute kept = isSecondBetter ? second : first;
    std::size_t from = removed.name.offset;
    while (is(text_[from - 1], kSpace)) {
        --from;
    }
    add(isEqual ? ChangeKind::removeEqualAttribute : ChangeKind::removeAttribute, from,
        removed.end - from, kept.name.offset);
    if (isSecondBetter) {
        first = second;
    }
}

Token TagReader::readEnd(std::size_t at) {
    isCut_ = false;
    Token token;
    token.kind = TokenKind::end;
    token.offset = static_cast<std::uint32_t>(at);
    const std::size_t nameStart = afterSpace(at + 2);
    std::size_t end = nameEnd(nameStart);
    elementName_ = text_.substr(nameStart, end - nameStart);
    at_ = afterSpace(end);
    if (isAtEnd()) {
        isCut_ = true;
    } else if (here() == '>') {
        if (nameStart != at + 2) {
            add(ChangeKind::removeJunk, at + 2, nameStart - at - 2);
        }
        ++at_;
    } else if (isNextLessThan()) {
        if (nameStart != at + 2) {
            add(ChangeKind::removeJunk, at + 2, nameStart - at - 2);
        }
        add(ChangeKind::closeTag, end);
        at_ = end;
    } else {
        add(ChangeKind::removeJunk, end, nextGreaterThan_ - end);
        at_ = nextGreaterThan_ + 1;
    }
    token.end = static_cast<std::uint32_t>(at_);
    token.name = names_.idOf(elementName_);
    return token;
}

}  // namespace vornic::salvage
