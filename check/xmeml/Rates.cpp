#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "check/xmeml/Rules.h"
#include "formats/xmeml/Number.h"
#include "formats/xmeml/Rate.h"
#include "xml/text/TextPlace.h"

namespace vornic::xmeml {

namespace {

using std::string;

// A timebase as people write it who mean a rate with a fraction, and what the format has for it.
struct Meant {
    std::string_view written;
    std::string_view timebase;
};

constexpr std::array kFractions = {
    Meant{"23.976", "24"},     Meant{"23.98", "24"},      Meant{"23.97", "24"},
    Meant{"29.97", "30"},      Meant{"47.952", "48"},     Meant{"47.95", "48"},
    Meant{"59.94", "60"},      Meant{"24000/1001", "24"}, Meant{"30000/1001", "30"},
    Meant{"48000/1001", "48"}, Meant{"60000/1001", "60"},
};
// What is left of such a rate when the fraction is cut off.
constexpr std::array kCutOff = {Meant{"23", "24"}, Meant{"29", "30"}, Meant{"47", "48"},
                                Meant{"59", "60"}};

template <std::size_t Size>
std::string_view timebaseFor(const std::array<Meant, Size>& list, std::string_view written) {
    for (const Meant& meant : list) {
        // "23.976024" is meant as "23.976" is.
        const bool isFraction = meant.written.size() > 2 && meant.written.find('.') == 2;
        if (written == meant.written || (isFraction && written.starts_with(meant.written))) {
            return meant.timebase;
        }
    }
    return {};
}

bool isUsual(std::int64_t timebase) {
    constexpr std::array<std::int64_t, 6> kUsual = {24, 25, 30, 48, 50, 60};
    return std::find(kUsual.begin(), kUsual.end(), timebase) != kUsual.end();
}

class RateCheck {
  public:
    RateCheck(const View& view, Findings& findings)
        : view_(view), index_(view.index()), findings_(findings) {}

    void run(ElementRange range) {
        for (ElementNumber element = range.first; element < range.end; ++element) {
            const Name name = view_.nameOf(element);
            if (name == Name::rate) {
                checkRate(element);
            } else if (name == Name::timecode) {
                checkTimecode(element);
            }
        }
    }

  private:
    void checkRate(ElementNumber rate);
    void checkTimebase(ElementNumber rate, ElementNumber timebase);
    void addMalformedTimebase(ElementNumber rate, ElementNumber timebase, const string& text,
                              Severity severity);
    void addCutOffTimebase(ElementNumber rate, ElementNumber timebase, std::string_view text,
                           std::string_view right);
    void checkNTSC(ElementNumber rate, const Parts& parts);
    void checkTimecode(ElementNumber timecode);
    // True when the flag fits the rate.
    bool checkDropFrame(ElementNumber timecode, const Parts& parts, const Rate& rate,
                        bool isDropFrame);
    void checkFrame(ElementNumber timecode, const Parts& parts, const Timecode& value,
                    const Rate& rate, bool isDropFrame);
    [[nodiscard]] std::optional<Rate> rateFor(ElementNumber timecode, const Parts& parts);

    const View& view_;
    const ElementIndex& index_;
    Findings& findings_;
    string storage_;
    // The parent whose rate was looked up last.
    ElementNumber parent_ = kNoElement;
    std::optional<Rate> parentRate_;
};

void RateCheck::checkRate(ElementNumber rate) {
    const Parts parts(view_, rate);
    if (!parts.has(Name::timebase)) {
        return;
    }
    checkTimebase(rate, parts[Name::timebase]);
    checkNTSC(rate, parts);
}

void RateCheck::checkTimebase(ElementNumber rate, ElementNumber timebase) {
    const std::string_view text = view_.textOf(timebase, storage_);
    const Number number = readNumber(text);
    const bool isSound =
        number.form == NumberForm::whole && number.value > 0 && number.value <= kMostTimebase;
    if (!isSound) {
        const bool isRead = number.form == NumberForm::wholeWithFraction && number.value > 0;
        return addMalformedTimebase(rate, timebase, string(text),
                                    isRead ? Severity::warning : Severity::error);
    }
    if (isUsual(number.value)) {
        return;
    }
    const std::string_view right = timebaseFor(kCutOff, text);
    if (!right.empty()) {
        return addCutOffTimebase(rate, timebase, text, right);
    }
    if (Finding* const finding =
            findings_.add("timing-unusual-timebase"_rule, view_.placeOf(timebase))) {
        finding->arguments = {{"thing", view_.describe(rate)}, {"value", string(text)}};
    }
}

void RateCheck::addMalformedTimebase(ElementNumber rate, ElementNumber timebase, const string& text,
                                     Severity severity) {
    const TextSpan place = view_.placeOf(timebase);
    Finding* const finding = findings_.add("timing-timebase"_rule, severity, place);
    if (finding == nullptr) {
        return;
    }
    const std::string_view meant = timebaseFor(kFractions, text);
    const std::string_view whole = std::string_view(text).substr(0, text.find_first_of("/."));
    const bool isWhole = readNumber(whole).value > 0 &&
                         (text == string(whole) + "/1" || severity == Severity::warning);
    string right = "such as 25";
    if (!meant.empty()) {
        right = string(meant) + " with <ntsc>TRUE</ntsc>";
    } else if (isWhole) {
        right = whole;
    }
    finding->arguments = {
        {"thing", view_.describe(rate)}, {"value", quoted(text)}, {"right", right}};
    if (isWhole && isUsual(readNumber(whole).value)) {
        finding->mend = Mend{Confidence::safe,
                             "write the timebase as " + right,
                             {{place.offset, place.length, string(whole)}}};
    }
}

void RateCheck::addCutOffTimebase(ElementNumber rate, ElementNumber timebase, std::string_view text,
                                  std::string_view right) {
    const TextSpan place = view_.placeOf(timebase);
    if (Finding* const finding = findings_.add("timing-timebase-cut-off"_rule, place)) {
        finding->arguments = {
            {"thing", view_.describe(rate)}, {"value", string(text)}, {"right", string(right)}};
        finding->mend = Mend{Confidence::ask,
                             "write the timebase as " + string(right),
                             {{place.offset, place.length, string(right)}}};
    }
}

void RateCheck::checkNTSC(ElementNumber rate, const Parts& parts) {
    if (!parts.has(Name::ntsc)) {
        if (index_.isClosed(rate)) {
            if (Finding* const finding =
                    findings_.add("timing-missing-ntsc"_rule, index_.startTagOf(rate))) {
                finding->arguments = {{"thing", view_.describe(rate)}};
            }
        }
        return;
    }
    const std::optional<Rate> read = rateOf(view_, rate);
    constexpr std::int64_t kPAL = 25;
    if (!read || !read->ntsc.value_or(false) || read->timebase % kPAL != 0) {
        return;
    }
    const TextSpan place = view_.placeOf(parts[Name::ntsc]);
    if (Finding* const finding = findings_.add("timing-ntsc"_rule, place)) {
        finding->arguments = {{"thing", view_.describe(rate)},
                              {"timebase", std::to_string(read->timebase)}};
        finding->mend = Mend{
            Confidence::ask, "write FALSE in its place", {{place.offset, place.length, "FALSE"}}};
    }
}

std::optional<Rate> RateCheck::rateFor(ElementNumber timecode, const Parts& parts) {
    if (parts.has(Name::rate)) {
        return rateOf(view_, parts[Name::rate]);
    }
    const ElementNumber parent = index_.parentOf(timecode);
    if (parent != parent_) {
        parent_ = parent;
        parentRate_ = rateOf(view_, view_.childOf(parent, Name::rate));
    }
    return parentRate_;
}

void RateCheck::checkTimecode(ElementNumber timecode) {
    const Parts parts(view_, timecode);
    const string text = view_.textOf(parts[Name::string]);
    if (text.empty()) {
        return;
    }
    const std::optional<Rate> rate = rateFor(timecode, parts);
    const std::optional<Timecode> value = readTimecode(text);
    const std::string_view format = view_.textOf(parts[Name::displayformat], storage_);
    const bool isDropFrame =
        format.empty() ? value && value->hasDropSeparator : isDropFrameFlag(format);
    if (rate && !checkDropFrame(timecode, parts, *rate, isDropFrame)) {
        return;
    }
    if (!value || (rate && !value->isIn(*rate, isDropFrame))) {
        if (Finding* const finding =
                findings_.add("timing-timecode-string"_rule, view_.placeOf(parts[Name::string]))) {
            finding->arguments = {{"thing", view_.describe(timecode)}, {"value", excerpt(text)}};
        }
        return;
    }
    if (rate) {
        checkFrame(timecode, parts, *value, *rate, isDropFrame);
    }
}

bool RateCheck::checkDropFrame(ElementNumber timecode, const Parts& parts, const Rate& rate,
                               bool isDropFrame) {
    if (!isDropFrame || rate.allowsDropFrame()) {
        return true;
    }
    const ElementNumber flag =
        parts.has(Name::displayformat) ? parts[Name::displayformat] : parts[Name::string];
    if (Finding* const finding =
            findings_.add("timing-drop-frame-flag"_rule, view_.placeOf(flag))) {
        const string ntsc = rate.ntsc ? *rate.ntsc ? " with ntsc TRUE" : " with ntsc FALSE" : "";
        finding->arguments = {{"thing", view_.describe(timecode)},
                              {"rate", std::to_string(rate.timebase) + ntsc}};
    }
    return false;
}

void RateCheck::checkFrame(ElementNumber timecode, const Parts& parts, const Timecode& value,
                           const Rate& rate, bool isDropFrame) {
    if (!parts.has(Name::frame)) {
        return;
    }
    const std::optional<std::int64_t> frame =
        readNumber(view_.textOf(parts[Name::frame], storage_)).whole();
    const std::int64_t right = value.frameNumber(rate, isDropFrame);
    if (!frame || *frame == right) {
        return;
    }
    const TextSpan place = view_.placeOf(parts[Name::frame]);
    if (Finding* const finding = findings_.add("timing-timecode-frame"_rule, place)) {
        finding->arguments = {{"thing", view_.describe(timecode)},
                              {"text", view_.textOf(parts[Name::string])},
                              {"frame", std::to_string(*frame)},
                              {"right", std::to_string(right)}};
        finding->mend = Mend{Confidence::ask,
                             "write the frame that the timecode names",
                             {{place.offset, place.length, std::to_string(right)}}};
    }
}

}  // namespace

void checkRates(const View& view, ElementRange range, Findings& findings) {
    RateCheck(view, findings).run(range);
}

}  // namespace vornic::xmeml
