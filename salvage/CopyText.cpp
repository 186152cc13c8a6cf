#include <algorithm>
#include <string>

#include "salvage/Structure.h"
#include "xml/text/XMLCharacters.h"

namespace vornic::salvage {

namespace {

// Writes one copy, change by change.
class CopyWriter {
  public:
    CopyWriter(std::string_view text, const Structure& structure, const CopyRange& range)
        : text_(text),
          names_(structure.names),
          comments_(structure.changes[2]),
          end_(range.end),
          at_(range.offset) {
        const std::size_t line = text.find('\n');
        newLine_ =
            line != std::string_view::npos && line > 0 && text[line - 1] == '\r' ? "\r\n" : "\n";
        out_.reserve(range.end - range.offset + 256);
    }

    void apply(const Change& change, ChangeSink& sink) {
        if (change.offset < at_ || isOfRemovedTag(change) || isOfComment(change)) {
            return;
        }
        out_.append(text_.substr(at_, change.offset - at_));
        at_ = change.offset + change.length;
        const std::size_t offset = out_.size();
        write(change);
        sink.made(change, offset);
        if (change.kind == ChangeKind::removeEndTag || change.kind == ChangeKind::removeStartTag) {
            removedEnd_ = at_;
        }
        if (change.kind == ChangeKind::commentText) {
            commentEnd_ = at_;
        }
    }

    std::string finish() && {
        if (at_ < end_) {
            out_.append(text_.substr(at_, end_ - at_));
        }
        return std::move(out_);
    }

  private:
    // What made a tag whole that has been taken out since.
    [[nodiscard]] bool isOfRemovedTag(const Change& change) const {
        return change.kind == ChangeKind::closeTag && change.offset == removedEnd_ &&
               removedEnd_ != 0;
    }

    // What made elements whole that have become a comment.
    [[nodiscard]] bool isOfComment(const Change& change) const {
        const bool isEndTag =
            change.kind == ChangeKind::insertEndTag || change.kind == ChangeKind::closeAtEnd;
        return isEndTag
                   ? isInComment(change.other)
                   : change.offset == commentEnd_ && commentEnd_ != 0 && rankOf(change.kind) == 0;
    }

    // Comments are among what is between documents.
    [[nodiscard]] bool isInComment(std::size_t offset) const {
        auto next = std::upper_bound(
            comments_.begin(), comments_.end(), offset,
            [](std::size_t value, const Change& change) { return value < change.offset; });
        if (next == comments_.begin()) {
            return false;
        }
        --next;
        return next->kind == ChangeKind::commentText && offset < next->offset + next->length;
    }

    void write(const Change& change) {
        switch (change.kind) {
            case ChangeKind::insertEndTag:
            case ChangeKind::closeAtEnd:
                return writeEndTag(change);
            case ChangeKind::insertStartTag:
                return writeStartTag(change);
            case ChangeKind::renameEndTag:
            case ChangeKind::renameStartTag:
                out_ += names_.textOf(change.name);
                return;
            case ChangeKind::closeTag:
                out_ += '>';
                return;
            case ChangeKind::closeValue:
                out_ += quoteBefore();
                return;
            case ChangeKind::openValue:
                out_ += change.name == 0 ? '"' : '\'';
                return;
            case ChangeKind::closeComment:
                out_ += out_.ends_with('-') ? " -->" : "-->";
                return;
            case ChangeKind::closeCDATA:
                out_ += "]]>";
                return;
            case ChangeKind::closeInstruction:
                out_ += "?>";
                return;
            case ChangeKind::closeDocumentType:
                out_ += '>';
                return;
            case ChangeKind::escapeLessThan:
                out_ += "&lt;";
                return;
            case ChangeKind::commentText:
                return writeComment(text_.substr(change.offset, change.length));
            default:
                return;
        }
    }

    // The quote that the value which ends here began with.
    [[nodiscard]] char quoteBefore() const {
        const std::size_t equals = out_.rfind('=');
        const std::size_t quote =
            equals == std::string::npos ? equals : out_.find_first_of("\"'", equals);
        return quote == std::string::npos ? '"' : out_[quote];
    }

    void writeEndTag(const Change& change) {
        if (change.isOnOwnLine) {
            out_ += newLine_;
            out_ += blanksBefore(change.other);
        }
        out_ += "</";
        out_ += names_.textOf(change.name);
        out_ += '>';
    }

    void writeStartTag(const Change& change) {
        if (change.isOnOwnLine) {
            out_ += blanksBefore(change.other);
        }
        out_ += '<';
        out_ += names_.textOf(change.name);
        out_ += '>';
        if (change.isOnOwnLine) {
            out_ += newLine_;
        }
    }

    void writeComment(std::string_view content) {
        out_ += "<!-- ";
        while (!content.empty()) {
            const std::size_t end = std::min(content.find("--"), content.size());
            out_ += content.substr(0, end);
            content.remove_prefix(end);
            if (!content.empty()) {
                out_ += "- ";
                content.remove_prefix(1);
            }
        }
        out_ += " -->";
    }

    [[nodiscard]] std::string_view blanksBefore(std::size_t offset) const {
        std::size_t from = offset;
        while (from > 0 && (text_[from - 1] == ' ' || text_[from - 1] == '\t')) {
            --from;
        }
        return text_.substr(from, offset - from);
    }

    std::string_view text_;
    const NameTable& names_;
    const Changes& comments_;
    std::string_view newLine_;
    std::size_t end_;
    std::size_t at_;
    std::size_t removedEnd_ = 0;
    std::size_t commentEnd_ = 0;
    std::string out_;
};

// Changes where one copy ends and the next begins: whether this one is of the copy that ends.
bool endsWhatIsBefore(ChangeKind kind) {
    return rankOf(kind) == 0 || kind == ChangeKind::insertEndTag;
}

}  // namespace

std::string makeCopy(std::string_view text, const Structure& structure, const CopyRange& range,
                     ChangeSink& sink) {
    CopyWriter writer(text, structure, range);
    const bool isLast = range.end == text.size();
    MergedChanges changes(structure.changes, range.offset);
    while (const Change* const change = changes.next()) {
        if (change->offset > range.end ||
            (!isLast && change->offset == range.end && !endsWhatIsBefore(change->kind))) {
            break;
        }
        if (range.offset == 0 || change->offset != range.offset ||
            !endsWhatIsBefore(change->kind)) {
            writer.apply(*change, sink);
        }
    }
    return std::move(writer).finish();
}

}  // namespace vornic::salvage
