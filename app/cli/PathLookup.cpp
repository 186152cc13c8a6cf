#include "app/cli/PathLookup.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "base/FormatString.h"
#include "base/TerminalText.h"
#include "base/Utf8.h"
#include "check/NearestName.h"
#include "formats/ElementIndexBuilder.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/TextDecoding.h"
#include "xml/text/TextPlace.h"

namespace vornic {

namespace {

constexpr std::size_t kLinesAround = 2;
// Some exporters write a file as one line. That much of it is shown, with the place inside.
constexpr std::size_t kWidth = 100;
constexpr std::size_t kLeftOfPlace = 40;
constexpr std::size_t kRightOfPlace = 20;

struct Step {
    // With "@" in front of an attribute's.
    std::string_view name;
    std::size_t number = 1;
    // The path up to here.
    std::string_view path;
};

// "1" to "999999999", else 0.
std::size_t stepNumber(std::string_view digits) {
    constexpr std::size_t kMostDigits = 9;
    const bool isNumber = !digits.empty() && digits.size() <= kMostDigits &&
                          digits.find_first_not_of("0123456789") == std::string_view::npos;
    return isNumber ? std::stoul(std::string(digits)) : 0;
}

std::optional<Step> stepOf(std::string_view text) {
    const std::size_t bracket = text.find('[');
    Step step{text.substr(0, bracket), 1, {}};
    if (bracket != std::string_view::npos) {
        const bool isClosed = text.ends_with(']') && !step.name.starts_with('@');
        step.number =
            isClosed ? stepNumber(text.substr(bracket + 1, text.size() - bracket - 2)) : 0;
    }
    const std::size_t shortest = step.name.starts_with('@') ? 2 : 1;
    return step.name.size() < shortest || step.number == 0 ? std::nullopt : std::optional(step);
}

// The steps of a path, or nothing when it is none.
std::optional<std::vector<Step>> stepsOf(std::string_view path) {
    std::vector<Step> steps;
    std::size_t at = 0;
    while (at < path.size()) {
        const bool isAfterAttribute = !steps.empty() && steps.back().name.starts_with('@');
        if (path[at] != '/' || isAfterAttribute) {
            return std::nullopt;
        }
        const std::size_t end = std::min(path.find('/', at + 1), path.size());
        std::optional<Step> step = stepOf(path.substr(at + 1, end - at - 1));
        if (!step) {
            return std::nullopt;
        }
        step->path = path.substr(0, end);
        steps.push_back(*step);
        at = end;
    }
    const bool hasElement = !steps.empty() && !steps[0].name.starts_with('@');
    return hasElement ? std::optional(std::move(steps)) : std::nullopt;
}

// One line of the file, cut to what fits a screen.
class ShownLine {
  public:
    /// @param column from 1; what is shown lies around it.
    ShownLine(std::string_view line, std::size_t column) {
        std::size_t at = 0;
        std::size_t number = 1;
        const std::size_t first = column > kWidth - kRightOfPlace ? column - kLeftOfPlace : 1;
        text_ = first > 1 ? "…" : "";
        width_ = first > 1 ? 1 : 0;
        for (; at < line.size() && number < first + kWidth; ++number) {
            const std::size_t length = utf8CharacterAt(line, at).length;
            if (number == column) {
                caret_ = width_;
            }
            if (number >= first) {
                add(line.substr(at, length));
            }
            at += length;
        }
        if (number <= column) {
            caret_ = width_;
        }
        text_ += at < line.size() ? "…" : "";
    }

    [[nodiscard]] const std::string& text() const { return text_; }
    /// How many characters stand before the place.
    [[nodiscard]] std::size_t caret() const { return caret_; }

  private:
    void add(std::string_view character) {
        const std::string shown = character == "\t" ? " " : escapedForTerminal(character);
        text_ += shown;
        width_ += shown.size() == character.size() ? 1 : shown.size();
    }

    std::string text_;
    std::size_t width_ = 0;
    std::size_t caret_ = 0;
};

// Lines of a text by their numbers.
class Lines {
  public:
    explicit Lines(std::string_view text) : text_(text) {}

    /// The line around an offset and those before and behind it, with a mark under the place.
    [[nodiscard]] std::string around(TextSpan span, std::size_t number, std::size_t column) const {
        std::size_t start = startOf(span.offset);
        std::size_t first = number;
        while (first > 1 && number - first < kLinesAround) {
            start = startOf(endBefore(start));
            --first;
        }
        std::string shown;
        for (std::size_t line = first; line <= number + kLinesAround && start <= text_.size();
             ++line) {
            const std::size_t end = std::min(text_.find_first_of("\r\n", start), text_.size());
            if (start == text_.size() && line > number) {
                break;
            }
            const ShownLine cut(text_.substr(start, end - start), line == number ? column : 1);
            shown += formatString("%7zu | %@\n", line, cut.text());
            if (line == number) {
                shown += formatString("        | %@^\n", std::string(cut.caret(), ' '));
            }
            start = end + (text_.substr(end).starts_with("\r\n") ? 2 : 1);
        }
        return shown;
    }

  private:
    [[nodiscard]] std::size_t startOf(std::size_t offset) const {
        const std::size_t end =
            offset == 0 ? std::string_view::npos : text_.find_last_of("\r\n", offset - 1);
        return end == std::string_view::npos ? 0 : end + 1;
    }
    // The end of the line before the one that starts there.
    [[nodiscard]] std::size_t endBefore(std::size_t start) const {
        const bool isPair = start > 1 && text_.substr(start - 2, 2) == "\r\n";
        return start - (isPair ? 2 : 1);
    }

    std::string_view text_;
};

class Lookup {
  public:
    Lookup(const ElementIndex& index, std::string_view name) : index_(index), name_(name) {}

    PathLookup run(const std::vector<Step>& steps) const {
        const std::string_view path = steps.back().path;
        if (const std::optional<TextSpan> span = index_.find(path)) {
            return {true, place(*span, path)};
        }
        const auto missing = std::find_if(steps.begin(), steps.end(), [this](const Step& step) {
            return !index_.find(step.path);
        });
        if (missing == steps.begin()) {
            return {false, withoutRoot(*missing)};
        }
        return {false, end(*std::prev(missing), *missing)};
    }

  private:
    std::string place(TextSpan span, std::string_view path) const {
        TextPlace at(index_.text());
        at.moveTo(span.offset);
        return formatString("%@(%zu,%zu): %@\n", escapedForTerminal(name_), at.line(), at.column(),
                            escapedForTerminal(path)) +
               Lines(index_.text()).around(span, at.line(), at.column());
    }

    std::string withoutRoot(const Step& step) const {
        if (index_.size() == 0) {
            return formatString("%@: the file has no root element\n", escapedForTerminal(name_));
        }
        return formatString("%@: the root element is <%@>, not %@\n", escapedForTerminal(name_),
                            index_.nameOf(0), escapedForTerminal(step.path.substr(1)));
    }

    // Where the path ends, and what is there instead.
    std::string end(const Step& last, const Step& missing) const {
        const std::size_t offset = index_.find(last.path)->offset;
        const ElementNumber element = index_.elementAt(offset);
        const std::string why = missing.name.starts_with('@')
                                    ? whyNoAttribute(element, missing.name.substr(1))
                                    : whyNoChild(element, missing);
        return formatString("%@: the path ends at %@: %@\n", escapedForTerminal(name_),
                            escapedForTerminal(last.path), escapedForTerminal(why)) +
               place({offset, 1}, last.path);
    }

    std::string whyNoAttribute(ElementNumber element, std::string_view name) const {
        return formatString("<%@> has no attribute %@", index_.nameOf(element), name);
    }

    std::string whyNoChild(ElementNumber element, const Step& missing) const {
        std::size_t count = 0;
        std::vector<std::string_view> names;
        for (ElementNumber child = index_.firstChildOf(element); child != kNoElement;
             child = index_.nextSiblingOf(child)) {
            const std::string_view name = index_.nameOf(child);
            count += name == missing.name ? 1 : 0;
            if (names.size() < kNamesLookedAt &&
                std::find(names.begin(), names.end(), name) == names.end()) {
                names.push_back(name);
            }
        }
        if (count != 0) {
            return formatString("it has %zu <%@>, not %zu", count, missing.name, missing.number);
        }
        const std::string_view nearest = nearestName(missing.name, names);
        return formatString("there is no <%@> in it", missing.name) +
               (nearest.empty() ? "" : formatString("; perhaps <%@> is meant", nearest));
    }

    static constexpr std::size_t kNamesLookedAt = 200;

    const ElementIndex& index_;
    std::string_view name_;
};

}  // namespace

bool isElementPath(std::string_view text) {
    return stepsOf(text).has_value();
}

PathLookup lookUpPath(std::string bytes, std::string_view name, std::string_view path) {
    const std::optional<std::vector<Step>> steps = stepsOf(path);
    ErrorSlot error;
    const std::optional<DecodedText> source = decodeXMLText(std::move(bytes), error);
    if (!steps || !source) {
        const std::string why = steps ? error->localizedDescription() : "that is no path";
        return {false, formatString("%@: %@\n", escapedForTerminal(name), why), source.has_value()};
    }
    ElementIndexBuilder builder(source->text);
    UnheardXMLMends mends;
    const XMLReading reading = readXML(source->text, XMLMode::tolerant, &builder, &mends);
    const ElementIndex index = std::move(builder).finish();
    PathLookup lookup = Lookup(index, name).run(*steps);
    if (!lookup.isFound && reading.fault) {
        lookup.text += formatString("The file can be read only this far: %@\n",
                                    escapedForTerminal(reading.fault->localizedDescription()));
    }
    return lookup;
}

}  // namespace vornic
