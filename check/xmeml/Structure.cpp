#include <algorithm>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "check/xmeml/Rules.h"

namespace vornic::xmeml {

namespace {

using std::string;

// "<in>", "<in> and <out>", "<name>, <in> and <out>".
string listed(const std::vector<string>& parts) {
    string text;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        text += i == 0 ? "" : i + 1 == parts.size() ? " and " : ", ";
        text += parts[i];
    }
    return text;
}

string inBrackets(Name name) {
    return "<" + string(textOf(name)) + ">";
}

// What one element lacks.
class MissingParts {
  public:
    MissingParts(const View& view, ElementNumber element)
        : view_(view), element_(element), parts_(view, element) {}

    [[nodiscard]] bool has(Name name) const {
        return parts_.has(name) && !(isText(name) && isEmpty(parts_[name]));
    }

    void require(std::initializer_list<Name> names) {
        for (const Name name : names) {
            if (!has(name)) {
                required_.push_back(inBrackets(name) +
                                    (parts_.has(name) ? " with text in it" : ""));
            }
        }
    }
    void require(bool isThere, const char* parts) {
        if (!isThere) {
            required_.emplace_back(parts);
        }
    }
    // What the format asks for and real exporters leave out.
    void expect(std::initializer_list<Name> names) {
        for (const Name name : names) {
            if (!has(name)) {
                expected_.push_back(inBrackets(name));
            }
        }
    }

    void expect(bool isThere, const char* parts) {
        if (!isThere) {
            expected_.emplace_back(parts);
        }
    }

    void report(Findings& findings) const {
        add("structure-missing-part"_rule, required_, findings);
        add("structure-left-out-part"_rule, expected_, findings);
    }

  private:
    // What an empty one of says nothing. That a number is empty has a rule of its own.
    [[nodiscard]] static bool isText(Name name) {
        return name == Name::name || name == Name::parameterid || name == Name::key ||
               name == Name::storage;
    }
    [[nodiscard]] bool isEmpty(ElementNumber part) const {
        const std::optional<TextSpan> text = view_.index().textOf(part);
        return text && text->length == 0 && view_.index().isClosed(part);
    }

    void add(RuleId rule, const std::vector<string>& missing, Findings& findings) const {
        if (missing.empty()) {
            return;
        }
        if (Finding* const finding = findings.add(rule, view_.index().startTagOf(element_))) {
            finding->arguments = {{"thing", view_.describe(element_)},
                                  {"parts", listed(missing)},
                                  {"element", inBrackets(view_.nameOf(element_))}};
        }
    }

    const View& view_;
    ElementNumber element_;
    Parts parts_;
    std::vector<string> required_;
    std::vector<string> expected_;
};

// Inside a clip of the browser, clip items stand for its media and have no place of their own.
bool isInBrowserClip(const View& view, ElementNumber clipItem) {
    const ElementIndex& index = view.index();
    ElementNumber around = clipItem;
    for (int step = 0; step < 4 && around != kNoElement; ++step) {
        around = index.parentOf(around);
    }
    return view.is(around, Name::clip);
}

void requireOfClipItem(const View& view, ElementNumber element, MissingParts& parts) {
    if (isInBrowserClip(view, element)) {
        parts.expect({Name::name, Name::duration, Name::rate});
        return;
    }
    parts.require({Name::name, Name::duration, Name::start, Name::end});
    parts.expect({Name::rate});
}

void requireParts(const View& view, ElementNumber element, MissingParts& parts) {
    switch (view.nameOf(element)) {
        case Name::clip:
            parts.require({Name::name, Name::duration});
            return parts.expect({Name::rate});
        case Name::clipitem:
            return requireOfClipItem(view, element, parts);
        case Name::sequence:
            parts.require({Name::duration, Name::rate});
            return parts.expect({Name::name});
        case Name::file:
            parts.require(parts.has(Name::name) || parts.has(Name::pathurl), "<name> or <pathurl>");
            return parts.expect({Name::duration, Name::rate});
        case Name::rate:
            return parts.require({Name::timebase});
        case Name::timecode:
            parts.require(parts.has(Name::string) ||
                              (parts.has(Name::frame) && parts.has(Name::displayformat)),
                          "<string> (or <frame> with <displayformat>)");
            return parts.expect({Name::rate});
        case Name::link:
            return parts.require(
                parts.has(Name::linkclipref) ||
                    (parts.has(Name::mediatype) && parts.has(Name::trackindex) &&
                     parts.has(Name::clipindex)),
                "<linkclipref> (or <mediatype> with <trackindex> and <clipindex>)");
        case Name::marker:
            return parts.require({Name::name, Name::in, Name::out});
        case Name::parameter:
            parts.require(parts.has(Name::name) || parts.has(Name::parameterid),
                          "<name> or <parameterid>");
            return parts.expect(parts.has(Name::value) || parts.has(Name::keyframe),
                                "<value> or <keyframe>");
        case Name::multiclip:
            return parts.require({Name::name, Name::angle});
        case Name::angle:
            return parts.require({Name::clip});
        case Name::metadata:
            return parts.require({Name::storage, Name::key});
        default:
            return;
    }
}

bool hasRequirements(Name name) {
    switch (name) {
        case Name::clip:
        case Name::clipitem:
        case Name::sequence:
        case Name::file:
        case Name::rate:
        case Name::timecode:
        case Name::link:
        case Name::marker:
        case Name::parameter:
        case Name::multiclip:
        case Name::angle:
        case Name::metadata:
            return true;
        default:
            return false;
    }
}

// Effects may call a value or a part of theirs by any of the names.
bool isPlainValue(const View& view, ElementNumber element) {
    return view.is(view.index().parentOf(element), Name::value);
}

bool isContent(Name name) {
    return name == Name::project || name == Name::bin || name == Name::clip ||
           name == Name::sequence || name == Name::multiclip || name == Name::generatoritem ||
           name == Name::effect;
}

}  // namespace

void checkRoot(const View& view, Findings& findings) {
    const ElementIndex& index = view.index();
    bool hasContent = false;
    for (ElementNumber child = index.firstChildOf(0); child != kNoElement;
         child = index.nextSiblingOf(child)) {
        const Name name = view.nameOf(child);
        hasContent = hasContent || isContent(name);
        if (isContent(name) || name == Name::importoptions) {
            continue;
        }
        if (Finding* const finding =
                findings.add("structure-root-content"_rule, index.startTagOf(child))) {
            finding->arguments = {{"element", string(index.nameOf(child))}};
        }
        // What holds no project but something that belongs into one is told once.
        hasContent = true;
    }
    if (!hasContent && view.isComplete()) {
        findings.add("structure-no-content"_rule, index.startTagOf(0));
    }
}

void checkParts(const View& view, ElementRange range, Findings& findings) {
    const ElementIndex& index = view.index();
    for (ElementNumber element = range.first; element < range.end; ++element) {
        if (!hasRequirements(view.nameOf(element)) || view.isReference(element) ||
            !index.isClosed(element) || isPlainValue(view, element)) {
            continue;
        }
        MissingParts parts(view, element);
        requireParts(view, element, parts);
        parts.report(findings);
    }
}

}  // namespace vornic::xmeml
