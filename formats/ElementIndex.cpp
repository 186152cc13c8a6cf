#include "formats/ElementIndex.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <unordered_map>

#include "formats/StartTag.h"
#include "xml/text/XMLCharacters.h"

namespace vornic {

namespace {

TextSpan trimmedSpan(std::string_view text, TextSpan span) {
    const auto isBlank = [text](std::size_t at) {
        return xmlchars::is(text[at], xmlchars::kSpace);
    };
    while (span.length != 0 && isBlank(span.offset)) {
        ++span.offset;
        --span.length;
    }
    while (span.length != 0 && isBlank(span.end() - 1)) {
        --span.length;
    }
    return span;
}

// A step of a path: "project[2]" without its slash.
struct Step {
    std::string_view name;
    std::size_t number = 1;
};

std::optional<Step> takeStep(std::string_view& path) {
    if (!path.starts_with('/')) {
        return std::nullopt;
    }
    path.remove_prefix(1);
    Step step{path.substr(0, path.find('/')), 1};
    path.remove_prefix(step.name.size());
    if (const std::size_t bracket = step.name.find('['); bracket != std::string_view::npos) {
        const std::string_view number = step.name.substr(bracket + 1);
        const char* const end = number.data() + number.size();
        const std::from_chars_result read = std::from_chars(number.data(), end, step.number);
        if (read.ec != std::errc() || std::string_view(read.ptr, end) != "]") {
            return std::nullopt;
        }
        step.name = step.name.substr(0, bracket);
    }
    return step.name.empty() || step.number == 0 ? std::nullopt : std::optional(step);
}

}  // namespace

std::string_view ElementIndex::nameOf(ElementNumber element) const {
    const Entry& entry = entries_[element];
    return entry.name == kOtherName ? StartTag(text_, entry.offset).elementName()
                                    : std::string_view(names_[entry.name]);
}

ElementNumber ElementIndex::nextSiblingOf(ElementNumber element) const {
    const Entry& entry = entries_[element];
    return entry.parent != kNoElement && entry.end < entries_[entry.parent].end ? entry.end
                                                                                : kNoElement;
}

ElementNumber ElementIndex::childOf(ElementNumber element, std::string_view name) const {
    ElementNumber child = firstChildOf(element);
    while (child != kNoElement && !isNamed(child, name)) {
        child = nextSiblingOf(child);
    }
    return child;
}

ElementNumber ElementIndex::ancestorOf(ElementNumber element, std::string_view name) const {
    ElementNumber ancestor = parentOf(element);
    while (ancestor != kNoElement && !isNamed(ancestor, name)) {
        ancestor = parentOf(ancestor);
    }
    return ancestor;
}

bool ElementIndex::isClosed(ElementNumber element) const {
    return !std::binary_search(unclosed_.begin(), unclosed_.end(), element);
}

TextSpan ElementIndex::startTagOf(ElementNumber element) const {
    const Entry& entry = entries_[element];
    if (entry.startTagLength != kLongTag) {
        return {entry.offset, entry.startTagLength};
    }
    StartTag tag(text_, entry.offset);
    while (tag.next()) {
    }
    return {entry.offset, tag.end() - entry.offset};
}

TextSpan ElementIndex::contentOf(ElementNumber element) const {
    const TextSpan whole = spanOf(element);
    const std::size_t start = startTagOf(element).end();
    // Nearly all end tags are written without white space.
    const std::size_t plainEndTag = nameOf(element).size() + std::string_view("</>").size();
    if (whole.end() >= start + plainEndTag &&
        text_.substr(whole.end() - plainEndTag).starts_with("</")) {
        return {start, whole.end() - plainEndTag - start};
    }
    const std::string_view inside = text_.substr(start, whole.end() - std::min(start, whole.end()));
    // The last thing in an element that is not closed at once is its end tag.
    const std::size_t endTag = inside.rfind("</");
    return {start, endTag == std::string_view::npos ? inside.size() : endTag};
}

std::optional<TextSpan> ElementIndex::attributeOf(ElementNumber element,
                                                  std::string_view name) const {
    // Most tags of XMEML are a name and no more, which needs no look at the text.
    const Entry& entry = entries_[element];
    constexpr std::size_t kBrackets = std::string_view("</>").size();
    if (entry.name != kOtherName && entry.startTagLength <= names_[entry.name].size() + kBrackets) {
        return std::nullopt;
    }
    StartTag tag(text_, entry.offset);
    while (tag.next()) {
        if (tag.name() == name) {
            return tag.value();
        }
    }
    return std::nullopt;
}

std::string_view ElementIndex::attributeTextOf(ElementNumber element, std::string_view name) const {
    const std::optional<TextSpan> value = attributeOf(element, name);
    return value ? value->of(text_) : std::string_view();
}

std::optional<TextSpan> ElementIndex::textOf(ElementNumber element) const {
    if (firstChildOf(element) != kNoElement) {
        return std::nullopt;
    }
    return trimmedSpan(text_, contentOf(element));
}

std::string_view ElementIndex::childTextOf(ElementNumber element, std::string_view name) const {
    const ElementNumber child = childOf(element, name);
    const std::optional<TextSpan> text = child == kNoElement ? std::nullopt : textOf(child);
    return text ? text->of(text_) : std::string_view();
}

ElementNumber ElementIndex::elementAt(std::size_t offset) const {
    std::size_t first = 0;
    std::size_t count = size();
    while (count != 0) {
        const std::size_t half = count / 2;
        const bool isBefore = entries_[first + half].offset <= offset;
        first += isBefore ? half + 1 : 0;
        count = isBefore ? count - half - 1 : half;
    }
    auto element = first == 0 ? kNoElement : static_cast<ElementNumber>(first - 1);
    // What nothing closes goes on to the end, also where the reading stopped before.
    while (element != kNoElement && offset >= spanOf(element).end() && isClosed(element)) {
        element = parentOf(element);
    }
    return element;
}

std::optional<TextSpan> ElementIndex::find(std::string_view path) const {
    ElementNumber element = kNoElement;
    while (!path.empty()) {
        const std::optional<Step> step = takeStep(path);
        if (!step) {
            return std::nullopt;
        }
        if (step->name.starts_with('@')) {
            const auto value = element == kNoElement || !path.empty()
                                   ? std::nullopt
                                   : attributeOf(element, step->name.substr(1));
            return value;
        }
        ElementNumber child = element != kNoElement ? firstChildOf(element)
                              : size() == 0         ? kNoElement
                                                    : 0;
        std::size_t left = step->number;
        while (child != kNoElement && (!isNamed(child, step->name) || --left != 0)) {
            child = nextSiblingOf(child);
        }
        if (child == kNoElement) {
            return std::nullopt;
        }
        element = child;
    }
    return element == kNoElement ? std::nullopt : std::optional(startTagOf(element));
}

std::uint32_t ElementIndex::hashOf(std::string_view id) {
    return static_cast<std::uint32_t>(std::hash<std::string_view>()(id));
}

std::string_view ElementIndex::idOf(ElementNumber element) const {
    const std::optional<TextSpan> value = attributeOf(element, "id");
    return value ? trimmedSpan(text_, *value).of(text_) : std::string_view();
}

std::pair<std::size_t, std::size_t> ElementIndex::idsWithHash(std::uint32_t hash) const {
    const auto range =
        std::equal_range(ids_.begin(), ids_.end(), Id{hash, 0},
                         [](const Id& left, const Id& right) { return left.hash < right.hash; });
    return {static_cast<std::size_t>(range.first - ids_.begin()),
            static_cast<std::size_t>(range.second - ids_.begin())};
}

ElementNumber ElementIndex::elementWithId(std::string_view id) const {
    const auto [first, end] = idsWithHash(hashOf(id));
    for (std::size_t index = first; index != end; ++index) {
        if (idOf(ids_[index].element) == id) {
            return ids_[index].element;
        }
    }
    return kNoElement;
}

std::vector<ElementNumber> ElementIndex::elementsWithId(std::string_view id) const {
    std::vector<ElementNumber> found;
    const auto [first, end] = idsWithHash(hashOf(id));
    for (std::size_t index = first; index != end; ++index) {
        if (idOf(ids_[index].element) == id) {
            found.push_back(ids_[index].element);
        }
    }
    return found;
}

std::vector<std::vector<ElementNumber>> ElementIndex::repeatedIds(std::size_t limit) const {
    std::vector<std::vector<ElementNumber>> sets;
    for (std::size_t first = 0; first < ids_.size() && sets.size() < limit;) {
        std::size_t end = first + 1;
        while (end < ids_.size() && ids_[end].hash == ids_[first].hash) {
            ++end;
        }
        if (end - first > 1) {
            std::unordered_map<std::string_view, std::vector<ElementNumber>> owners;
            for (std::size_t index = first; index != end; ++index) {
                owners[idOf(ids_[index].element)].push_back(ids_[index].element);
            }
            for (auto& [id, elements] : owners) {
                if (elements.size() > 1) {
                    sets.push_back(std::move(elements));
                }
            }
        }
        first = end;
    }
    std::sort(sets.begin(), sets.end());
    return sets;
}

void ElementIndex::sortIds() {
    // As one number, which is compared without a branch.
    const auto key = [](const Id& id) {
        constexpr unsigned kBits = std::numeric_limits<ElementNumber>::digits;
        return (std::uint64_t{id.hash} << kBits) | id.element;
    };
    std::sort(ids_.begin(), ids_.end(),
              [key](const Id& left, const Id& right) { return key(left) < key(right); });
    ids_.shrink_to_fit();
}

const std::vector<ElementNumber>& ElementIndex::find(const std::vector<Collection>& collections,
                                                     std::string_view name) {
    static const std::vector<ElementNumber> kNone;
    const auto found =
        std::find_if(collections.begin(), collections.end(),
                     [name](const Collection& collection) { return collection.name == name; });
    return found == collections.end() ? kNone : found->elements;
}

const std::vector<ElementNumber>& ElementIndex::elementsWithAttribute(std::string_view name) const {
    return find(withAttribute_, name);
}

const std::vector<ElementNumber>& ElementIndex::elementsNamed(std::string_view name) const {
    return find(named_, name);
}

std::string_view ElementIndex::titleOf(ElementNumber element) const {
    if (kind() != FileKind::xmeml) {
        return attributeTextOf(element, "name");
    }
    // A name stands near the beginning, and an element may have millions of children.
    constexpr int kFirstChildren = 32;
    ElementNumber child = firstChildOf(element);
    for (int count = 0; child != kNoElement && count < kFirstChildren; ++count) {
        if (isNamed(child, "name")) {
            const std::optional<TextSpan> text = textOf(child);
            return text ? text->of(text_) : std::string_view();
        }
        child = nextSiblingOf(child);
    }
    return {};
}

std::size_t ElementIndex::memory() const {
    std::size_t bytes = entries_.size() * sizeof(Entry) + ids_.capacity() * sizeof(Id);
    for (const auto* collections : {&withAttribute_, &named_}) {
        for (const Collection& collection : *collections) {
            bytes += collection.elements.capacity() * sizeof(ElementNumber);
        }
    }
    return bytes;
}

}  // namespace vornic
