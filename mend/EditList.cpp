#include "mend/EditList.h"

#include <algorithm>
#include <cstdint>

#include "base/FormatString.h"
#include "base/Utf8.h"
#include "platform/processes/LargePages.h"
#include "xml/text/FileOffsets.h"

namespace vornic {

namespace {

std::ptrdiff_t growthOf(const Edit& edit) {
    return static_cast<std::ptrdiff_t>(edit.text.size()) - static_cast<std::ptrdiff_t>(edit.length);
}

// Makes larger pieces of small ones: each may be a call of the system.
class PieceGatherer {
  public:
    explicit PieceGatherer(const std::function<bool(std::string_view piece)>& take) : take_(take) {}

    bool add(std::string_view piece) {
        constexpr std::size_t kLarge = std::size_t{64} << 10U;
        if (piece.size() >= kLarge) {
            return flush() && take_(piece);
        }
        gathered_ += piece;
        return gathered_.size() < kLarge || flush();
    }
    bool flush() {
        const bool goesOn = gathered_.empty() || take_(gathered_);
        gathered_.clear();
        return goesOn;
    }

  private:
    const std::function<bool(std::string_view piece)>& take_;
    std::string gathered_;
};

// Walks two lists in the order of the text that lies between them, and joins what meets there.
class Composition {
  public:
    Composition(const EditList& first, const EditList& second) : first_(first), second_(second) {}

    EditList run() {
        while (atFirst_ < first_.size() || atSecond_ < second_.size()) {
            beginGroup();
            while (takeFirst() || takeSecond()) {
            }
            endGroup();
        }
        return std::move(joined_);
    }

  private:
    // Where the next edit of the first list has put its text.
    [[nodiscard]] std::size_t startOfFirst() const {
        return static_cast<std::size_t>(static_cast<std::ptrdiff_t>(first_[atFirst_].offset) +
                                        shift_);
    }

    void beginGroup() {
        read_ = atFirst_;
        readShift_ = shift_;
        groupSecond_ = atSecond_;
        const bool beginsWithFirst =
            atSecond_ == second_.size() ||
            (atFirst_ < first_.size() && startOfFirst() <= second_[atSecond_].offset);
        start_ = beginsWithFirst ? startOfFirst() : second_[atSecond_].offset;
        end_ = start_;
        startShift_ = shift_;
    }

    bool takeFirst() {
        if (atFirst_ == first_.size() || startOfFirst() > end_) {
            return false;
        }
        const Edit& edit = first_[atFirst_];
        end_ = std::max(end_, startOfFirst() + edit.text.size());
        shift_ += growthOf(edit);
        ++atFirst_;
        return true;
    }

    bool takeSecond() {
        if (atSecond_ == second_.size() || second_[atSecond_].offset > end_) {
            return false;
        }
        end_ = std::max(end_, second_[atSecond_].offset + second_[atSecond_].length);
        ++atSecond_;
        return true;
    }

    void endGroup() {
        Edit edit;
        edit.offset = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(start_) - startShift_);
        edit.length =
            static_cast<std::size_t>(static_cast<std::ptrdiff_t>(end_) - shift_) - edit.offset;
        std::size_t from = start_;
        for (std::size_t index = groupSecond_; index < atSecond_; ++index) {
            appendOfFirst(edit.text, from, second_[index].offset);
            edit.text += second_[index].text;
            from = second_[index].offset + second_[index].length;
        }
        appendOfFirst(edit.text, from, end_);
        joined_.push_back(std::move(edit));
    }

    // What the group's edits of the first list have written between two offsets; there is nothing
    // else there. The offsets only grow.
    void appendOfFirst(std::string& text, std::size_t from, std::size_t to) {
        for (; read_ < atFirst_; ++read_) {
            const Edit& edit = first_[read_];
            const auto start =
                static_cast<std::size_t>(static_cast<std::ptrdiff_t>(edit.offset) + readShift_);
            const std::size_t begin = std::max(from, start);
            const std::size_t end = std::min(to, start + edit.text.size());
            if (begin < end) {
                text.append(edit.text, begin - start, end - begin);
            }
            if (start + edit.text.size() > to) {
                return;
            }
            readShift_ += growthOf(edit);
        }
    }

    const EditList& first_;
    const EditList& second_;
    EditList joined_;
    std::size_t atFirst_ = 0;
    std::size_t atSecond_ = 0;
    // From an offset of the original to one of the text between the lists.
    std::ptrdiff_t shift_ = 0;
    // The group: what it covers of the text between, and what belongs to it.
    std::size_t start_ = 0;
    std::size_t end_ = 0;
    std::ptrdiff_t startShift_ = 0;
    std::size_t groupSecond_ = 0;
    // The next edit of the first list whose text has not been read to its end.
    std::size_t read_ = 0;
    std::ptrdiff_t readShift_ = 0;
};

// The text with every character that the encoding lacks as a reference.
std::optional<std::string> encodeWithReferences(std::string_view text,
                                                const std::string& encoding) {
    std::string encoded;
    for (std::size_t at = 0; at < text.size();) {
        const Utf8Character character = utf8CharacterAt(text, at);
        std::optional<std::string> bytes = encodeText(text.substr(at, character.length), encoding);
        if (!bytes) {
            bytes = encodeText(formatString("&#x%X;", static_cast<std::uint32_t>(character.code)),
                               encoding);
        }
        if (!bytes) {
            return std::nullopt;
        }
        encoded += *bytes;
        at += character.length;
    }
    return encoded;
}

}  // namespace

std::string applyEdits(std::string_view text, const EditList& edits) {
    std::size_t size = text.size();
    for (const Edit& edit : edits) {
        size += edit.text.size();
    }
    std::string result;
    platform::reserveInLargePages(result, size);
    const platform::PagesAhead ahead(result.data(), size);
    std::size_t from = 0;
    for (const Edit& edit : edits) {
        result.append(text, from, edit.offset - from);
        result += edit.text;
        from = edit.offset + edit.length;
    }
    result.append(text, from);
    return result;
}

bool forEachPieceAfter(std::string_view text, const EditList& edits,
                       const std::function<bool(std::string_view piece)>& take) {
    PieceGatherer gatherer(take);
    std::size_t from = 0;
    for (const Edit& edit : edits) {
        if (!gatherer.add(text.substr(from, edit.offset - from)) || !gatherer.add(edit.text)) {
            return false;
        }
        from = edit.offset + edit.length;
    }
    return gatherer.add(text.substr(from)) && gatherer.flush();
}

EditList composeEdits(const EditList& first, const EditList& second) {
    return Composition(first, second).run();
}

std::optional<EditList> encodeEdits(const EditList& edits, const std::string& encoding) {
    EditList encoded = edits;
    if (encoding == "UTF-8") {
        return encoded;
    }
    for (Edit& edit : encoded) {
        std::optional<std::string> bytes = encodeWithReferences(edit.text, encoding);
        if (!bytes) {
            return std::nullopt;
        }
        edit.text = std::move(*bytes);
    }
    return encoded;
}

EditList toTextOffsets(const EditList& edits, const DecodedText& source) {
    EditList moved = edits;
    if (source.decoding.encoding == "UTF-8") {
        for (Edit& edit : moved) {
            edit.offset -= std::min(edit.offset, source.decoding.markLength);
        }
        return moved;
    }
    FileOffsets offsets(source.text, source.decoding);
    std::size_t at = 0;
    const auto advance = [&](std::size_t fileOffset) {
        while (at < source.text.size() && offsets.of(at) < fileOffset) {
            at += utf8CharacterAt(source.text, at).length;
        }
        return at;
    };
    for (Edit& edit : moved) {
        const std::size_t end = edit.offset + edit.length;
        edit.offset = advance(edit.offset);
        edit.length = advance(end) - edit.offset;
    }
    return moved;
}

OldOffsets::OldOffsets(const EditList& edits) : edits_(edits) {
    std::size_t shift = 0;  // wraps around where a text got shorter
    starts_.reserve(edits.size());
    for (const Edit& edit : edits) {
        starts_.push_back(edit.offset + shift);
        shift += edit.text.size() - edit.length;
    }
}

std::size_t OldOffsets::of(std::size_t offset) const {
    const auto next = std::upper_bound(starts_.begin(), starts_.end(), offset);
    if (next == starts_.begin()) {
        return offset;
    }
    const auto index = static_cast<std::size_t>(next - starts_.begin()) - 1;
    const Edit& edit = edits_[index];
    const std::size_t inside = offset - starts_[index];
    return inside < edit.text.size() ? edit.offset
                                     : edit.offset + edit.length + inside - edit.text.size();
}

}  // namespace vornic
