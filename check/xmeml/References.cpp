#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "base/Text.h"
#include "check/xmeml/RepeatedItems.h"
#include "check/xmeml/Rules.h"
#include "check/xmeml/TrackTable.h"
#include "check/xmeml/WhiteSpace.h"
#include "formats/xmeml/IdTable.h"
#include "formats/xmeml/Number.h"
#include "xml/text/TextPlace.h"

namespace vornic::xmeml {

namespace {

using std::string;

struct RepeatedItem {
    // The first one with the id.
    ElementNumber first;
    ElementNumber element;
};

class ReferenceCheck {
  public:
    ReferenceCheck(const View& view, Findings& findings)
        : view_(view), index_(view.index()), findings_(findings), freshIds_(view.index()) {}

    void run() {
        for (ElementNumber element = 0; element < index_.size(); ++element) {
            gather(element);
        }
        for (IdTable* const table : {&files_, &filesReferred_, &items_, &clips_, &clipsReferred_,
                                     &masters_, &mastersReferred_}) {
            table->sort();
        }
        checkFiles();
        checkClips();
        checkMasters();
        checkItemsAndLinks();
    }

  private:
    void checkItemsAndLinks() {
        std::vector<RepeatedItem> repeated;
        items_.forEachRepeated(readId_, [&](ElementNumber first, ElementNumber element) {
            repeated.push_back({first, element});
        });
        if (repeated.empty() && links_.empty()) {
            return;
        }
        const TrackTable tracks(view_);
        if (!repeated.empty()) {
            addRepeatedItems(repeated, tracks);
        }
        for (const ElementNumber link : links_) {
            checkLink(link, tracks);
        }
    }

    void gather(ElementNumber element) {
        switch (view_.nameOf(element)) {
            case Name::file:
                return add(element, files_, filesReferred_);
            case Name::sequence:
            case Name::clip:
            case Name::multiclip:
                return add(element, clips_, clipsReferred_);
            case Name::clipitem:
            case Name::generatoritem:
                return addItem(element);
            case Name::masterclipid:
                return addMaster(element);
            case Name::link:
                return links_.push_back(element);
            default:
                return;
        }
    }

    void add(ElementNumber element, IdTable& defined, IdTable& referred) {
        const std::string_view id = view_.idOf(element, storage_);
        if (!id.empty()) {
            (index_.firstChildOf(element) == kNoElement ? referred : defined).add(element, id);
        }
    }

    void addItem(ElementNumber element) {
        const std::string_view id = view_.idOf(element, storage_);
        if (!id.empty() && index_.firstChildOf(element) != kNoElement) {
            items_.add(element, id);
        }
    }

    void addMaster(ElementNumber element) {
        const std::string_view id = view_.textOf(element, storage_);
        if (id.empty()) {
            return;
        }
        const bool isOfMaster = view_.parentOf(element, Name::clip) != kNoElement;
        (isOfMaster ? masters_ : mastersReferred_).add(element, id);
    }

    void checkFiles();
    [[nodiscard]] std::optional<Mend> renamingOf(ElementNumber element);
    void checkClips();
    void checkMasters();
    void addRepeatedItems(const std::vector<RepeatedItem>& repeated, const TrackTable& tracks);
    void addRepeatedItem(const RepeatedItem& repeated, RepeatedItems& items);
    void checkLink(ElementNumber link, const TrackTable& tracks);
    void addDanglingLink(ElementNumber link, const string& target);
    void checkLinkNumbers(ElementNumber link, const Parts& parts, ElementNumber target,
                          const TrackTable& tracks);
    void addLinkNumbers(ElementNumber link, const Parts& parts, ElementNumber target,
                        const ItemPlace& place);

    const View& view_;
    const ElementIndex& index_;
    Findings& findings_;
    FreshIds freshIds_;
    string storage_;
    IdTable files_;
    IdTable filesReferred_;
    IdTable clips_;
    IdTable clipsReferred_;
    IdTable items_;
    IdTable masters_;
    IdTable mastersReferred_;
    std::vector<ElementNumber> links_;
    const IdTable::Reader readId_ = [this](ElementNumber element, string& storage) {
        return view_.idOf(element, storage);
    };
    const IdTable::Reader readText_ = [this](ElementNumber element, string& storage) {
        return view_.textOf(element, storage);
    };
};

void ReferenceCheck::checkFiles() {
    files_.forEachRepeated(readId_, [this](ElementNumber first, ElementNumber element) {
        const bool isSame = equalButForWhiteSpace(index_.contentOf(first).of(index_.text()),
                                                  index_.contentOf(element).of(index_.text()));
        const TextSpan tag = index_.startTagOf(element);
        Finding* const finding = findings_.add(
            isSame ? "references-file-repeated"_rule : "references-file-redefined"_rule, tag);
        if (finding == nullptr) {
            return;
        }
        string storage;
        finding->arguments = {{"thing", view_.describe(element)},
                              {"id", excerpt(view_.idOf(element, storage))}};
        if (isSame) {
            const std::size_t end = index_.spanOf(element).end();
            finding->mend = Mend{Confidence::safe,
                                 "write a reference to the first definition in its place",
                                 {{tag.end() - 1, end - (tag.end() - 1), "/>"}}};
        } else if (filesReferred_.find(view_.idOf(element, storage), readId_) == kNoElement) {
            finding->mend = renamingOf(element);
        }
    });
    for (const ElementNumber element : filesReferred_.firstOfEach(readId_)) {
        string storage;
        const std::string_view id = view_.idOf(element, storage);
        if (files_.find(id, readId_) == kNoElement) {
            findings_.add("references-file-undefined"_rule, index_.startTagOf(element),
                          {{"id", excerpt(id)}});
        }
    }
}

// For an element that nothing else refers to.
std::optional<Mend> ReferenceCheck::renamingOf(ElementNumber element) {
    const TextSpan id = *index_.attributeOf(element, "id");
    const std::string_view text = trimmed(id.of(index_.text()));
    if (text.find('&') != std::string_view::npos) {
        return std::nullopt;
    }
    const string fresh = freshIds_.like(text);
    return Mend{Confidence::ask, "write the id \"" + fresh + "\"", {{id.offset, id.length, fresh}}};
}

void ReferenceCheck::checkClips() {
    for (const ElementNumber element : clipsReferred_.firstOfEach(readId_)) {
        string storage;
        const std::string_view id = view_.idOf(element, storage);
        if (clips_.find(id, readId_) == kNoElement) {
            findings_.add("references-clip-undefined"_rule, index_.startTagOf(element),
                          {{"kind", index_.nameOf(element)}, {"id", excerpt(id)}});
        }
    }
}

void ReferenceCheck::checkMasters() {
    for (const ElementNumber element : mastersReferred_.firstOfEach(readText_)) {
        string storage;
        const std::string_view id = view_.textOf(element, storage);
        if (clips_.find(id, readId_) != kNoElement || masters_.find(id, readText_) != kNoElement) {
            continue;
        }
        if (Finding* const finding =
                findings_.add("references-master-clip-missing"_rule, view_.placeOf(element))) {
            finding->arguments = {{"thing", view_.describe(index_.parentOf(element))},
                                  {"id", excerpt(id)}};
        }
    }
}

void ReferenceCheck::addRepeatedItems(const std::vector<RepeatedItem>& repeated,
                                      const TrackTable& tracks) {
    RepeatedItems items(view_, tracks, freshIds_);
    for (const RepeatedItem& each : repeated) {
        items.addItem(each.first, each.element);
    }
    for (const ElementNumber link : links_) {
        const ElementNumber reference = view_.childOf(link, Name::linkclipref);
        if (reference != kNoElement) {
            items.addLink(link, reference, items_.find(view_.textOf(reference, storage_), readId_));
        }
    }
    for (const RepeatedItem& each : repeated) {
        addRepeatedItem(each, items);
    }
}

void ReferenceCheck::addRepeatedItem(const RepeatedItem& repeated, RepeatedItems& items) {
    const auto& [first, element] = repeated;
    if (Finding* const finding =
            findings_.add("references-clip-item-repeated"_rule, index_.startTagOf(element))) {
        string storage;
        finding->arguments = {{"thing", view_.describe(element)},
                              {"id", excerpt(view_.idOf(element, storage))},
                              {"other", view_.describe(first)}};
        finding->mend = items.mendOf(first, element);
    }
}

void ReferenceCheck::checkLink(ElementNumber link, const TrackTable& tracks) {
    const Parts parts(view_, link);
    if (!parts.has(Name::linkclipref)) {
        return checkLinkNumbers(link, parts, kNoElement, tracks);
    }
    const std::string_view id = view_.textOf(parts[Name::linkclipref], storage_);
    const ElementNumber target = items_.find(id, readId_);
    if (target == kNoElement) {
        return addDanglingLink(link, "\"" + excerpt(id) + "\"");
    }
    checkLinkNumbers(link, parts, target, tracks);
}

void ReferenceCheck::addDanglingLink(ElementNumber link, const string& target) {
    if (Finding* const finding =
            findings_.add("references-dangling-link"_rule, index_.startTagOf(link))) {
        const TextSpan span = withSpaceBefore(index_.text(), index_.spanOf(link));
        finding->arguments = {{"thing", view_.describe(index_.parentOf(link))}, {"target", target}};
        finding->mend =
            Mend{Confidence::ask, "take the link out", {{span.offset, span.length, ""}}};
    }
}

// What the numbers of a link lead to: to its target, where it names one, or to any clip item.
void ReferenceCheck::checkLinkNumbers(ElementNumber link, const Parts& parts, ElementNumber target,
                                      const TrackTable& tracks) {
    string storage;
    const auto numberOf = [this, &parts, &storage](Name name) {
        return readNumber(view_.textOf(parts[name], storage)).whole();
    };
    const std::optional<std::int64_t> track = numberOf(Name::trackindex);
    const std::optional<std::int64_t> clip = numberOf(Name::clipindex);
    const string media = lowercased(view_.textOf(parts[Name::mediatype], storage));
    if (!track || !clip || (media != "video" && media != "audio")) {
        return;
    }
    const bool isAudio = media == "audio";
    const std::optional<ItemPlace> own = tracks.placeOf(index_.parentOf(link));
    if (target == kNoElement) {
        if (own && (*clip < 1 || *clip > tracks.itemCount(own->track.timeline, isAudio, *track))) {
            addDanglingLink(link, "clip " + std::to_string(*clip) + " of " + media + " track " +
                                      std::to_string(*track));
        }
        return;
    }
    const std::optional<ItemPlace> place = tracks.placeOf(target);
    if (!own || !place || own->track.timeline != place->track.timeline) {
        return;
    }
    const bool isRight = place->track.isAudio == isAudio && place->track.number == *track &&
                         (place->number == *clip || place->numberWithTransitions == *clip);
    if (!isRight) {
        addLinkNumbers(link, parts, target, *place);
    }
}

void ReferenceCheck::addLinkNumbers(ElementNumber link, const Parts& parts, ElementNumber target,
                                    const ItemPlace& place) {
    Finding* const finding = findings_.add("references-link-numbers"_rule, index_.startTagOf(link));
    if (finding == nullptr) {
        return;
    }
    const string media = place.track.isAudio ? "audio" : "video";
    const string track = std::to_string(place.track.number);
    const string clip = std::to_string(place.number);
    finding->arguments = {{"thing", view_.describe(index_.parentOf(link))},
                          {"target", view_.describe(target)},
                          {"media", view_.textOf(parts[Name::mediatype])},
                          {"track", view_.textOf(parts[Name::trackindex])},
                          {"clip", view_.textOf(parts[Name::clipindex])},
                          {"rightmedia", media},
                          {"righttrack", track},
                          {"rightclip", clip}};
    Mend mend{Confidence::ask, "write the numbers of the clip item that the link names", {}};
    for (const auto& [name, text] :
         {std::pair(Name::mediatype, media), std::pair(Name::trackindex, track),
          std::pair(Name::clipindex, clip)}) {
        const TextSpan written = *index_.textOf(parts[name]);
        mend.edits.push_back({written.offset, written.length, text});
    }
    std::sort(mend.edits.begin(), mend.edits.end(),
              [](const Edit& left, const Edit& right) { return left.offset < right.offset; });
    finding->mend = std::move(mend);
}

}  // namespace

void checkReferences(const View& view, Findings& findings) {
    ReferenceCheck(view, findings).run();
}

}  // namespace vornic::xmeml
