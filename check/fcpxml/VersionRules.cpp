#include "check/fcpxml/VersionRules.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "base/ASCII.h"
#include "check/Listing.h"
#include "check/VersionMend.h"
#include "check/fcpxml/Naming.h"
#include "formats/StartTag.h"
#include "formats/fcpxml/Definition.h"
#include "xml/text/AttributeValue.h"

namespace vornic {

namespace {

using fcpxml::AttributeDefinition;
using fcpxml::Definition;
using fcpxml::ElementDefinition;
using fcpxml::Version;

// "1.15" or "2.0": a version, if not one that is known.
bool looksLikeVersion(std::string_view text) {
    const std::size_t point = text.find('.');
    const auto isNumber = [](std::string_view part) {
        return !part.empty() && (part.size() == 1 || part[0] != '0') &&
               std::all_of(part.begin(), part.end(), isDigit);
    };
    return point != std::string_view::npos && isNumber(text.substr(0, point)) &&
           isNumber(text.substr(point + 1));
}

// Compares a file with what a receiver reads. What the declared version does not allow is none of
// its business.
class ReceiverCheck {
  public:
    ReceiverCheck(const ElementIndex& index, Version declared, Version reads, Findings& findings)
        : index_(index),
          declared_(Definition::of(declared)),
          receiver_(Definition::of(reads)),
          reads_(reads.text()),
          findings_(findings) {}

    void run() {
        const auto count = static_cast<ElementNumber>(index_.size());
        for (ElementNumber element = 0; element < count;) {
            // With an element goes what is in it.
            element = judgeElement(element) ? element + 1 : index_.endOf(element);
        }
    }

  private:
    // False when the receiver does not read it.
    bool judgeElement(ElementNumber element);
    void judgeAttribute(const StartTag& tag, const ElementDefinition& own,
                        const ElementDefinition& received);
    void addElement(ElementNumber element, Version first);
    [[nodiscard]] Version firstWith(fcpxml::ElementId parent, fcpxml::ElementId child) const;

    const ElementIndex& index_;
    const Definition& declared_;
    const Definition& receiver_;
    std::string reads_;
    Findings& findings_;
};

Version ReceiverCheck::firstWith(fcpxml::ElementId parent, fcpxml::ElementId child) const {
    Version version = receiver_.version();
    for (int minor = version.minor() + 1; minor < declared_.version().minor(); ++minor) {
        const Definition& definition = Definition::of(Version(minor));
        const ElementDefinition* const holder = definition.element(parent);
        if (definition.element(child) != nullptr && holder != nullptr && holder->mentions(child)) {
            return Version(minor);
        }
    }
    return declared_.version();
}

void ReceiverCheck::addElement(ElementNumber element, Version first) {
    findings_.add("versions-unread-element"_rule, index_.startTagOf(element),
                  {{"element", index_.nameOf(element)},
                   {"parent", index_.nameOf(index_.parentOf(element))},
                   {"first", first.text()},
                   {"reads", reads_}});
}

bool ReceiverCheck::judgeElement(ElementNumber element) {
    const ElementDefinition* const own = declared_.element(index_.nameOf(element));
    if (own == nullptr) {
        return false;
    }
    const ElementNumber parent = index_.parentOf(element);
    if (parent != kNoElement) {
        const std::string_view parentName = index_.nameOf(parent);
        const ElementDefinition* const holder = declared_.element(parentName);
        const ElementDefinition* const receivingHolder = receiver_.element(parentName);
        if (holder == nullptr || receivingHolder == nullptr || !holder->mentions(own->id)) {
            return true;
        }
        if (receiver_.element(own->id) == nullptr || !receivingHolder->mentions(own->id)) {
            addElement(element, firstWith(holder->id, own->id));
            return false;
        }
    }
    const ElementDefinition* const received = receiver_.element(own->id);
    if (received == nullptr) {
        return true;
    }
    StartTag tag(index_.text(), index_.spanOf(element).offset);
    while (tag.next()) {
        judgeAttribute(tag, *own, *received);
    }
    return true;
}

void ReceiverCheck::judgeAttribute(const StartTag& tag, const ElementDefinition& own,
                                   const ElementDefinition& received) {
    const AttributeDefinition* const declared = own.attribute(tag.name());
    const AttributeDefinition* const read = received.attribute(tag.name());
    if (declared == nullptr) {
        return;
    }
    if (read == nullptr) {
        Version first = declared_.version();
        for (int minor = first.minor() - 1; minor > receiver_.version().minor(); --minor) {
            const ElementDefinition* const older = Definition::of(Version(minor)).element(own.id);
            if (older == nullptr || older->attribute(tag.name()) == nullptr) {
                break;
            }
            first = Version(minor);
        }
        findings_.add("versions-unread-attribute"_rule, tag.attribute(),
                      {{"attribute", tag.name()},
                       {"element", own.name},
                       {"first", first.text()},
                       {"reads", reads_}});
        return;
    }
    if (read->type != fcpxml::AttributeType::enumerated) {
        return;
    }
    const std::string value = normalisedAttributeValue(tag.value().of(index_.text()), true);
    if (declared->allows(value) && !read->allows(value)) {
        const std::string instead = listed({read->values.begin(), read->values.end()});
        findings_.add("versions-unread-value"_rule, tag.value(),
                      {{"attribute", tag.name()},
                       {"element", own.name},
                       {"value", quotedValue(value)},
                       {"reads", reads_},
                       {"instead", instead}});
    }
}

}  // namespace

void checkFCPXMLVersions(const ElementIndex& index, const CheckOptions& options,
                         Findings& findings) {
    const std::optional<Version> reads =
        options.reads ? Version::parse(*options.reads) : std::nullopt;
    const std::optional<TextSpan> place = index.attributeOf(0, "version");
    if (!place) {
        if (Finding* const finding =
                findings.add("versions-not-declared"_rule, index.startTagOf(0),
                             {{"format", "FCPXML"}, {"root", "fcpxml"}, {"example", "1.10"}})) {
            finding->mend = versionMend(index, options.missingVersion);
        }
        return;
    }
    const std::string_view text = place->of(index.text());
    const std::optional<Version> declared = Version::parse(text);
    if (reads && (declared ? *declared > *reads : looksLikeVersion(text))) {
        findings.add("versions-newer-than-receiver"_rule, *place,
                     {{"version", quotedValue(text)}, {"reads", reads->text()}});
    } else if (!declared && looksLikeVersion(text)) {
        findings.add(
            "versions-unknown"_rule, *place,
            {{"version", quotedValue(text)}, {"newest", Version(Version::kNewestMinor).text()}});
    }
    if (!declared && !looksLikeVersion(text)) {
        findings.add("versions-malformed"_rule, *place, {{"version", quotedValue(text)}});
    }
    if (declared && reads && *declared > *reads) {
        ReceiverCheck(index, *declared, *reads, findings).run();
    }
}

}  // namespace vornic
