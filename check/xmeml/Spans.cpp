#include <algorithm>
#include <string>

#include "check/xmeml/Rules.h"
#include "formats/xmeml/Number.h"
#include "formats/xmeml/SpeedEffect.h"

namespace vornic::xmeml {

namespace {

using std::string;

// A pair of elements that say where something begins and where it ends.
struct Ends {
    Name first;
    Name last;
};

class SpanCheck {
  public:
    SpanCheck(const View& view, Findings& findings) : view_(view), findings_(findings) {}

    void run(ElementRange range) {
        for (ElementNumber element = range.first; element < range.end; ++element) {
            const Name name = view_.nameOf(element);
            const bool hasPlace = isOfTrack(element) || name == Name::filter;
            if (!hasPlace && name != Name::clip && name != Name::sequence && name != Name::marker) {
                continue;
            }
            const Parts parts(view_, element);
            if (hasPlace) {
                check(element, parts, {Name::start, Name::end}, "timing-start-end"_rule);
            }
            check(element, parts, {Name::in, Name::out}, "timing-in-out"_rule);
        }
    }

  private:
    void check(ElementNumber element, const Parts& parts, Ends ends, RuleId rule) {
        const std::optional<std::int64_t> first = numberOf(parts[ends.first]);
        const std::optional<std::int64_t> last = numberOf(parts[ends.last]);
        if (!first || !last || *first < 0 || *last < 0 || *first < *last ||
            (*first == *last && !isOfTrack(element))) {
            return;
        }
        Finding* const finding = findings_.add(rule, weightOf(element, *first == *last),
                                               view_.placeOf(parts[ends.last]));
        if (finding != nullptr) {
            finding->arguments = {{"thing", view_.describe(element)},
                                  {"first", std::to_string(*first)},
                                  {"last", std::to_string(*last)}};
        }
    }

    [[nodiscard]] std::optional<std::int64_t> numberOf(ElementNumber element) {
        return element == kNoElement ? std::nullopt
                                     : readNumber(view_.textOf(element, storage_)).whole();
    }

    [[nodiscard]] bool isOfTrack(ElementNumber element) const {
        const Name name = view_.nameOf(element);
        return name == Name::clipitem || name == Name::generatoritem ||
               name == Name::transitionitem;
    }

    // Markers and filters may hold nothing that a timeline needs, and a clip that runs backwards
    // has its own sense of before and after.
    [[nodiscard]] Severity weightOf(ElementNumber element, bool isEmpty) const {
        const bool isLight = isEmpty || !isOfTrack(element) || hasSpeedEffect(view_, element);
        return isLight ? Severity::warning : Severity::error;
    }

    const View& view_;
    Findings& findings_;
    string storage_;
};

}  // namespace

void checkSpans(const View& view, ElementRange range, Findings& findings) {
    SpanCheck(view, findings).run(range);
}

}  // namespace vornic::xmeml
