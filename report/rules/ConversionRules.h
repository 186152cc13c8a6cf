#ifndef VORNIC_REPORT_RULES_CONVERSION_RULES_H
#define VORNIC_REPORT_RULES_CONVERSION_RULES_H

#include "report/Rule.h"

namespace vornic::rules {

namespace detail {

inline constexpr std::string_view kNotRead = "A receiver of that version cannot read it.";
inline constexpr std::string_view kSameContent = "None.";
inline constexpr std::string_view kVersionTable = "the definitions of the two versions";

/// Something that the result does not have any more.
[[nodiscard]] constexpr Rule conversionLoss(std::string_view id, std::string_view message,
                                            std::string_view meaning) {
    return {id,
            RuleGroup::conversion,
            Severity::warning,
            message,
            meaning,
            kNotRead,
            "Keep the original; convert to a newer version where the receiver reads one.",
            kVersionTable};
}

/// The same content in another form.
[[nodiscard]] constexpr Rule conversionForm(std::string_view id, std::string_view message,
                                            std::string_view meaning) {
    return {id,      RuleGroup::conversion, Severity::info, message,
            meaning, kSameContent,          "Nothing.",     kVersionTable};
}

}  // namespace detail

/// What a conversion to another version says it has done. `{content}` is what the file loses, as it
/// stands there.
inline constexpr Rule kConversionRules[] = {
    detail::conversionLoss("conversion-element-lost",
                           "<{element}> has no place in <{parent}> in version {target} and is left "
                           "out: {content}",
                           "The version does not have the element, or not at this place."),
    detail::conversionLoss(
        "conversion-attribute-lost",
        "the attribute {attribute} of <{element}> is not in version {target} and is left out: "
        "{content}",
        "The version does not have the attribute at this element."),
    detail::conversionLoss(
        "conversion-value-lost",
        "{attribute} of <{element}> cannot be \"{content}\" in version {target} and is left "
        "out{instead}",
        "The version does not have the value, and the attribute may be left out."),
    detail::conversionLoss(
        "conversion-value-not-known",
        "<{element}> is left out, because its {attribute} cannot be what it is in version "
        "{target}: {content}",
        "The version does not have the value, and the element needs one."),
    detail::conversionLoss(
        "conversion-value-missing",
        "<{element}> is left out, because it has no {attribute}, which version {target} asks for: "
        "{content}",
        "The version asks for a value that the file does not have; none is invented."),
    detail::conversionLoss(
        "conversion-disabled-element",
        "<{element}> is switched off, which version {target} cannot say, and is left out: "
        "{content}",
        "Without the attribute enabled the element would take effect."),
    detail::conversionLoss(
        "conversion-collection",
        "the smart collection would lose a rule in version {target} and show something else, and "
        "is left out: {content}",
        "A rule of the collection is not in the version."),
    detail::conversionLoss("conversion-gap",
                           "<{element}> becomes a gap in version {target}, with what is connected "
                           "to it: {content}",
                           "The version does not have the item; the storyline keeps its length."),
    detail::conversionLoss(
        "conversion-incomplete",
        "<{element}> has nothing left that version {target} asks for in it, and is left out: "
        "{content}",
        "All that the element must hold is left out."),
    detail::conversionLoss(
        "conversion-reference-lost",
        "the attribute {attribute} of <{element}> refers to what is left out, and goes with it: "
        "{content}",
        "What the attribute refers to is not in the version."),
    detail::conversionLoss(
        "conversion-referring-element",
        "<{element}> refers with {attribute} to what is left out, and goes with it: {content}",
        "What the element refers to is not in the version, and it cannot be without."),
    detail::conversionLoss(
        "conversion-no-original-media",
        "the asset has no original media, so that src names its {content} in version {target}",
        "The version has room for one media file, and does not say of which kind it is."),
    detail::conversionLoss("conversion-newer-element",
                           "<{element}> came with version {since}, and is left out: {content}",
                           "The target version does not have the element."),
    detail::conversionForm("conversion-media-rep-to-source",
                           "the path in <media-rep> is src of <asset> in version {target}: "
                           "{content}",
                           "The path of the media has another place."),
    detail::conversionForm("conversion-source-to-media-rep",
                           "src of <asset> is the path in <media-rep> in version {target}: "
                           "{content}",
                           "The path of the media has another place."),
    detail::conversionForm(
        "conversion-default-written",
        "{attribute}=\"{instead}\" is written at <{element}>, which version {target} does not take "
        "for granted",
        "The value that was meant is written out."),
    detail::conversionForm(
        "conversion-default-gained",
        "<{element}> says no {attribute}, which version {target} takes for \"{instead}\"",
        "The version gives the attribute a value where it is left out."),
    detail::conversionForm("conversion-renamed", "<{element}> is <{instead}> in version {target}",
                           "The element has another name."),
    detail::conversionForm("conversion-moved",
                           "<{element}> stands at another place in <{parent}> in version {target}",
                           "The version has the same parts in another order."),
    detail::conversionForm("conversion-transition-effect",
                           "the effect of <transition> is that of a <filter-video> in it in "
                           "version {target}: {content}",
                           "The reference has another place."),
    detail::conversionForm("conversion-root",
                           "<{element}> stands in an event of a library in version {target}, and "
                           "its resources in front of it",
                           "The parts of the file are put together in another way."),
};

}  // namespace vornic::rules

#endif
