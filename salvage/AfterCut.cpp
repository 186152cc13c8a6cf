#include "salvage/AfterCut.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <initializer_list>
#include <optional>

#include "formats/fcpxml/Definition.h"
#include "salvage/LeastContent.h"

namespace vornic::salvage {

namespace {

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

std::optional<std::int64_t> numberIn(const ElementIndex& copy, ElementNumber element,
                                     std::string_view child) {
    const std::string_view text = copy.childTextOf(element, child);
    std::int64_t number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = !text.empty() && read.ec == std::errc() &&
                         read.ptr == text.data() + text.size() && number >= 0;
    return isWhole ? std::optional<std::int64_t>(number) : std::nullopt;
}

bool isAnyOf(std::string_view name, std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// What an element of XMEML lacks, from what stands around it and in it.
class PartsOfXMEML {
  public:
    PartsOfXMEML(const ElementIndex& copy, std::vector<AddedPart>& parts)
        : copy_(copy), parts_(parts) {}

    // To be called for an element behind those around it.
    void addFor(ElementNumber element) {
        const std::string_view name = copy_.nameOf(element);
        addRate(element);
        if (name == "clipitem") {
            addOfMedia(element);
            addSpan(element);
        } else if (name == "sequence") {
            addDuration(element);
        } else if (name == "rate") {
            addTimebase(element);
        }
    }

  private:
    [[nodiscard]] bool has(ElementNumber element, std::string_view child) const {
        return copy_.childOf(element, child) != kNoElement;
    }

    void addRate(ElementNumber element) {
        const ElementNumber rate = copy_.childOf(element, "rate");
        if (rate != kNoElement && has(rate, "timebase")) {
            rate_ = rate;
        } else if (rate == kNoElement && rate_ != kNoElement &&
                   isAnyOf(copy_.nameOf(element),
                           {"sequence", "clipitem", "clip", "file", "timecode"})) {
            add(element, "rate", std::string(copy_.spanOf(rate_).of(copy_.text())));
        }
    }

    void addTimebase(ElementNumber rate) {
        if (!has(rate, "timebase") && rate_ != kNoElement) {
            const ElementNumber around = copy_.childOf(rate_, "timebase");
            add(rate, "timebase", std::string(copy_.spanOf(around).of(copy_.text())));
        }
    }

    // A clip item is called like its file, and its media are as long.
    void addOfMedia(ElementNumber item) {
        ElementNumber file = copy_.childOf(item, "file");
        if (file != kNoElement && copy_.firstChildOf(file) == kNoElement) {
            file = copy_.elementWithId(copy_.attributeTextOf(file, "id"));
        }
        for (const std::string_view part : {"name", "duration"}) {
            const ElementNumber told = file == kNoElement ? kNoElement : copy_.childOf(file, part);
            if (told != kNoElement && !has(item, part)) {
                add(item, part, std::string(copy_.spanOf(told).of(copy_.text())));
            }
        }
    }

    // Of start, end, in and out three tell the fourth.
    void addSpan(ElementNumber item) {
        const auto start = numberIn(copy_, item, "start");
        const auto end = numberIn(copy_, item, "end");
        const auto in = numberIn(copy_, item, "in");
        const auto out = numberIn(copy_, item, "out");
        if (start && in && out && *in < *out) {
            addNumber(item, "end", *start + (*out - *in));
        } else if (start && end && in && *start < *end) {
            addNumber(item, "out", *in + (*end - *start));
        }
    }

    // Up to the end of the last clip item that is left.
    void addDuration(ElementNumber sequence) {
        std::int64_t last = 0;
        for (ElementNumber item = sequence + 1; item < copy_.endOf(sequence); ++item) {
            if (copy_.isNamed(item, "clipitem")) {
                last = std::max(last, numberIn(copy_, item, "end").value_or(0));
            }
        }
        if (last > 0) {
            addNumber(sequence, "duration", last);
        }
    }

    void addNumber(ElementNumber element, std::string_view part, std::int64_t number) {
        if (!has(element, part)) {
            const std::string name(part);
            add(element, part, "<" + name + ">" + std::to_string(number) + "</" + name + ">");
        }
    }

    void add(ElementNumber element, std::string_view part, std::string text) {
        if (const std::size_t end = endOfContent(copy_, element); end != 0) {
            parts_.push_back({end, std::move(text), copy_.nameOf(element), part});
        }
    }

    const ElementIndex& copy_;
    std::vector<AddedPart>& parts_;
    // The nearest one around.
    ElementNumber rate_ = kNoElement;
};

void addPartsOfFCPXML(const ElementIndex& copy, const std::vector<ElementNumber>& branch,
                      std::vector<AddedPart>& parts) {
    const auto version = fcpxml::Version::parse(copy.version());
    if (!version) {
        return;
    }
    const LeastContent content(copy, fcpxml::Definition::of(*version));
    for (const ElementNumber element : branch) {
        const std::size_t place = endOfContent(copy, element);
        auto missing = place == 0 ? std::nullopt : content.missingIn(element);
        if (missing) {
            parts.push_back(
                {place, std::move(missing->text), copy.nameOf(element), missing->first});
        }
    }
}

}  // namespace

std::vector<AddedPart> partsAfterCut(const ElementIndex& copy, std::size_t end) {
    std::vector<AddedPart> parts;
    if (copy.size() == 0) {
        return parts;
    }
    const std::vector<ElementNumber> branch = lastBranch(copy, end);
    if (copy.kind() == FileKind::xmeml) {
        PartsOfXMEML xmeml(copy, parts);
        for (const ElementNumber element : branch) {
            xmeml.addFor(element);
        }
    } else {
        addPartsOfFCPXML(copy, branch, parts);
    }
    std::stable_sort(parts.begin(), parts.end(), [](const AddedPart& left, const AddedPart& right) {
        return left.offset < right.offset;
    });
    return parts;
}

}  // namespace vornic::salvage
