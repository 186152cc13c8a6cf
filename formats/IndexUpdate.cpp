#include "formats/IndexUpdate.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

#include "formats/ElementIndexBuilder.h"
#include "xml/reader/XMLReader.h"

namespace vornic {

class IndexUpdate {
  public:
    IndexUpdate(ElementIndex before, std::string_view text, const std::vector<Edit>& edits)
        : index_(std::move(before)), oldText_(index_.text_), text_(text), edits_(edits) {}

    std::optional<ElementIndex> run() && {
        const bool isShort = text_.size() < std::numeric_limits<std::uint32_t>::max();
        if (index_.size() == 0 || !index_.unclosed_.empty() || !isShort || !findTouched()) {
            return std::nullopt;
        }
        move();
        index_.text_ = text_;
        for (const Touched& touched : touched_) {
            if (!readAgain(touched)) {
                return std::nullopt;
            }
        }
        return std::move(index_);
    }

  private:
    // An element that is read again, with the start tags that it and those inside it had.
    struct Touched {
        ElementNumber root;
        std::vector<std::string_view> startTags;
    };

    // @return false where reading these elements would take as long as reading all.
    bool findTouched() {
        std::size_t length = 0;
        for (const Edit& edit : edits_) {
            const ElementNumber root = elementAround(index_, edit);
            if (root == kNoElement || root == 0) {
                return false;
            }
            around_.push_back(root);
            if (touched_.empty() || touched_.back().root != root) {
                length += index_.spanOf(root).length;
                if (length > text_.size()) {
                    return false;
                }
                Touched& touched = touched_.emplace_back(Touched{root, {}});
                for (ElementNumber element = root; element < index_.endOf(root); ++element) {
                    touched.startTags.push_back(index_.startTagOf(element).of(oldText_));
                }
            }
        }
        return true;
    }

    void move() {
        std::size_t next = 0;
        std::uint32_t shift = 0;  // wraps around where the text got shorter
        for (ElementNumber element = 0; element < index_.entries_.size(); ++element) {
            auto& entry = index_.entries_[element];
            for (;
                 next < edits_.size() && edits_[next].offset + edits_[next].length <= entry.offset;
                 ++next) {
                shift += growthOf(edits_[next]);
            }
            entry.offset += shift;
        }
        for (std::size_t index = 0; index < edits_.size(); ++index) {
            for (ElementNumber element = around_[index]; element != kNoElement;
                 element = index_.parentOf(element)) {
                index_.entries_[element].length += growthOf(edits_[index]);
            }
        }
    }

    // Reads one element by itself. @return false when it is not the same elements as before.
    bool readAgain(const Touched& touched) {
        const ElementNumber root = touched.root;
        const auto base = index_.entries_[root].offset;
        const std::string_view text = index_.spanOf(root).of(text_);
        ElementIndexBuilder builder(text);
        if (readXML(text, XMLMode::strict, &builder).fault) {
            return false;
        }
        const ElementIndex read = std::move(builder).finish();
        if (read.size() != touched.startTags.size() || read.spanOf(0).length != text.size()) {
            return false;
        }
        for (ElementNumber element = 0; element < read.size(); ++element) {
            if (!isSame(read, element, touched)) {
                return false;
            }
            auto& entry = index_.entries_[root + element];
            entry.offset = base + read.entries_[element].offset;
            entry.length = read.entries_[element].length;
        }
        return true;
    }

    // Whether an element of what was read is the one that it was, ids and other attributes
    // included.
    [[nodiscard]] bool isSame(const ElementIndex& read, ElementNumber element,
                              const Touched& touched) const {
        const ElementNumber old = touched.root + element;
        return read.endOf(element) + touched.root == index_.endOf(old) &&
               (element == 0 || read.parentOf(element) + touched.root == index_.parentOf(old)) &&
               read.startTagOf(element).of(read.text_) == touched.startTags[element];
    }

    [[nodiscard]] static std::uint32_t growthOf(const Edit& edit) {
        return static_cast<std::uint32_t>(edit.text.size() - edit.length);
    }

    ElementIndex index_;
    std::string_view oldText_;
    std::string_view text_;
    const std::vector<Edit>& edits_;
    // Of each edit.
    std::vector<ElementNumber> around_;
    std::vector<Touched> touched_;
};

ElementNumber elementAround(const ElementIndex& before, const Edit& edit) {
    ElementNumber element = before.elementAt(edit.offset);
    while (element != kNoElement) {
        const TextSpan span = before.spanOf(element);
        if (span.offset < edit.offset && edit.offset + edit.length < span.end()) {
            return element;
        }
        element = before.parentOf(element);
    }
    return kNoElement;
}

std::optional<ElementIndex> indexAfterEdits(ElementIndex before, std::string_view text,
                                            const std::vector<Edit>& edits) {
    return IndexUpdate(std::move(before), text, edits).run();
}

}  // namespace vornic
