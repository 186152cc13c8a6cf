#include "convert/fcpxml/Conversion.h"

#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "base/FormatString.h"
#include "convert/MarkupEdits.h"
#include "convert/fcpxml/ChildOrder.h"
#include "convert/fcpxml/VersionStep.h"
#include "formats/ElementIndexBuilder.h"
#include "report/RuleTable.h"

namespace vornic::fcpxml {

namespace {

using std::string;

string insteadOf(const Change& change) {
    if (change.rule != "conversion-value-lost"_rule) {
        return string(change.instead);
    }
    return change.instead.empty() ? "" : formatString(", so that it is \"%@\"", change.instead);
}

// Reads a text that a step has made of a well-formed one.
class IndexedText {
  public:
    explicit IndexedText(string text) : text_(std::move(text)), builder_(text_) {
        static_cast<void>(readXML(text_, XMLMode::tolerant, &builder_, &mends_));
        index_.emplace(std::move(builder_).finish());
    }
    [[nodiscard]] const ElementIndex& index() const { return *index_; }

  private:
    string text_;
    UnheardXMLMends mends_;
    ElementIndexBuilder builder_;
    std::optional<ElementIndex> index_;
};

// Goes from version to version, and tells what happens with the places of the first text.
class ConversionRun {
  public:
    ConversionRun(const ElementIndex& index, Version from, Version to, Findings& findings)
        : first_(index), index_(&index), version_(from), target_(to), findings_(findings) {}

    Conversion run() && {
        if (version_ < kOldestTarget) {
            while (version_ < kOldestTarget && isGoing()) {
                takeStep(Version(version_.minor() + 1));
            }
        }
        if (isGoing() && (version_ != target_ || first_.version() != target_.text())) {
            step(target_);
        }
        if (!isGoing()) {
            conversion_.edits.clear();
        }
        return std::move(conversion_);
    }

  private:
    [[nodiscard]] bool isGoing() const { return conversion_.refusal.empty(); }

    void takeStep(Version next) {
        ChildOrder order = ChildOrder::of(*index_, version_, next);
        for (const Change& change : order.changes) {
            tell(change, next);
        }
        take(std::move(order.edits));
        step(next);
    }

    void step(Version next) {
        VersionStep step(*index_, version_, next);
        step.run();
        if (const auto& missing = step.missing()) {
            const TextSpan tag = index_->startTagOf(missing->element);
            conversion_.refusal =
                formatString("<%@> has no %@, which FCPXML %@ asks for",
                             index_->nameOf(missing->element), missing->attribute, next.text());
            conversion_.refusedAt = oldSpan(tag);
            return;
        }
        for (const Change& change : step.changes()) {
            tell(change, next);
        }
        version_ = next;
        if (next == target_) {
            compose(step.takeEdits());
        } else {
            take(step.takeEdits());
        }
    }

    void compose(EditList edits) {
        oldOffsets_.reset();
        conversion_.edits =
            conversion_.edits.empty() ? std::move(edits) : composeEdits(conversion_.edits, edits);
    }

    // Goes on with what the edits make of the text.
    void take(EditList edits) {
        if (edits.empty()) {
            return;
        }
        string text = applyEdits(index_->text(), edits);
        compose(std::move(edits));
        text_ = std::make_unique<IndexedText>(std::move(text));
        index_ = &text_->index();
    }

    [[nodiscard]] TextSpan oldSpan(TextSpan span) {
        if (conversion_.edits.empty()) {
            return span;
        }
        if (!oldOffsets_) {
            oldOffsets_.emplace(conversion_.edits);
        }
        const std::size_t start = oldOffsets_->of(span.offset);
        const std::size_t end = oldOffsets_->of(span.end());
        return {start, end > start ? end - start : 0};
    }

    void tell(const Change& change, Version next) {
        conversion_.losses += ruleOf(change.rule).severity == Severity::warning ? 1 : 0;
        Finding* const finding = findings_.add(change.rule, TextSpan());
        if (finding == nullptr) {
            return;
        }
        // Of an element its start tag is the place, of an attribute its value.
        const bool isElement = change.content == index_->spanOf(change.element);
        const TextSpan where =
            oldSpan(isElement ? index_->startTagOf(change.element) : change.content);
        finding->where.offset = where.offset;
        finding->where.length = where.length;
        const std::string_view content = change.content.of(index_->text());
        const ElementNumber parent = index_->parentOf(change.element);
        finding->arguments = {
            {"element", string(index_->nameOf(change.element))},
            {"parent", parent == vornic::kNoElement ? "" : string(index_->nameOf(parent))},
            {"attribute", string(change.attribute)},
            {"instead", insteadOf(change)},
            {"target", next.text()},
            {"content", shortened(content)}};
        if (ruleOf(change.rule).severity == Severity::warning) {
            finding->lost = content;
        }
    }

    const ElementIndex& first_;
    const ElementIndex* index_;
    std::unique_ptr<IndexedText> text_;
    Version version_;
    Version target_;
    Findings& findings_;
    Conversion conversion_;
    // Of the text that the steps so far have made.
    std::optional<OldOffsets> oldOffsets_;
};

}  // namespace

Conversion convert(const ElementIndex& index, Version from, Version to, Findings& findings) {
    return ConversionRun(index, from, to, findings).run();
}

std::optional<Version> lowestVersion(const ElementIndex& index, Version from) {
    for (int minor = kOldestTarget.minor(); minor <= Version::kNewestMinor; ++minor) {
        Findings uncounted(0);
        const Conversion conversion = convert(index, from, Version(minor), uncounted);
        if (conversion.refusal.empty() && conversion.losses == 0) {
            return Version(minor);
        }
    }
    return std::nullopt;
}

}  // namespace vornic::fcpxml
