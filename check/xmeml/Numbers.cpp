#include <array>
#include <string>

#include "check/xmeml/Rules.h"
#include "formats/xmeml/Number.h"

namespace vornic::xmeml {

namespace {

using std::string;

// Which numbers an element may hold.
enum class Range {
    none,
    // A place: −1 says that it is not set.
    place,
    // A length or a number of a frame: from 0 on.
    length,
    // A count, a size or a number: from 0 on, with nothing to do with time.
    count,
};

constexpr std::array<bool, kNameCount + 1> kMayBeNumber = [] {
    std::array<bool, kNameCount + 1> table{};
    for (const Name name :
         {Name::start, Name::end, Name::in, Name::out, Name::duration, Name::frame,
          Name::trackindex, Name::clipindex, Name::groupindex, Name::width, Name::height,
          Name::depth, Name::channelcount, Name::samplerate}) {
        table[static_cast<std::size_t>(name)] = true;
    }
    return table;
}();

bool hasTimes(Name parent) {
    switch (parent) {
        case Name::clip:
        case Name::clipitem:
        case Name::sequence:
        case Name::generatoritem:
        case Name::transitionitem:
        case Name::multiclip:
        case Name::file:
        case Name::video:
        case Name::audio:
        case Name::marker:
        case Name::filter:
        case Name::timecode:
            return true;
        default:
            return false;
    }
}

Range rangeOf(Name name, Name parent) {
    switch (name) {
        case Name::start:
        case Name::end:
        case Name::in:
        case Name::out:
            return hasTimes(parent) ? Range::place : Range::none;
        case Name::duration:
        case Name::frame:
            return hasTimes(parent) ? Range::length : Range::none;
        case Name::trackindex:
        case Name::clipindex:
        case Name::groupindex:
            return parent == Name::link ? Range::count : Range::none;
        case Name::width:
        case Name::height:
        case Name::depth:
            return parent == Name::samplecharacteristics ? Range::count : Range::none;
        // Wrongly written, they are often swapped, and that is another rule.
        case Name::channelcount:
        case Name::samplerate:
            return Range::count;
        default:
            return Range::none;
    }
}

class NumberCheck {
  public:
    NumberCheck(const View& view, Findings& findings) : view_(view), findings_(findings) {}

    void run(ElementRange range) {
        const ElementIndex& index = view_.index();
        for (ElementNumber element = range.first; element < range.end; ++element) {
            const Name name = view_.nameOf(element);
            if (!kMayBeNumber[static_cast<std::size_t>(name)]) {
                continue;
            }
            const Range allowed = rangeOf(name, view_.nameOf(index.parentOf(element)));
            if (allowed != Range::none && index.isClosed(element)) {
                check(element, allowed);
            }
        }
    }

  private:
    void check(ElementNumber element, Range range) {
        const std::string_view text = view_.textOf(element, storage_);
        const Number number = readNumber(text);
        if (number.form == NumberForm::whole) {
            const std::int64_t least = range == Range::place ? -1 : 0;
            if (number.value < least || (number.value > kMostFrames && range != Range::count)) {
                add("timing-number-range"_rule, "values-number-range"_rule, range,
                    Severity::warning, element, text);
            }
            return;
        }
        if (number.form == NumberForm::wholeWithFraction) {
            return addFraction(element, range, text, number.value);
        }
        // Nothing to misread, and a number that programs round.
        const bool isLight = text.empty() || number.form == NumberForm::fraction;
        add("timing-number"_rule, "values-number"_rule, range,
            isLight ? Severity::warning : Severity::error, element, text);
    }

    Finding* add(RuleId timing, RuleId value, Range range, Severity severity, ElementNumber element,
                 std::string_view text) {
        Finding* const finding =
            findings_.add(range == Range::count ? value : timing, severity, view_.placeOf(element));
        if (finding != nullptr) {
            const ElementIndex& index = view_.index();
            finding->arguments = {{"thing", view_.describe(index.parentOf(element))},
                                  {"element", string(index.nameOf(element))},
                                  {"value", quoted(text)},
                                  {"least", range == Range::place ? "-1" : "0"}};
        }
        return finding;
    }

    void addFraction(ElementNumber element, Range range, std::string_view text,
                     std::int64_t value) {
        const RuleId rule = "timing-number-with-fraction"_rule;
        if (Finding* const finding = add(rule, rule, range, Severity::info, element, text)) {
            const TextSpan place = view_.placeOf(element);
            finding->arguments.push_back({"right", std::to_string(value)});
            finding->mend = Mend{Confidence::safe,
                                 "write " + std::to_string(value),
                                 {{place.offset, place.length, std::to_string(value)}}};
        }
    }

    const View& view_;
    Findings& findings_;
    string storage_;
};

}  // namespace

void checkNumbers(const View& view, ElementRange range, Findings& findings) {
    NumberCheck(view, findings).run(range);
}

}  // namespace vornic::xmeml
