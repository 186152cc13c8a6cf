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
    IndexUpdate(const ElementIndex& before, std::string_view text, const std::vector<Edit>& edits)
        : before_(before), after_(text), edits_(edits) {}

    std::optional<ElementIndex> run() && {
        const bool isShort = after_.text_.size() < std::numeric_limits<std::uint32_t>::max();
        if (before_.size() == 0 || !before_.unclosed_.empty() || !isShort || !findTouched()) {
            return std::nullopt;
        }
        after_.entries_ = before_.entries_.copy();
        after_.ids_ = before_.ids_;
        after_.withAttribute_ = before_.withAttribute_;
        after_.named_ = before_.named_;
        after_.names_ = before_.names_;
        move();
        for (const ElementNumber element : touched_) {
            if (!readAgain(element)) {
                return std::nullopt;
            }
        }
        return std::move(after_);
    }

  private:
    // The innermost element that an edit is inside of; `kNoElement` outside the root.
    [[nodiscard]] ElementNumber elementAround(const Edit& edit) const {
        ElementNumber element = before_.elementAt(edit.offset);
        while (element != kNoElement) {
            const TextSpan span = before_.spanOf(element);
            if (span.offset < edit.offset && edit.offset + edit.length < span.end()) {
                return element;
            }
            element = before_.parentOf(element);
        }
        return kNoElement;
    }

    // @return false where reading these elements would take as long as reading all.
    bool findTouched() {
        std::size_t length = 0;
        for (const Edit& edit : edits_) {
            const ElementNumber element = elementAround(edit);
            if (element == kNoElement || element == 0) {
                return false;
            }
            around_.push_back(element);
            if (touched_.empty() || touched_.back() != element) {
                touched_.push_back(element);
                length += before_.spanOf(element).length;
            }
        }
        return length <= after_.text_.size();
    }

    void move() {
        std::size_t next = 0;
        std::uint32_t shift = 0;  // wraps around where the text got shorter
        for (ElementNumber element = 0; element < after_.entries_.size(); ++element) {
            auto& entry = after_.entries_[element];
            for (;
                 next < edits_.size() && edits_[next].offset + edits_[next].length <= entry.offset;
                 ++next) {
                shift += growthOf(edits_[next]);
            }
            entry.offset += shift;
        }
        for (std::size_t index = 0; index < edits_.size(); ++index) {
            for (ElementNumber element = around_[index]; element != kNoElement;
                 element = before_.parentOf(element)) {
                after_.entries_[element].length += growthOf(edits_[index]);
            }
        }
    }

    // Reads one element by itself. @return false when it is not the same elements as before.
    bool readAgain(ElementNumber root) {
        const auto base = after_.entries_[root].offset;
        const std::string_view text = after_.spanOf(root).of(after_.text_);
        ElementIndexBuilder builder(text);
        if (readXML(text, XMLMode::strict, &builder).fault) {
            return false;
        }
        const ElementIndex read = std::move(builder).finish();
        if (read.size() != before_.endOf(root) - root || read.spanOf(0).length != text.size()) {
            return false;
        }
        for (ElementNumber element = 0; element < read.size(); ++element) {
            if (!isSame(read, element, root)) {
                return false;
            }
            auto& entry = after_.entries_[root + element];
            entry.offset = base + read.entries_[element].offset;
            entry.length = read.entries_[element].length;
        }
        return true;
    }

    // Whether an element of what was read is the one that it was, ids and other attributes
    // included.
    [[nodiscard]] bool isSame(const ElementIndex& read, ElementNumber element,
                              ElementNumber root) const {
        const ElementNumber old = root + element;
        return read.endOf(element) + root == before_.endOf(old) &&
               (element == 0 || read.parentOf(element) + root == before_.parentOf(old)) &&
               read.startTagOf(element).of(read.text_) == before_.startTagOf(old).of(before_.text_);
    }

    [[nodiscard]] static std::uint32_t growthOf(const Edit& edit) {
        return static_cast<std::uint32_t>(edit.text.size() - edit.length);
    }

    const ElementIndex& before_;
    ElementIndex after_;
    const std::vector<Edit>& edits_;
    // Of each edit.
    std::vector<ElementNumber> around_;
    std::vector<ElementNumber> touched_;
};

std::optional<ElementIndex> indexAfterEdits(const ElementIndex& before, std::string_view text,
                                            const std::vector<Edit>& edits) {
    return IndexUpdate(before, text, edits).run();
}

}  // namespace vornic
