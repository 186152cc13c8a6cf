#include "salvage/AfterCut.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>

#include "formats/fcpxml/Definition.h"

namespace vornic::salvage {

namespace {

using fcpxml::ContentKind;
using fcpxml::ContentModel;
using fcpxml::Definition;
using fcpxml::ElementDefinition;

// Deeper elements are no project's.
constexpr std::size_t kDeepest = 200;

// The last element and those around it, the root first, but for those that end in front of a place.
std::vector<ElementNumber> lastBranch(const ElementIndex& copy, std::size_t end) {
    std::vector<ElementNumber> branch;
    for (auto element = static_cast<ElementNumber>(copy.size() - 1);
         element != kNoElement && branch.size() < kDeepest; element = copy.parentOf(element)) {
        const TextSpan span = copy.spanOf(element);
        if (span.offset + span.length > end) {
            branch.push_back(element);
        }
    }
    std::reverse(branch.begin(), branch.end());
    return branch;
}

// Where more can be put into an element; 0 for `<name/>`.
std::size_t endOfContent(const ElementIndex& copy, ElementNumber element) {
    const TextSpan tag = copy.startTagOf(element);
    const bool isClosedAtOnce = tag.of(copy.text()).ends_with("/>");
    const TextSpan content = copy.contentOf(element);
    return isClosedAtOnce ? 0 : content.offset + content.length;
}

bool mayBeEmpty(const ElementDefinition& definition) {
    const bool needsAttribute =
        std::any_of(definition.attributes.begin(), definition.attributes.end(),
                    [](const fcpxml::AttributeDefinition& attribute) {
                        return attribute.defaultKind == fcpxml::AttributeDefault::required;
                    });
    const bool needsChild = definition.kind == ContentKind::elements &&
                            !definition.content->mayEnd(ContentModel::kStart);
    return !needsAttribute && !needsChild;
}

// The child that completes an element of FCPXML; "" when none does.
std::string_view missingChild(const ElementIndex& copy, ElementNumber element,
                              const Definition& definitions) {
    const ElementDefinition* const definition = definitions.element(copy.nameOf(element));
    if (definition == nullptr || definition->kind != ContentKind::elements) {
        return "";
    }
    const ContentModel& model = *definition->content;
    ContentModel::State state = ContentModel::kStart;
    const fcpxml::Catalogue& catalogue = fcpxml::Catalogue::shared();
    for (ElementNumber child = copy.firstChildOf(element); child != kNoElement;
         child = copy.nextSiblingOf(child)) {
        const fcpxml::ElementId id = catalogue.idOf(copy.nameOf(child));
        state = id == fcpxml::kNoElement ? ContentModel::kRefused : model.next(state, id);
        if (state == ContentModel::kRefused) {
            return "";
        }
    }
    if (model.mayEnd(state)) {
        return "";
    }
    for (const fcpxml::ElementId id : model.possible(state)) {
        const ElementDefinition* const child = definitions.element(id);
        if (child != nullptr && model.mayEnd(model.next(state, id)) && mayBeEmpty(*child)) {
            return child->name;
        }
    }
    return "";
}

std::optional<std::int64_t> numberIn(const ElementIndex& copy, ElementNumber element,
                                     std::string_view child) {
    const std::string_view text = copy.childTextOf(element, child);
    std::int64_t number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = !text.empty() && read.ec == std::errc() &&
                         read.ptr == text.data() + text.size() && number >= 0;
    return isWhole ? std::optional<std::int64_t>(number) : std::nullopt;
}

class PartsOfXMEML {
  public:
    explicit PartsOfXMEML(const ElementIndex& copy) : copy_(copy) {}

    void addFor(ElementNumber element, std::vector<AddedPart>& parts) {
        const std::string_view name = copy_.nameOf(element);
        const ElementNumber rate = copy_.childOf(element, "rate");
        const bool needsRate =
            name == "sequence" || name == "clipitem" || name == "clip" || name == "file";
        if (needsRate && rate == kNoElement && !rate_.empty()) {
            add(element, "rate", std::string(rate_), parts);
        }
        if (rate != kNoElement && copy_.childOf(rate, "timebase") != kNoElement) {
            rate_ = copy_.spanOf(rate).of(copy_.text());
        }
        if (name == "clipitem" && copy_.childOf(element, "end") == kNoElement) {
            addEnd(element, parts);
        }
    }

  private:
    void addEnd(ElementNumber element, std::vector<AddedPart>& parts) {
        const auto start = numberIn(copy_, element, "start");
        const auto in = numberIn(copy_, element, "in");
        const auto out = numberIn(copy_, element, "out");
        if (start && in && out && *in < *out) {
            add(element, "end", "<end>" + std::to_string(*start + (*out - *in)) + "</end>", parts);
        }
    }

    void add(ElementNumber element, std::string_view part, std::string text,
             std::vector<AddedPart>& parts) const {
        if (const std::size_t end = endOfContent(copy_, element); end != 0) {
            parts.push_back({end, std::move(text), copy_.nameOf(element), part});
        }
    }

    const ElementIndex& copy_;
    // The nearest one around.
    std::string_view rate_;
};

}  // namespace

std::vector<AddedPart> partsAfterCut(const ElementIndex& copy, std::size_t end) {
    std::vector<AddedPart> parts;
    if (copy.size() == 0) {
        return parts;
    }
    PartsOfXMEML xmeml(copy);
    const auto version = fcpxml::Version::parse(copy.version());
    for (const ElementNumber element : lastBranch(copy, end)) {
        if (copy.kind() == FileKind::xmeml) {
            xmeml.addFor(element, parts);
        } else if (const std::size_t place = endOfContent(copy, element); version && place != 0) {
            const std::string_view child = missingChild(copy, element, Definition::of(*version));
            if (!child.empty()) {
                parts.push_back(
                    {place, "<" + std::string(child) + "/>", copy.nameOf(element), child});
            }
        }
    }
    std::stable_sort(parts.begin(), parts.end(), [](const AddedPart& left, const AddedPart& right) {
        return left.offset < right.offset;
    });
    return parts;
}

}  // namespace vornic::salvage
