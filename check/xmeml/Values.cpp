#include <algorithm>
#include <array>
#include <span>
#include <string>

#include "base/Text.h"
#include "check/xmeml/Rules.h"
#include "formats/xmeml/Number.h"
#include "formats/xmeml/Rate.h"

namespace vornic::xmeml {

namespace {

using std::string;
using std::string_view;

// What the format knows as a word, and whether programs stumble over another one.
struct Words {
    Name element;
    std::span<const string_view> words;
    Severity severity;
};

constexpr std::array<string_view, 3> kDisplayFormats = {"NDF", "DF", "frames"};
constexpr std::array<string_view, 2> kMediaTypes = {"video", "audio"};
constexpr std::array<string_view, 5> kAlignments = {"start", "center", "end", "start-black",
                                                    "end-black"};
constexpr std::array<string_view, 5> kDominances = {"none", "lower", "upper", "odd", "even"};
constexpr std::array<string_view, 4> kAlphaTypes = {"none", "straight", "black", "white"};

constexpr std::array kWords = {
    Words{Name::displayformat, kDisplayFormats, Severity::warning},
    Words{Name::mediatype, kMediaTypes, Severity::warning},
    Words{Name::alignment, kAlignments, Severity::info},
    Words{Name::fielddominance, kDominances, Severity::info},
    Words{Name::alphatype, kAlphaTypes, Severity::info},
};

// No track has so many channels, and no sound so few samples a second.
constexpr std::int64_t kMostChannels = 256;
constexpr std::int64_t kLeastSampleRate = 1000;
constexpr std::int64_t kMostSampleRate = 768000;

bool equalButForCase(string_view left, string_view right) {
    return left.size() == right.size() && lowercased(left) == lowercased(right);
}

string listed(std::span<const string_view> words) {
    string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        text += i == 0 ? "" : i + 1 == words.size() ? " or " : ", ";
        text += words[i];
    }
    return text;
}

class ValueCheck {
  public:
    ValueCheck(const View& view, Findings& findings)
        : view_(view), index_(view.index()), findings_(findings) {}

    void run(ElementRange range) {
        for (ElementNumber element = range.first; element < range.end; ++element) {
            check(element);
        }
    }

  private:
    void check(ElementNumber element) {
        switch (view_.nameOf(element)) {
            case Name::enabled:
            case Name::locked:
            case Name::ntsc:
            case Name::anamorphic:
            case Name::ismasterclip:
            case Name::reverse:
            case Name::alphareverse:
            case Name::reversed:
            case Name::stillframe:
                return checkBoolean(element);
            case Name::alignment:
                return view_.parentOf(element, Name::transitionitem) != kNoElement
                           ? checkWord(element)
                           : void();
            case Name::displayformat:
            case Name::mediatype:
            case Name::fielddominance:
            case Name::alphatype:
                return checkWord(element);
            case Name::audio:
                return checkAudio(element);
            default:
                return;
        }
    }

    void checkBoolean(ElementNumber element);
    void checkWord(ElementNumber element);
    void checkAudio(ElementNumber audio);
    void addSwapped(ElementNumber channels, ElementNumber rate);
    Finding* add(RuleId rule, Severity severity, ElementNumber element, string_view value);
    static void mend(Finding& finding, Confidence confidence, TextSpan place,
                     string_view replacement);
    [[nodiscard]] std::optional<std::int64_t> numberOf(ElementNumber element);

    const View& view_;
    const ElementIndex& index_;
    Findings& findings_;
    string storage_;
};

Finding* ValueCheck::add(RuleId rule, Severity severity, ElementNumber element, string_view value) {
    Finding* const finding = findings_.add(rule, severity, view_.placeOf(element));
    if (finding != nullptr) {
        finding->arguments = {{"element", string(index_.nameOf(element))},
                              {"thing", view_.describe(index_.parentOf(element))},
                              {"value", string(value)}};
    }
    return finding;
}

void ValueCheck::mend(Finding& finding, Confidence confidence, TextSpan place,
                      string_view replacement) {
    finding.mend = Mend{confidence,
                        "write " + string(replacement),
                        {{place.offset, place.length, string(replacement)}}};
}

std::optional<std::int64_t> ValueCheck::numberOf(ElementNumber element) {
    return element == kNoElement ? std::nullopt
                                 : readNumber(view_.textOf(element, storage_)).whole();
}

void ValueCheck::checkBoolean(ElementNumber element) {
    const string_view text = view_.textOf(element, storage_);
    if (text == "TRUE" || text == "FALSE" || !index_.isClosed(element)) {
        return;
    }
    const std::optional<bool> value = readBoolean(text);
    const string_view right = !value ? "" : *value ? "TRUE" : "FALSE";
    const bool differsByCase = value && equalButForCase(text, right);
    Finding* const finding =
        differsByCase ? add("values-boolean-case"_rule, Severity::info, element, quoted(text))
                      : add("values-boolean"_rule, Severity::warning, element, quoted(text));
    if (finding == nullptr) {
        return;
    }
    finding->arguments.push_back({"right", string(right)});
    if (value) {
        mend(*finding, differsByCase ? Confidence::safe : Confidence::ask, view_.placeOf(element),
             right);
    }
}

void ValueCheck::checkWord(ElementNumber element) {
    const Name name = view_.nameOf(element);
    const Words& list = *std::find_if(kWords.begin(), kWords.end(),
                                      [name](const Words& words) { return words.element == name; });
    const string_view text = view_.textOf(element, storage_);
    const bool isKnown = std::find(list.words.begin(), list.words.end(), text) != list.words.end();
    if (text.empty() || isKnown || !index_.isClosed(element)) {
        return;
    }
    Finding* const finding = add("values-word"_rule, list.severity, element, quoted(text));
    if (finding == nullptr) {
        return;
    }
    finding->arguments.push_back({"right", listed(list.words)});
    for (const string_view word : list.words) {
        if (equalButForCase(word, text)) {
            mend(*finding, Confidence::safe, view_.placeOf(element), word);
        }
    }
}

// The number of channels and the rate of the samples, which stands beside it or one level down.
void ValueCheck::checkAudio(ElementNumber audio) {
    const ElementNumber channels = view_.childOf(audio, Name::channelcount);
    ElementNumber rate = view_.childOf(audio, Name::samplerate);
    if (rate == kNoElement) {
        rate = view_.childOf(view_.childOf(audio, Name::samplecharacteristics), Name::samplerate);
    }
    const std::optional<std::int64_t> count = numberOf(channels);
    const std::optional<std::int64_t> samples = numberOf(rate);
    const bool hasManyChannels = count && *count > kMostChannels;
    const bool hasFewSamples = samples && *samples > 0 && *samples < kLeastSampleRate;
    if (hasManyChannels && hasFewSamples) {
        return addSwapped(channels, rate);
    }
    if (hasManyChannels) {
        add("values-channel-count"_rule, Severity::warning, channels, std::to_string(*count));
    }
    if (hasFewSamples || (samples && *samples > kMostSampleRate)) {
        add("values-sample-rate"_rule, Severity::warning, rate, std::to_string(*samples));
    }
}

void ValueCheck::addSwapped(ElementNumber channels, ElementNumber rate) {
    const string count = view_.textOf(channels);
    const string samples = view_.textOf(rate);
    Finding* const finding = add("values-channels-swapped"_rule, Severity::error, channels, count);
    if (finding == nullptr) {
        return;
    }
    finding->arguments.push_back({"samples", samples});
    const TextSpan first = view_.placeOf(channels);
    const TextSpan second = view_.placeOf(rate);
    Mend swap{Confidence::ask,
              "exchange the two numbers",
              {{first.offset, first.length, samples}, {second.offset, second.length, count}}};
    if (second.offset < first.offset) {
        std::swap(swap.edits[0], swap.edits[1]);
    }
    finding->mend = std::move(swap);
}

}  // namespace

void checkValues(const View& view, ElementRange range, Findings& findings) {
    ValueCheck(view, findings).run(range);
}

}  // namespace vornic::xmeml
