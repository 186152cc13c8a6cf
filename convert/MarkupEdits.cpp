#include "convert/MarkupEdits.h"

#include <algorithm>
#include <utility>

#include "xml/text/XMLCharacters.h"

namespace vornic {

namespace {

constexpr std::size_t kShown = 160;

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

}  // namespace

// Those of one place stay in their order.
EditList MarkupEdits::take() {
    std::stable_sort(edits_.begin(), edits_.end(), [](const Edit& left, const Edit& right) {
        return left.offset < right.offset;
    });
    return std::exchange(edits_, {});
}

std::string MarkupEdits::takeTag(TextSpan tag, std::size_t since) {
    EditList edits(edits_.begin() + static_cast<std::ptrdiff_t>(since), edits_.end());
    edits_.resize(since);
    std::stable_sort(edits.begin(), edits.end(), [](const Edit& left, const Edit& right) {
        return left.offset < right.offset;
    });
    for (Edit& edit : edits) {
        edit.offset -= tag.offset;
    }
    return applyEdits(tag.of(index_.text()), edits);
}

void MarkupEdits::removeInside(TextSpan span) {
    std::size_t size = edits_.size();
    while (size != 0 && edits_[size - 1].offset >= span.offset) {
        --size;
    }
    truncate(size);
    removeInText(span);
}

void MarkupEdits::add(std::size_t offset, std::size_t length, std::string_view text) {
    edits_.push_back({offset, length, std::string(text)});
}

// The span, or the lines that it has for itself, with the break at their end.
TextSpan MarkupEdits::lineOf(TextSpan span) const {
    const std::string_view text = index_.text();
    std::size_t start = span.offset;
    while (start != 0 && isBlank(text[start - 1])) {
        --start;
    }
    std::size_t end = span.end();
    while (end != text.size() && isBlank(text[end])) {
        ++end;
    }
    const std::size_t lineBreak = text.substr(end).starts_with("\r\n") ? 2
                                  : text.substr(end).starts_with('\n') ? 1
                                                                       : 0;
    const bool startsLine = start != 0 && text[start - 1] == '\n';
    return startsLine && lineBreak != 0 ? TextSpan{start, end + lineBreak - start} : span;
}

void MarkupEdits::remove(TextSpan span) {
    removeInText(lineOf(span));
}

void MarkupEdits::removeAttribute(TextSpan attribute) {
    std::size_t start = attribute.offset;
    while (start != 0 && xmlchars::is(index_.text()[start - 1], xmlchars::kSpace)) {
        --start;
    }
    add(start, attribute.end() - start, "");
}

bool MarkupEdits::isClosedAtOnce(ElementNumber element) const {
    const TextSpan tag = index_.startTagOf(element);
    return index_.text().substr(tag.offset, tag.length).ends_with("/>");
}

std::size_t MarkupEdits::endOfAttributes(ElementNumber element) const {
    std::size_t end = index_.startTagOf(element).end() - (isClosedAtOnce(element) ? 2 : 1);
    while (xmlchars::is(index_.text()[end - 1], xmlchars::kSpace)) {
        --end;
    }
    return end;
}

void MarkupEdits::insertAttribute(ElementNumber element, std::string_view name,
                                  std::string_view rawValue, char quote) {
    std::string text = " ";
    text.append(name).append("=").append(1, quote).append(rawValue).append(1, quote);
    add(endOfAttributes(element), 0, text);
}

void MarkupEdits::renameStartTag(ElementNumber element, std::string_view name) {
    add(index_.spanOf(element).offset + 1, index_.nameOf(element).size(), name);
}

TextSpan MarkupEdits::endTagOf(ElementNumber element) const {
    const std::size_t end = index_.spanOf(element).end();
    const std::size_t start = isClosedAtOnce(element) ? end : index_.contentOf(element).end();
    return {start, end - start};
}

void MarkupEdits::renameEndTag(ElementNumber element, std::string_view name) {
    const TextSpan tag = endTagOf(element);
    if (tag.length != 0) {
        add(tag.offset + 2, index_.nameOf(element).size(), name);
    }
}

// "\n" with the indentation of the element's line; "" where something else begins the line.
std::string MarkupEdits::lineBreakBefore(ElementNumber element) const {
    const std::string_view text = index_.text();
    const std::size_t offset = index_.spanOf(element).offset;
    std::size_t start = offset;
    while (start != 0 && isBlank(text[start - 1])) {
        --start;
    }
    if (start == 0 || text[start - 1] != '\n') {
        return "";
    }
    const bool isWindows = start > 1 && text[start - 2] == '\r';
    return (isWindows ? "\r\n" : "\n") + std::string(text.substr(start, offset - start));
}

void MarkupEdits::insertFirstChild(ElementNumber element, std::string_view markup) {
    const std::string lineBreak = lineBreakBefore(element);
    const bool usesTabs = lineBreak.find('\t') != std::string::npos;
    std::string text;
    if (!lineBreak.empty()) {
        text.append(lineBreak).append(usesTabs ? "\t" : "    ");
    }
    text += markup;
    const std::size_t end = index_.startTagOf(element).end();
    if (!isClosedAtOnce(element)) {
        return add(end, 0, text);
    }
    text.append(lineBreak).append("</").append(index_.nameOf(element)).append(">");
    add(end - 2, 2, ">" + text);
}

char MarkupEdits::quoteOf(TextSpan value) const {
    const bool isSingle = value.offset != 0 && index_.text()[value.offset - 1] == '\'';
    return isSingle ? '\'' : '"';
}

void MarkupEdits::writeVersion(std::string_view version) {
    const std::optional<TextSpan> old = index_.attributeOf(0, "version");
    if (!old) {
        insertAttribute(0, "version", version);
    } else if (old->of(index_.text()) != version) {
        add(old->offset, old->length, version);
    }
}

std::string shortened(std::string_view content) {
    if (content.size() <= kShown) {
        return std::string(content);
    }
    std::size_t end = kShown;
    while (end != 0 && (static_cast<unsigned char>(content[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return std::string(content.substr(0, end)) + "...";
}

}  // namespace vornic
