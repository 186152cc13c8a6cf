#include "check/fcpxml/StructureFindings.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "check/Listing.h"
#include "check/NearestName.h"
#include "check/fcpxml/Naming.h"

namespace vornic {

namespace {

using fcpxml::Catalogue;
using fcpxml::Definition;
using fcpxml::ElementId;
using fcpxml::ValidityFault;
using fcpxml::ValidityFaultKind;
using fcpxml::Version;
using fcpxml::VersionRun;

std::string inBrackets(std::string_view name) {
    return "<" + std::string(name) + ">";
}

std::string elementsOf(const std::vector<ElementId>& ids) {
    std::vector<std::string> names;
    names.reserve(ids.size());
    for (const ElementId id : ids) {
        names.push_back(inBrackets(Catalogue::shared().element(id).name));
    }
    return listed(names);
}

// What may stand where something else was found: the name that was meant, if one is near.
std::string insteadOf(std::string_view name, const std::vector<ElementId>& expected) {
    if (expected.empty()) {
        return "nothing";
    }
    std::vector<std::string_view> names;
    names.reserve(expected.size());
    for (const ElementId id : expected) {
        names.push_back(Catalogue::shared().element(id).name);
    }
    const std::string_view nearest = nearestName(name, names);
    return nearest.empty() ? elementsOf(expected) : inBrackets(nearest);
}

// "1.3", "1.0 to 1.5", "1.9 and later".
std::string textOf(std::optional<VersionRun> versions) {
    if (!versions) {
        return "none";
    }
    if (versions->last == Version(Version::kNewestMinor)) {
        return versions->first.text() + " and later";
    }
    return versions->first == versions->last
               ? versions->first.text()
               : versions->first.text() + " to " + versions->last.text();
}

// The first and the last version in which one element has a place in the other.
std::optional<VersionRun> versionsWith(ElementId parent, ElementId child) {
    std::optional<VersionRun> versions;
    for (int minor = 0; minor <= Version::kNewestMinor; ++minor) {
        const Definition& definition = Definition::of(Version(minor));
        const auto* const holder = definition.element(parent);
        if (holder != nullptr && definition.element(child) != nullptr && holder->mentions(child)) {
            versions = {versions ? versions->first : Version(minor), Version(minor)};
        }
    }
    return versions;
}

std::string attributeInstead(std::string_view name, std::string_view element, Version version) {
    std::vector<std::string_view> names;
    if (const auto* definition = Definition::of(version).element(element)) {
        for (const auto& attribute : definition->attributes) {
            names.push_back(attribute.name);
        }
    }
    const std::string_view nearest = nearestName(name, names);
    return nearest.empty() ? "go" : "perhaps be " + std::string(nearest);
}

std::string valueInstead(const ValidityFault& fault) {
    const std::vector<std::string_view>& values = fault.definition->values;
    const std::string_view nearest = nearestName(fault.value, values);
    return nearest.empty() ? listed({values.begin(), values.end()}) : std::string(nearest);
}

// Adds the findings of one file.
class StructureFindings {
  public:
    StructureFindings(Version version, std::string_view text, Findings& findings)
        : version_(version), text_(text), findings_(&findings) {}

    void operator()(const ValidityFault& fault) {
        if (isToldBefore(fault)) {
            return;
        }
        switch (fault.kind) {
            case ValidityFaultKind::unknownAttribute:
            case ValidityFaultKind::attributeOfOtherVersion:
            case ValidityFaultKind::missingAttribute:
            case ValidityFaultKind::valueNotListed:
            case ValidityFaultKind::valueNotFixed:
            case ValidityFaultKind::malformedId:
            case ValidityFaultKind::repeatedId:
            case ValidityFaultKind::danglingReference:
                return addOfAttribute(fault);
            default:
                return addOfElement(fault);
        }
    }

  private:
    void addOfElement(const ValidityFault& fault);
    void addStrange(const ValidityFault& fault, RuleId rule);
    void addOfOtherVersion(const ValidityFault& fault, const std::string& thing,
                           const std::optional<VersionRun>& versions);
    void addOfAttribute(const ValidityFault& fault) const;
    [[nodiscard]] std::optional<VersionRun> placesOf(const ValidityFault& fault);
    [[nodiscard]] bool isToldBefore(const ValidityFault& fault);

    Version version_;
    std::string_view text_;
    Findings* findings_;
    // Where an asset begins whose path was told to belong into its media-rep.
    std::optional<std::size_t> asset_;
    // By parent and child: in which versions the one may hold the other.
    std::map<std::pair<ElementId, ElementId>, std::optional<VersionRun>> places_;
};

// Whether an asset holds its path in a part of its own, as versions from 1.9 on have it.
bool holdsMediaRep(std::string_view text, std::size_t asset) {
    // The part comes first in an asset.
    constexpr std::size_t kNear = 16384;
    const std::string_view near = text.substr(asset, kNear);
    const std::size_t part = near.find("<media-rep");
    return part != std::string_view::npos && part < near.find("</asset") &&
           part < near.find("<asset", 1);
}

// An asset that has its path where other versions have it lacks what should hold it: that is one
// fault.
bool StructureFindings::isToldBefore(const ValidityFault& fault) {
    if (fault.element != "asset") {
        return false;
    }
    if (fault.kind == ValidityFaultKind::attributeOfOtherVersion && fault.attribute == "src") {
        asset_ = fault.start;
    }
    if (fault.kind == ValidityFaultKind::missingAttribute && fault.attribute == "src") {
        return holdsMediaRep(text_, fault.start);
    }
    return fault.kind == ValidityFaultKind::missingElement && asset_ == fault.start;
}

std::optional<VersionRun> StructureFindings::placesOf(const ValidityFault& fault) {
    const Catalogue& catalogue = Catalogue::shared();
    const std::pair key(catalogue.idOf(fault.parent), catalogue.idOf(fault.element));
    const auto [place, isNew] = places_.try_emplace(key);
    if (isNew) {
        place->second = versionsWith(key.first, key.second);
    }
    return place->second;
}

// An element that stands where none of its name may.
void StructureFindings::addStrange(const ValidityFault& fault, RuleId rule) {
    const std::string instead =
        findings_->keepsAnother(rule) ? insteadOf(fault.element, fault.expected()) : std::string();
    findings_->add(
        rule, fault.where,
        {{"thing", inBrackets(fault.element)}, {"parent", fault.parent}, {"instead", instead}});
}

void StructureFindings::addOfOtherVersion(const ValidityFault& fault, const std::string& thing,
                                          const std::optional<VersionRun>& versions) {
    findings_->add(
        "structure-element-of-other-version"_rule, fault.where,
        {{"thing", thing}, {"versions", textOf(versions)}, {"version", version_.text()}});
}

void StructureFindings::addOfElement(const ValidityFault& fault) {
    const Catalogue& catalogue = Catalogue::shared();
    const std::string thing = inBrackets(fault.element);
    switch (fault.kind) {
        case ValidityFaultKind::unknownElement:
            addStrange(fault, "structure-unknown-element"_rule);
            break;
        case ValidityFaultKind::misplacedElement:
            if (const auto versions = placesOf(fault)) {
                addOfOtherVersion(fault, thing + " in " + inBrackets(fault.parent), versions);
            } else {
                addStrange(fault, "structure-misplaced-element"_rule);
            }
            break;
        case ValidityFaultKind::elementOfOtherVersion:
            addOfOtherVersion(fault, thing,
                              catalogue.element(catalogue.idOf(fault.element)).span());
            break;
        case ValidityFaultKind::elementOutOfOrder:
            findings_->add("structure-element-order"_rule, fault.where,
                           {{"thing", thing},
                            {"parent", fault.parent},
                            {"previous", catalogue.element(fault.previous).name}});
            break;
        case ValidityFaultKind::surplusElement:
            findings_->add("structure-surplus-element"_rule, fault.where,
                           {{"thing", thing}, {"parent", fault.parent}});
            break;
        case ValidityFaultKind::missingElement: {
            const std::string missing = elementsOf(fault.expected());
            findings_->add("structure-missing-element"_rule, fault.where,
                           {{"thing", thing}, {"missing", missing}});
            break;
        }
        case ValidityFaultKind::misplacedText:
            findings_->add("structure-misplaced-text"_rule, fault.where, {{"thing", thing}});
            break;
        case ValidityFaultKind::contentInEmptyElement:
            findings_->add("structure-content-in-empty-element"_rule, fault.where,
                           {{"thing", thing}});
            break;
        case ValidityFaultKind::rootElementType:
            findings_->add("structure-document-type"_rule, fault.where,
                           {{"value", fault.value}, {"element", fault.element}});
            break;
        case ValidityFaultKind::notStandalone:
            findings_->add("values-standalone"_rule, fault.where);
            break;
        default:
            break;
    }
}

void StructureFindings::addOfAttribute(const ValidityFault& fault) const {
    const auto add = [&](RuleId rule, std::string_view instead = {},
                         std::string_view versions = {}) {
        findings_->add(rule, fault.where,
                       {{"element", fault.element},
                        {"thing", inBrackets(fault.element)},
                        {"attribute", fault.attribute},
                        {"value", fault.value},
                        {"instead", instead},
                        {"versions", versions},
                        {"version", version_.text()}});
    };
    switch (fault.kind) {
        case ValidityFaultKind::unknownAttribute:
            return add("structure-unknown-attribute"_rule,
                       findings_->keepsAnother("structure-unknown-attribute"_rule)
                           ? attributeInstead(fault.attribute, fault.element, version_)
                           : std::string());
        case ValidityFaultKind::attributeOfOtherVersion: {
            const Catalogue& catalogue = Catalogue::shared();
            return add("structure-attribute-of-other-version"_rule, {},
                       textOf(catalogue.element(catalogue.idOf(fault.element))
                                  .spanOfAttribute(fault.attribute)));
        }
        case ValidityFaultKind::missingAttribute:
            return add("structure-missing-attribute"_rule);
        case ValidityFaultKind::valueNotListed:
            return add("structure-value-not-listed"_rule,
                       findings_->keepsAnother("structure-value-not-listed"_rule)
                           ? valueInstead(fault)
                           : std::string());
        case ValidityFaultKind::valueNotFixed:
            return add("structure-value-not-fixed"_rule, fault.definition->defaultValue);
        case ValidityFaultKind::malformedId:
            return add("structure-malformed-id"_rule);
        case ValidityFaultKind::repeatedId:
            return add("structure-repeated-id"_rule);
        default:
            return add("structure-dangling-reference"_rule);
    }
}

}  // namespace

fcpxml::Validator::FaultSink structureFindings(Version version, std::string_view text,
                                               Findings& findings) {
    return StructureFindings(version, text, findings);
}

void nameStructureFindings(const ElementIndex& index, Findings& findings) {
    for (Finding& finding : findings.kept()) {
        if (ruleOf(finding.rule).group != RuleGroup::structure) {
            continue;
        }
        for (Argument& argument : finding.arguments) {
            const ElementNumber element =
                argument.name == "thing" ? index.elementAt(finding.where.offset) : kNoElement;
            if (element != kNoElement && argument.value == inBrackets(index.nameOf(element))) {
                argument.value = calledBy(index, element);
            }
        }
    }
}

}  // namespace vornic
