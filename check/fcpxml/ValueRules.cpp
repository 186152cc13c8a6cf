#include "check/fcpxml/ValueRules.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "base/ASCII.h"
#include "base/FormatString.h"
#include "check/URLMend.h"
#include "check/fcpxml/Naming.h"
#include "formats/FileURL.h"
#include "formats/fcpxml/Resources.h"
#include "platform/settings/ZoneData.h"
#include "xml/text/AttributeValue.h"

namespace vornic {

namespace {

// "2024-05-31 18:30:00 " and the offset behind it.
constexpr std::string_view kDateForm = "0000-00-00 00:00:00 ";
constexpr std::string_view kOffsetForm = "+0000";

// A digit for each 0 of the form, either sign for its sign, else the same characters.
bool hasForm(std::string_view text, std::string_view form) {
    return std::equal(text.begin(), text.end(), form.begin(), form.end(), [](char c, char wanted) {
        return wanted == '0' ? isDigit(c) : wanted == '+' ? c == '+' || c == '-' : c == wanted;
    });
}

int numberAt(std::string_view text, std::size_t at, std::size_t length) {
    int number = 0;
    std::from_chars(text.data() + at, text.data() + at + length, number);
    return number;
}

std::chrono::year_month_day dayOf(std::string_view date) {
    return {std::chrono::year(numberAt(date, 0, 4)),
            std::chrono::month(static_cast<unsigned>(numberAt(date, 5, 2))),
            std::chrono::day(static_cast<unsigned>(numberAt(date, 8, 2)))};
}

bool isDate(std::string_view text) {
    if (text.size() < kDateForm.size() || !hasForm(text.substr(0, kDateForm.size()), kDateForm)) {
        return false;
    }
    return dayOf(text).ok() && numberAt(text, 11, 2) <= 23 && numberAt(text, 14, 2) <= 59 &&
           numberAt(text, 17, 2) <= 60;
}

bool isModDate(std::string_view text) {
    return isDate(text) && hasForm(text.substr(kDateForm.size()), kOffsetForm) &&
           numberAt(text, kDateForm.size() + 1, 2) <= 14 &&
           numberAt(text, kDateForm.size() + 3, 2) <= 59;
}

// A date's time as if its clock showed Universal Time, in seconds since 1970.
std::int64_t secondsOf(std::string_view date) {
    const std::chrono::year_month_day day = dayOf(date);
    const std::chrono::seconds time = std::chrono::hours(numberAt(date, 11, 2)) +
                                      std::chrono::minutes(numberAt(date, 14, 2)) +
                                      std::chrono::seconds(numberAt(date, 17, 2));
    return (std::chrono::sys_days(day).time_since_epoch() + time).count();
}

// The offset that the name of a zone stands for at a date, as modDate has it; "" when nothing says
// it for sure.
std::string offsetOf(std::string_view zone, std::string_view date) {
    // Universal Time has no offset whatever the date.
    constexpr std::array<std::string_view, 4> kUniversalTime = {"GMT", "UTC", "UT", "Z"};
    if (std::find(kUniversalTime.begin(), kUniversalTime.end(), zone) != kUniversalTime.end()) {
        return "+0000";
    }
    constexpr int kMinute = 60;
    const std::optional<std::int32_t> offset =
        platform::ZoneData::ofSystem().offsetAt(zone, secondsOf(date));
    if (!offset || *offset % kMinute != 0) {
        return "";
    }
    const int minutes = std::abs(*offset) / kMinute;
    return formatString("%@%02d%02d", *offset < 0 ? "-" : "+", minutes / kMinute,
                        minutes % kMinute);
}

// Some programs read letters beyond ASCII as they are.
bool isEncodedButForLetters(std::string url) {
    std::erase_if(url, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
    return faultOfFileURL(url) != FileURLFault::notEncoded;
}

bool isWholeNumber(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

std::optional<long> numberOf(std::string_view text) {
    long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return isWholeNumber(text) && error == std::errc() ? std::optional(number) : std::nullopt;
}

class ValueCheck {
  public:
    ValueCheck(const ElementIndex& index, Findings& findings)
        : index_(index), findings_(findings) {}

    void run() {
        for (const ElementNumber element : index_.elementsWithAttribute("modDate")) {
            judgeDate(element);
        }
        for (const ElementNumber element : index_.elementsWithAttribute("src")) {
            if (index_.isNamed(element, "asset") || index_.isNamed(element, "media-rep")) {
                judgePath(element);
            }
        }
        for (const ElementNumber asset : fcpxml::resourcesNamed(index_, "asset")) {
            judgeSound(asset);
        }
    }

  private:
    void judgeDate(ElementNumber element);
    void judgePath(ElementNumber element);
    void addOfPath(FileURLFault fault, TextSpan place, const std::string& clip,
                   const std::string& url);
    void judgeSound(ElementNumber asset);
    void judgeNumber(ElementNumber asset, std::string_view attribute, std::string_view instead);

    const ElementIndex& index_;
    Findings& findings_;
};

void ValueCheck::judgeDate(ElementNumber element) {
    const TextSpan place = *index_.attributeOf(element, "modDate");
    const std::string value = normalisedAttributeValue(place.of(index_.text()), false);
    if (isModDate(value)) {
        return;
    }
    // That the name of a zone refuses the file is known, of other forms it is not.
    const bool namesZone =
        isDate(value) && std::any_of(value.begin() + kDateForm.size(), value.end(), isLetter);
    Finding* const finding =
        findings_.add("values-mod-date"_rule, namesZone ? Severity::error : Severity::warning,
                      place, {{"clip", calledBy(index_, element)}, {"value", quotedValue(value)}});
    if (finding == nullptr) {
        return;
    }
    const std::string offset =
        namesZone && place.length == value.size()
            ? offsetOf(std::string_view(value).substr(kDateForm.size()), value)
            : std::string();
    if (!offset.empty()) {
        const std::size_t zone = place.offset + kDateForm.size();
        finding->mend = Mend{Confidence::safe,
                             "write the offset " + offset + " in place of the zone's name",
                             {{zone, place.end() - zone, offset}}};
    } else {
        finding->mend = Mend{Confidence::ask, "take the attribute modDate out",
                             removalOf(index_, element, "modDate")};
    }
}

void ValueCheck::judgePath(ElementNumber element) {
    const TextSpan place = *index_.attributeOf(element, "src");
    const std::string url = normalisedAttributeValue(place.of(index_.text()), false);
    const FileURLFault fault = faultOfFileURL(url);
    if (fault != FileURLFault::none) {
        const bool isPart = index_.isNamed(element, "media-rep");
        const ElementNumber owner = isPart ? index_.parentOf(element) : element;
        addOfPath(fault, place, calledBy(index_, owner == kNoElement ? element : owner), url);
    }
}

void ValueCheck::addOfPath(FileURLFault fault, TextSpan place, const std::string& clip,
                           const std::string& url) {
    // Writes the URL that is meant, which says the same.
    const auto addWithMend = [&](RuleId rule, const std::string& meant,
                                 std::optional<Severity> severity = std::nullopt) {
        const std::string instead =
            "\"" + quotedValue(meant.empty() ? "file:///Users/…" : meant) + "\"";
        Finding* const finding =
            findings_.add(rule, severity.value_or(ruleOf(rule).severity), place,
                          {{"clip", clip}, {"value", quotedValue(url)}, {"instead", instead}});
        if (finding != nullptr && faultOfFileURL(meant) == FileURLFault::none) {
            finding->mend = Mend{Confidence::safe,
                                 "write the same path as a file URL",
                                 {urlEdit(index_.text(), place, meant)}};
        }
    };
    switch (fault) {
        case FileURLFault::notAbsolute:
            return addWithMend("values-src-not-absolute"_rule, fileURLOfPath(url));
        case FileURLFault::windowsPath:
            return addWithMend("values-src-windows-path"_rule, fileURLOfWindowsPath(url));
        case FileURLFault::notEncoded:
            return addWithMend("values-src-not-encoded"_rule, encodedURL(url),
                               isEncodedButForLetters(url) ? Severity::warning : Severity::error);
        case FileURLFault::otherHost: {
            const std::string rest = url.substr(url.find("//") + 2);
            findings_.add("values-src-other-host"_rule, place,
                          {{"clip", clip}, {"host", quotedValue(rest.substr(0, rest.find('/')))}});
            return;
        }
        case FileURLFault::noExtension:
            findings_.add("values-src-no-extension"_rule, place,
                          {{"clip", clip}, {"value", quotedValue(url.substr(url.rfind('/') + 1))}});
            return;
        case FileURLFault::none:
            return;
    }
}

void ValueCheck::judgeSound(ElementNumber asset) {
    // More channels than this, or fewer samples a second, no medium has.
    constexpr long kFewestSamples = 1000;
    const std::optional<TextSpan> channels = index_.attributeOf(asset, "audioChannels");
    const std::optional<TextSpan> rate = index_.attributeOf(asset, "audioRate");
    const std::string_view text = index_.text();
    const std::optional<long> channelCount = channels ? numberOf(channels->of(text)) : std::nullopt;
    const std::optional<long> sampleRate = rate ? numberOf(rate->of(text)) : std::nullopt;
    if (channelCount >= kFewestSamples && sampleRate && sampleRate < kFewestSamples) {
        Finding* const finding = findings_.add("values-audio-swapped"_rule, *channels,
                                               {{"clip", calledBy(index_, asset)},
                                                {"channels", *channelCount},
                                                {"rate", *sampleRate}});
        if (finding != nullptr) {
            Edit first{channels->offset, channels->length, std::string(rate->of(text))};
            Edit second{rate->offset, rate->length, std::string(channels->of(text))};
            if (second.offset < first.offset) {
                std::swap(first, second);
            }
            finding->mend =
                Mend{Confidence::ask, "swap the two values", {std::move(first), std::move(second)}};
        }
        return;
    }
    judgeNumber(asset, "audioChannels", "such as 2");
    judgeNumber(asset, "audioSources", "such as 1");
    judgeNumber(asset, "audioRate", "such as 48000");
}

void ValueCheck::judgeNumber(ElementNumber asset, std::string_view attribute,
                             std::string_view instead) {
    const std::optional<TextSpan> value = index_.attributeOf(asset, attribute);
    if (value && !isWholeNumber(value->of(index_.text()))) {
        findings_.add("values-audio-number"_rule, *value,
                      {{"attribute", attribute},
                       {"clip", calledBy(index_, asset)},
                       {"value", quotedValue(value->of(index_.text()))},
                       {"instead", instead}});
    }
}

}  // namespace

void checkFCPXMLValues(const ElementIndex& index, Findings& findings) {
    ValueCheck(index, findings).run();
}

}  // namespace vornic
