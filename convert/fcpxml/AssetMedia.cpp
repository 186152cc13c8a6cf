#include "convert/fcpxml/AssetMedia.h"

#include <algorithm>
#include <string>

#include "formats/StartTag.h"
#include "report/RuleTable.h"
#include "xml/text/AttributeValue.h"

namespace vornic::fcpxml {

namespace {

constexpr std::string_view kOriginal = "original-media";

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

}  // namespace

void AssetMedia::convertStartTag(ElementNumber asset) {
    asset_ = asset;
    chosen_ = vornic::kNoElement;
    wrapsBookmark_ = false;
    if (state_.crossesUpTo(9)) {
        toMediaRep();
    } else {
        toSource();
    }
}

void AssetMedia::toMediaRep() {
    const ElementIndex& index = state_.index;
    StartTag tag(index.text(), index.spanOf(asset_).offset);
    std::optional<TextSpan> source;
    while (tag.next()) {
        if (tag.name() == "src" && !source) {
            source = tag.value();
            state_.edits.removeAttribute(tag.attribute());
        }
    }
    if (!source) {
        return;
    }
    const char quote = state_.edits.quoteOf(*source);
    std::string rep = "<media-rep kind=\"original-media\" src=";
    rep.append(1, quote).append(source->of(index.text())).append(1, quote);
    const ElementNumber bookmark = index.firstChildOf(asset_);
    wrapsBookmark_ = bookmark != vornic::kNoElement && index.isNamed(bookmark, "bookmark");
    if (wrapsBookmark_) {
        state_.edits.add(index.spanOf(bookmark).offset, 0, rep + ">");
    } else {
        state_.edits.insertFirstChild(asset_, rep + "/>");
    }
    state_.changes.push_back({"conversion-source-to-media-rep"_rule, asset_, *source, "src", {}});
}

// The first of the original media, else the first one at all.
ElementNumber AssetMedia::chosenRep() const {
    const ElementIndex& index = state_.index;
    ElementNumber first = vornic::kNoElement;
    for (ElementNumber child = index.firstChildOf(asset_); child != vornic::kNoElement;
         child = index.nextSiblingOf(child)) {
        if (!index.isNamed(child, "media-rep") || !index.attributeOf(child, "src")) {
            continue;
        }
        const std::string kind =
            normalisedAttributeValue(index.attributeTextOf(child, "kind"), true);
        if (kind.empty() || kind == kOriginal) {
            return child;
        }
        first = std::min(first, child);
    }
    return first;
}

void AssetMedia::toSource() {
    // A path that stands there already is a fault of the file.
    if (!state_.index.attributeOf(asset_, "src")) {
        chosen_ = chosenRep();
    }
    if (chosen_ == vornic::kNoElement) {
        return;
    }
    const TextSpan source = *state_.index.attributeOf(chosen_, "src");
    state_.edits.insertAttribute(asset_, "src", source.of(state_.index.text()),
                                 state_.edits.quoteOf(source));
    state_.changes.push_back({"conversion-media-rep-to-source"_rule, asset_, source, "src", {}});
}

bool AssetMedia::convertChild(ElementNumber child) {
    const ElementIndex& index = state_.index;
    if (index.parentOf(child) != asset_) {
        return false;
    }
    if (state_.crossesUpTo(9)) {
        const bool isWrapped = wrapsBookmark_ && child == index.firstChildOf(asset_);
        if (isWrapped) {
            state_.edits.add(index.spanOf(child).end(), 0, "</media-rep>");
        }
        return isWrapped;
    }
    if (!index.isNamed(child, "media-rep") || chosen_ == vornic::kNoElement) {
        return false;
    }
    if (child == chosen_) {
        tellLostOf(child);
        unwrap(child);
    } else {
        remove(child);
    }
    return true;
}

void AssetMedia::tellLostOf(ElementNumber mediaRep) {
    StartTag tag(state_.index.text(), state_.index.spanOf(mediaRep).offset);
    while (tag.next()) {
        const std::string_view value = tag.value().of(state_.index.text());
        const bool isSaid =
            tag.name() == "src" ||
            (tag.name() == "kind" && normalisedAttributeValue(value, true) == kOriginal);
        if (!isSaid) {
            state_.changes.push_back({tag.name() == "kind" ? "conversion-no-original-media"_rule
                                                           : "conversion-attribute-lost"_rule,
                                      mediaRep,
                                      tag.value(),
                                      tag.name(),
                                      {}});
        }
    }
}

// The bookmark takes the place of what is around it.
void AssetMedia::unwrap(ElementNumber mediaRep) {
    const ElementIndex& index = state_.index;
    const ElementNumber bookmark = index.childOf(mediaRep, "bookmark");
    const TextSpan whole = index.spanOf(mediaRep);
    state_.removed.emplace_back(
        mediaRep, bookmark == vornic::kNoElement ? index.endOf(mediaRep) : mediaRep + 1);
    if (bookmark == vornic::kNoElement) {
        return state_.edits.remove(whole);
    }
    const TextSpan kept = index.spanOf(bookmark);
    const TextSpan startTag = index.startTagOf(mediaRep);
    const TextSpan endTag = state_.edits.endTagOf(mediaRep);
    // Comments and the like stay.
    const std::string_view before =
        index.text().substr(startTag.end(), kept.offset - startTag.end());
    const std::string_view behind = index.text().substr(kept.end(), endTag.offset - kept.end());
    state_.edits.removeInText(
        {whole.offset, startTag.length + (isBlank(before) ? before.size() : 0)});
    state_.edits.removeInText(isBlank(behind) ? TextSpan{kept.end(), behind.size() + endTag.length}
                                              : endTag);
}

void AssetMedia::remove(ElementNumber mediaRep) {
    const TextSpan whole = state_.index.spanOf(mediaRep);
    state_.edits.remove(whole);
    state_.changes.push_back({"conversion-element-lost"_rule, mediaRep, whole, {}, {}});
    state_.removed.emplace_back(mediaRep, state_.index.endOf(mediaRep));
}

}  // namespace vornic::fcpxml
