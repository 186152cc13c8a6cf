#include "check/fcpxml/StructureMends.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "check/fcpxml/Naming.h"
#include "check/fcpxml/RepeatedIds.h"
#include "formats/fcpxml/Definition.h"

namespace vornic {

namespace {

using fcpxml::Catalogue;
using fcpxml::ContentModel;
using fcpxml::Definition;
using fcpxml::ElementId;

constexpr fcpxml::Version kFirstWithMediaRep(9);
constexpr std::string_view kBlanks = " \t\r\n";

std::optional<Mend> standaloneMend(std::string_view text) {
    const std::string_view declaration = text.substr(0, text.find("?>"));
    const std::size_t name = declaration.find("standalone");
    const std::size_t quote = declaration.find_first_of("\"'", name);
    if (name == std::string_view::npos || quote == std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t end = declaration.find(declaration[quote], quote + 1);
    const std::size_t start = declaration.find_last_not_of(kBlanks, name - 1) + 1;
    return end == std::string_view::npos
               ? std::nullopt
               : std::optional(Mend{Confidence::safe,
                                    "take standalone=\"yes\" out of the XML declaration",
                                    {{start, end + 1 - start, ""}}});
}

// The validator notices it where the first default comes in.
void placeInDeclaration(Finding& finding) {
    if (finding.mend) {
        const Edit& edit = finding.mend->edits[0];
        finding.where.offset = edit.offset + 1;
        finding.where.length = edit.length - 1;
    }
}

std::optional<Mend> rateMend(const ElementIndex& index, TextSpan place) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 7> kRates = {
        {{"32000", "32k"},
         {"44100", "44.1k"},
         {"48000", "48k"},
         {"88200", "88.2k"},
         {"96000", "96k"},
         {"176400", "176.4k"},
         {"192000", "192k"}}};
    const ElementNumber element = index.elementAt(place.offset);
    if (element == kNoElement || index.attributeOf(element, "audioRate") != place) {
        return std::nullopt;
    }
    for (const auto& [hertz, name] : kRates) {
        if (place.of(index.text()) == hertz) {
            return Mend{Confidence::safe,
                        "write the same sample rate as " + std::string(name),
                        {{place.offset, place.length, std::string(name)}}};
        }
    }
    return std::nullopt;
}

// The elder siblings of an element whose model has an order.
class Siblings {
  public:
    Siblings(const ElementIndex& index, const ContentModel& model, ElementNumber element)
        : model_(model), id_(Catalogue::shared().idOf(index.nameOf(element))) {
        ContentModel::State state = ContentModel::kStart;
        for (ElementNumber sibling = index.firstChildOf(index.parentOf(element));
             sibling != element && elements_.size() <= kMost;
             sibling = index.nextSiblingOf(sibling)) {
            const ElementId id = Catalogue::shared().idOf(index.nameOf(sibling));
            const ContentModel::State next =
                id == fcpxml::kNoElement ? ContentModel::kRefused : model.next(state, id);
            // What is wrong itself is passed, as the comparison with the definition does.
            if (next != ContentModel::kRefused) {
                elements_.push_back(sibling);
                ids_.push_back(id);
                states_.push_back(state);
                state = next;
            }
        }
    }

    // The one that the element has to stand before; nothing where that is none, or one of several.
    [[nodiscard]] std::optional<ElementNumber> onlyPlace() const {
        std::optional<ElementNumber> place;
        if (id_ == fcpxml::kNoElement || elements_.size() > kMost) {
            return std::nullopt;
        }
        for (std::size_t index = 0; index < elements_.size(); ++index) {
            if (fitsBefore(index)) {
                if (place) {
                    return std::nullopt;
                }
                place = elements_[index];
            }
        }
        return place;
    }

  private:
    // Looking for a place takes the square of this.
    static constexpr std::size_t kMost = 200;

    [[nodiscard]] bool fitsBefore(std::size_t index) const {
        ContentModel::State state = model_.next(states_[index], id_);
        for (; index < ids_.size() && state != ContentModel::kRefused; ++index) {
            state = model_.next(state, ids_[index]);
        }
        return state != ContentModel::kRefused;
    }

    const ContentModel& model_;
    ElementId id_;
    std::vector<ElementNumber> elements_;
    std::vector<ElementId> ids_;
    // Before each of them.
    std::vector<ContentModel::State> states_;
};

std::optional<Mend> orderMend(const ElementIndex& index, const Definition& definition,
                              std::size_t offset) {
    const ElementNumber element = index.elementAt(offset);
    if (element == kNoElement || index.spanOf(element).offset != offset ||
        index.parentOf(element) == kNoElement) {
        return std::nullopt;
    }
    const auto* const parent = definition.element(index.nameOf(index.parentOf(element)));
    if (parent == nullptr || !parent->content) {
        return std::nullopt;
    }
    const std::optional<ElementNumber> before =
        Siblings(index, *parent->content, element).onlyPlace();
    if (!before) {
        return std::nullopt;
    }
    const TextSpan span = index.spanOf(element);
    const std::string_view text = index.text();
    const std::size_t blanks = text.find_last_not_of(kBlanks, span.offset - 1) + 1;
    std::string moved(span.of(text));
    moved += text.substr(blanks, span.offset - blanks);
    return Mend{
        Confidence::safe,
        "move it before <" + std::string(index.nameOf(*before)) + ">",
        {{index.spanOf(*before).offset, 0, std::move(moved)}, {blanks, span.end() - blanks, ""}}};
}

// Puts the path of an asset where versions from 1.9 on have it.
std::optional<Mend> pathMend(const ElementIndex& index, std::size_t offset) {
    const ElementNumber asset = index.elementAt(offset);
    const std::optional<TextSpan> path =
        asset == kNoElement ? std::nullopt : index.attributeOf(asset, "src");
    std::vector<Edit> edits = path && index.isNamed(asset, "asset") ? removalOf(index, asset, "src")
                                                                    : std::vector<Edit>();
    if (edits.empty() || offset < edits[0].offset || offset >= path->end()) {
        return std::nullopt;
    }
    const std::string_view value = path->of(index.text());
    const ElementNumber part = index.childOf(asset, "media-rep");
    if (part != kNoElement) {
        return index.attributeTextOf(part, "src") == value
                   ? std::optional(
                         Mend{Confidence::ask, "take the attribute src out", std::move(edits)})
                   : std::nullopt;
    }
    const TextSpan tag = index.startTagOf(asset);
    const ElementNumber first = index.firstChildOf(asset);
    const char quote = value.find('"') == std::string_view::npos ? '"' : '\'';
    std::string text = "<media-rep kind=\"original-media\" src=";
    text.append(1, quote).append(value).append(1, quote);
    if (tag.of(index.text()).ends_with("/>")) {
        edits.push_back({tag.end() - 2, 2, ">" + text + "/></asset>"});
    } else if (first != kNoElement && index.isNamed(first, "bookmark")) {
        // Which goes with the path.
        edits.push_back({index.spanOf(first).offset, 0, text + ">"});
        edits.push_back({index.spanOf(first).end(), 0, "</media-rep>"});
    } else {
        edits.push_back({tag.end(), 0, text + "/>"});
    }
    return Mend{Confidence::ask, "move the path into a media-rep", std::move(edits)};
}

bool hasSecond(const ElementIndex& index, ElementNumber element) {
    ElementNumber next = index.nextSiblingOf(element);
    while (next != kNoElement && index.nameOf(next) != index.nameOf(element)) {
        next = index.nextSiblingOf(next);
    }
    return next != kNoElement;
}

// Puts the path of a media-rep, and its bookmark, where versions before 1.9 have them. What else a
// media-rep says, they cannot.
std::optional<Mend> attributeMend(const ElementIndex& index, const Definition& definition,
                                  std::size_t offset) {
    const ElementNumber part = index.elementAt(offset);
    const bool isPart = part != kNoElement && index.isNamed(part, "media-rep") &&
                        index.parentOf(part) != kNoElement &&
                        index.isNamed(index.parentOf(part), "asset");
    const std::optional<TextSpan> path = isPart ? index.attributeOf(part, "src") : std::nullopt;
    const ElementNumber asset = isPart ? index.parentOf(part) : kNoElement;
    // Which of several is meant, nothing says.
    if (!path || index.childOf(asset, "media-rep") != part || hasSecond(index, part)) {
        return std::nullopt;
    }
    const std::string_view text = index.text();
    const std::optional<TextSpan> own = index.attributeOf(asset, "src");
    if (own && own->of(text) != path->of(text)) {
        return std::nullopt;
    }
    std::vector<Edit> edits;
    if (!own) {
        const char quote = text[path->end()] == '\'' ? '\'' : '"';
        const std::size_t behind = index.startTagOf(asset).offset + 1 + index.nameOf(asset).size();
        edits.push_back({behind, 0, " src=" + (quote + std::string(path->of(text)) + quote)});
    }
    const TextSpan span = index.spanOf(part);
    const ElementNumber bookmark = index.childOf(part, "bookmark");
    if (bookmark != kNoElement) {
        const TextSpan kept = index.spanOf(bookmark);
        edits.push_back({span.offset, kept.offset - span.offset, ""});
        edits.push_back({kept.end(), span.end() - kept.end(), ""});
    } else {
        const std::size_t blanks = text.find_last_not_of(kBlanks, span.offset - 1) + 1;
        edits.push_back({blanks, span.end() - blanks, ""});
    }
    // An element that has to be empty may not even hold a line break.
    if (definition.element("asset")->kind == fcpxml::ContentKind::empty) {
        const TextSpan content = index.contentOf(asset);
        const std::size_t first = text.find_first_not_of(kBlanks, content.offset);
        const std::size_t behind = text.find_first_not_of(kBlanks, span.end());
        if (first != span.offset || behind != content.end() || bookmark != kNoElement) {
            return std::nullopt;
        }
        edits.back() = {content.offset, content.length, ""};
    }
    return Mend{Confidence::ask, "move the path into the attribute src of its asset",
                std::move(edits)};
}

}  // namespace

void addStructureMends(const ElementIndex& index, fcpxml::Version version, Findings& findings) {
    const Definition& definition = Definition::of(version);
    RepeatedIds repeatedIds(index);
    for (Finding& finding : findings.kept()) {
        const TextSpan place{finding.where.offset, finding.where.length};
        if (finding.rule == "structure-element-order"_rule) {
            finding.mend = orderMend(index, definition, place.offset);
        } else if (finding.rule == "structure-value-not-listed"_rule) {
            finding.mend = rateMend(index, place);
        } else if (finding.rule == "structure-attribute-of-other-version"_rule) {
            if (version >= kFirstWithMediaRep) {
                finding.mend = pathMend(index, place.offset);
            }
        } else if (finding.rule == "structure-element-of-other-version"_rule) {
            if (version < kFirstWithMediaRep) {
                finding.mend = attributeMend(index, definition, place.offset);
            }
        } else if (finding.rule == "structure-repeated-id"_rule) {
            finding.mend = repeatedIds.mendOf(index.elementAt(place.offset));
        } else if (finding.rule == "values-standalone"_rule) {
            finding.mend = standaloneMend(index.text());
            placeInDeclaration(finding);
        }
    }
}

}  // namespace vornic
