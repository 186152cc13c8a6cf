#include "check/fcpxml/ReferenceRules.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "check/fcpxml/Naming.h"
#include "check/fcpxml/ReferenceKinds.h"
#include "formats/fcpxml/Definition.h"
#include "formats/fcpxml/Resources.h"
#include "xml/text/AttributeValue.h"

namespace vornic {

namespace {

using fcpxml::Resource;
using fcpxml::Resources;

class ReferenceCheck {
  public:
    ReferenceCheck(const ElementIndex& index, bool tellsDangling, Findings& findings)
        : index_(index), resources_(index), tellsDangling_(tellsDangling), findings_(findings) {}

    void run() {
        for (const std::string_view attribute : kReferenceAttributes) {
            for (const ElementNumber element : index_.elementsWithAttribute(attribute)) {
                judgeReference(element, attribute);
            }
        }
        readAngles();
        for (const ElementNumber source : index_.elementsNamed("mc-source")) {
            judgeAngle(source);
        }
        judgeUids("asset");
        judgeUids("media");
    }

  private:
    void judgeReference(ElementNumber element, std::string_view attribute);
    void judgeMedia(ElementNumber element, TextSpan value, ElementNumber media);
    void readAngles();
    void judgeAngle(ElementNumber source);
    void judgeUids(std::string_view kind);
    [[nodiscard]] std::string multicamOf(ElementNumber angle) const;
    [[nodiscard]] bool isSameMedia(ElementNumber left, ElementNumber right) const;
    [[nodiscard]] std::string_view sourceOf(ElementNumber asset) const;

    const ElementIndex& index_;
    Resources resources_;
    bool tellsDangling_;
    Findings& findings_;
    // The angle ids of each multicam.
    std::unordered_map<ElementNumber, std::unordered_set<std::string_view>> angles_;
};

void ReferenceCheck::judgeReference(ElementNumber element, std::string_view attribute) {
    const ReferenceKinds* const kinds = referenceKindsOf(attribute, index_.nameOf(element));
    if (kinds == nullptr) {
        return;
    }
    const TextSpan value = *index_.attributeOf(element, attribute);
    const std::string_view id = value.of(index_.text());
    const Resource* const target = resources_.find(id);
    if (target == nullptr) {
        if (tellsDangling_) {
            findings_.add("references-dangling"_rule, value,
                          {{"attribute", attribute},
                           {"clip", calledBy(index_, element)},
                           {"id", quotedValue(id)}});
        }
        return;
    }
    if (target->kind != kinds->kind && target->kind != kinds->otherKind) {
        // The fault is the target's name.
        if (fcpxml::Catalogue::shared().idOf(target->kind) == fcpxml::kNoElement) {
            return;
        }
        const std::string instead =
            kinds->inVersion(fcpxml::Version::parse(index_.version())
                                 .value_or(fcpxml::Version(fcpxml::Version::kNewestMinor)));
        findings_.add("references-wrong-kind"_rule, value,
                      {{"attribute", attribute},
                       {"clip", calledBy(index_, element)},
                       {"id", quotedValue(id)},
                       {"found", withArticle(target->kind)},
                       {"instead", instead}});
        return;
    }
    if (target->kind == "media") {
        judgeMedia(element, value, target->element);
    }
}

void ReferenceCheck::judgeMedia(ElementNumber element, TextSpan value, ElementNumber media) {
    const bool isMulticam = index_.isNamed(element, "mc-clip");
    const std::string_view held = isMulticam ? "multicam" : "sequence";
    const std::string_view other = isMulticam ? "sequence" : "multicam";
    const ElementNumber content = index_.firstChildOf(media);
    if (content != kNoElement && index_.isNamed(content, other)) {
        findings_.add("references-wrong-media"_rule, value,
                      {{"clip", calledBy(index_, element)},
                       {"id", quotedValue(value.of(index_.text()))},
                       {"found", other},
                       {"instead", held}});
    }
}

// It has the name of the media that it is in.
std::string ReferenceCheck::multicamOf(ElementNumber angle) const {
    const ElementNumber multicam = index_.parentOf(angle);
    const ElementNumber media = multicam == kNoElement ? kNoElement : index_.parentOf(multicam);
    return media == kNoElement ? "one multicam" : calledBy(index_, media);
}

void ReferenceCheck::readAngles() {
    for (const ElementNumber angle : index_.elementsNamed("mc-angle")) {
        const std::optional<TextSpan> id = index_.attributeOf(angle, "angleID");
        if (id && !angles_[index_.parentOf(angle)].insert(id->of(index_.text())).second) {
            findings_.add(
                "references-repeated-angle"_rule, *id,
                {{"angle", quotedValue(id->of(index_.text()))}, {"multicam", multicamOf(angle)}});
        }
    }
}

void ReferenceCheck::judgeAngle(ElementNumber source) {
    const std::optional<TextSpan> angle = index_.attributeOf(source, "angleID");
    const ElementNumber clip = index_.parentOf(source);
    if (!angle || clip == kNoElement || !index_.isNamed(clip, "mc-clip")) {
        return;
    }
    const Resource* const media = resources_.find(index_.attributeTextOf(clip, "ref"), "media");
    const ElementNumber multicam =
        media == nullptr ? kNoElement : index_.firstChildOf(media->element);
    if (multicam == kNoElement || !index_.isNamed(multicam, "multicam")) {
        return;
    }
    const auto angles = angles_.find(multicam);
    if (angles == angles_.end() || !angles->second.contains(angle->of(index_.text()))) {
        findings_.add(
            "references-unknown-angle"_rule, *angle,
            {{"clip", calledBy(index_, clip)}, {"angle", quotedValue(angle->of(index_.text()))}});
    }
}

std::string_view ReferenceCheck::sourceOf(ElementNumber asset) const {
    const ElementNumber representation = index_.childOf(asset, "media-rep");
    return index_.attributeTextOf(representation == kNoElement ? asset : representation, "src");
}

// Two compound or multicam clips are never the same; two assets are when their file is.
bool ReferenceCheck::isSameMedia(ElementNumber left, ElementNumber right) const {
    return index_.isNamed(left, "asset") && sourceOf(left) == sourceOf(right);
}

void ReferenceCheck::judgeUids(std::string_view kind) {
    std::unordered_map<std::string, ElementNumber> owners;
    for (const ElementNumber element : fcpxml::resourcesNamed(index_, kind)) {
        const std::optional<TextSpan> uid = index_.attributeOf(element, "uid");
        if (!uid || uid->length == 0) {
            continue;
        }
        const auto [owner, isNew] =
            owners.try_emplace(normalisedAttributeValue(uid->of(index_.text()), false), element);
        if (isNew || isSameMedia(owner->second, element)) {
            continue;
        }
        Finding* const finding = findings_.add(
            "references-uid-clash"_rule, *uid,
            {{"thing", calledBy(index_, element)}, {"other", calledBy(index_, owner->second)}});
        if (finding != nullptr) {
            finding->mend = Mend{Confidence::ask, "take the attribute uid out of this one",
                                 removalOf(index_, element, "uid")};
        }
    }
}

}  // namespace

void checkFCPXMLReferences(const ElementIndex& index, bool tellsDangling, Findings& findings) {
    ReferenceCheck(index, tellsDangling, findings).run();
}

}  // namespace vornic
