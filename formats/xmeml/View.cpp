#include "formats/xmeml/View.h"

#include <algorithm>

#include "xml/text/AttributeValue.h"
#include "xml/text/TextPlace.h"

namespace vornic::xmeml {

namespace {

// How far around an element its thing's name is looked for.
constexpr int kNearestElements = 6;

constexpr std::string_view kCDATAStart = "<![CDATA[";

// The nouns of the things that have names of their own.
std::string_view nounOf(Name name) {
    switch (name) {
        case Name::clipitem:
            return "clip item";
        case Name::transitionitem:
            return "transition";
        case Name::generatoritem:
            return "generator";
        case Name::file:
            return "media file";
        case Name::xmeml:
            return "file";
        case Name::clip:
        case Name::sequence:
        case Name::marker:
        case Name::project:
        case Name::bin:
        case Name::multiclip:
        case Name::parameter:
        case Name::effect:
            return textOf(name);
        default:
            return "";
    }
}

// The characters of a piece of text without the markup of comments and CDATA sections.
std::string withoutMarkup(std::string_view raw) {
    std::string text;
    while (!raw.empty()) {
        const std::size_t markup = raw.find('<');
        text += normalisedAttributeValue(raw.substr(0, markup), false);
        if (markup == std::string_view::npos) {
            break;
        }
        raw.remove_prefix(markup);
        const bool isCDATA = raw.starts_with(kCDATAStart);
        const std::string_view close = isCDATA ? "]]>" : raw.starts_with("<!--") ? "-->" : ">";
        const std::size_t end = raw.find(close);
        if (end == std::string_view::npos) {
            break;
        }
        if (isCDATA) {
            text += raw.substr(kCDATAStart.size(), end - kCDATAStart.size());
        }
        raw.remove_prefix(end + close.size());
    }
    return text;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

}  // namespace

View::View(const ElementIndex& index, bool isComplete)
    : index_(&index), isComplete_(isComplete), names_(index.nameCount() + 1, Name::other) {
    for (std::size_t number = 0; number < index.nameCount(); ++number) {
        names_[number] = xmeml::nameOf(index.nameNumbered(number));
    }
}

ElementNumber View::parentOf(ElementNumber element, Name name) const {
    const ElementNumber parent = element == kNoElement ? kNoElement : index_->parentOf(element);
    return is(parent, name) ? parent : kNoElement;
}

ElementNumber View::childOf(ElementNumber element, Name name) const {
    if (element == kNoElement) {
        return kNoElement;
    }
    ElementNumber child = index_->firstChildOf(element);
    while (child != kNoElement && nameOf(child) != name) {
        child = index_->nextSiblingOf(child);
    }
    return child;
}

std::string_view View::textOf(ElementNumber element, std::string& storage) const {
    const std::optional<TextSpan> span =
        element == kNoElement ? std::nullopt : index_->textOf(element);
    if (!span) {
        return {};
    }
    const std::string_view raw = span->of(index_->text());
    // Texts are short, so that a loop is quicker than a search.
    if (std::none_of(raw.begin(), raw.end(), [](char c) { return c == '&' || c == '<'; })) {
        return raw;
    }
    storage = withoutMarkup(raw);
    return trimmed(storage);
}

std::string View::textOf(ElementNumber element) const {
    std::string storage;
    return std::string(textOf(element, storage));
}

std::string_view View::idOf(ElementNumber element, std::string& storage) const {
    const std::string_view raw = trimmed(index_->attributeTextOf(element, "id"));
    if (raw.find('&') == std::string_view::npos) {
        return raw;
    }
    storage = normalisedAttributeValue(raw, false);
    return trimmed(storage);
}

TextSpan View::placeOf(ElementNumber element) const {
    const std::optional<TextSpan> text = index_->textOf(element);
    return text && text->length != 0 ? *text : index_->startTagOf(element);
}

std::string View::titleOf(ElementNumber element) const {
    // More is not shown, and a damaged file may have a name of many megabytes.
    constexpr std::size_t kLongestTitle = 1000;
    const std::string_view title = index_->titleOf(element).substr(0, kLongestTitle);
    if (!title.empty()) {
        return excerpt(withoutMarkup(title));
    }
    std::string storage;
    return excerpt(idOf(element, storage));
}

std::string View::describe(ElementNumber element) const {
    const std::string_view noun = nounOf(nameOf(element));
    const std::string title = noun.empty() ? std::string() : titleOf(element);
    if (!title.empty()) {
        return "the " + std::string(noun) + " \"" + title + "\"";
    }
    std::string text =
        noun.empty() ? "<" + std::string(index_->nameOf(element)) + ">" : "a " + std::string(noun);
    ElementNumber around = index_->parentOf(element);
    for (int step = 0; around != kNoElement && step < kNearestElements; ++step) {
        const std::string_view outer = nounOf(nameOf(around));
        const std::string outerTitle = outer.empty() ? std::string() : titleOf(around);
        if (!outerTitle.empty()) {
            return text.append(" of the ").append(outer).append(" \"" + outerTitle + "\"");
        }
        around = index_->parentOf(around);
    }
    return text;
}

bool View::isReference(ElementNumber element) const {
    return index_->firstChildOf(element) == kNoElement && index_->attributeOf(element, "id");
}

std::string quoted(std::string_view value) {
    return value.empty() ? "empty" : "\"" + excerpt(value) + "\"";
}

Parts::Parts(const View& view, ElementNumber element) {
    first_.fill(kNoElement);
    const ElementIndex& index = view.index();
    const ElementNumber end = index.endOf(element);
    for (ElementNumber child = element + 1; child < end; child = index.endOf(child)) {
        ElementNumber& first = first_[static_cast<std::size_t>(view.nameOf(child))];
        first = first == kNoElement ? child : first;
    }
}

}  // namespace vornic::xmeml
