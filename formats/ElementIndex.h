#ifndef VORNIC_FORMATS_ELEMENT_INDEX_H
#define VORNIC_FORMATS_ELEMENT_INDEX_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "formats/FileKind.h"
#include "platform/processes/PagedList.h"
#include "xml/text/TextSpan.h"

namespace vornic {

/// An element of an index: its number in document order, the root's being 0.
using ElementNumber = std::uint32_t;
inline constexpr ElementNumber kNoElement = std::numeric_limits<ElementNumber>::max();

/// All elements of a text with their places, which of them have ids, and where the references,
/// media paths and the like of its format are: what rules need instead of a tree, in 20 bytes an
/// element, 8 for an id and 4 for a reference. Values are not kept but looked up in the text, which
/// must outlive the index. Made in one pass by `ElementIndexBuilder`.
///
/// A rule over all elements is a loop over their numbers; one over references or files a loop over
/// those alone:
///
///     for (ElementNumber element : index.elementsWithAttribute("ref")) {
///         const TextSpan value = *index.attributeOf(element, "ref");
///         const ElementNumber target = index.elementWithId(value.of(index.text()));
///         …
///     }
///
/// Texts of 4 GiB and more are not indexed (the index is empty). All spans are bytes of the text.
/// Reading is safe from any thread.
class ElementIndex {
  public:
    /// @param text the text that will be read.
    explicit ElementIndex(std::string_view text) : text_(text) {}

    [[nodiscard]] std::string_view text() const { return text_; }
    /// By the root element.
    [[nodiscard]] FileKind kind() const {
        return fileKindOfRoot(size() == 0 ? std::string_view() : nameOf(0));
    }
    /// What the root element's attribute "version" says, "" when it has none.
    [[nodiscard]] std::string_view version() const {
        return size() == 0 ? std::string_view() : attributeTextOf(0, "version");
    }
    [[nodiscard]] std::size_t size() const { return entries_.size(); }

    [[nodiscard]] std::string_view nameOf(ElementNumber element) const;
    [[nodiscard]] bool isNamed(ElementNumber element, std::string_view name) const {
        return nameOf(element) == name;
    }
    /// For rules over all elements, which compare numbers quicker than names: which of the text's
    /// different names the element has. `nameCount()` for all after the first 65535 ones.
    [[nodiscard]] std::size_t nameNumberOf(ElementNumber element) const {
        const std::uint16_t name = entries_[element].name;
        return name == kOtherName ? nameCount() : name;
    }
    [[nodiscard]] std::size_t nameCount() const { return names_.size(); }
    [[nodiscard]] std::string_view nameNumbered(std::size_t number) const { return names_[number]; }

    /// The element around it; `kNoElement` for the root.
    [[nodiscard]] ElementNumber parentOf(ElementNumber element) const {
        return entries_[element].parent;
    }
    /// The number behind those of all elements inside it: they are `element + 1` up to this one.
    [[nodiscard]] ElementNumber endOf(ElementNumber element) const { return entries_[element].end; }
    /// The first child element, or `kNoElement`.
    [[nodiscard]] ElementNumber firstChildOf(ElementNumber element) const {
        return element + 1 < endOf(element) ? element + 1 : kNoElement;
    }
    /// The next child element of the same parent, or `kNoElement`.
    [[nodiscard]] ElementNumber nextSiblingOf(ElementNumber element) const;
    /// The first child element of that name, or `kNoElement`.
    [[nodiscard]] ElementNumber childOf(ElementNumber element, std::string_view name) const;
    /// The nearest element around it that has the name, or `kNoElement`.
    [[nodiscard]] ElementNumber ancestorOf(ElementNumber element, std::string_view name) const;

    /// From the `<` of the start tag to behind the end tag.
    [[nodiscard]] TextSpan spanOf(ElementNumber element) const {
        return {entries_[element].offset, entries_[element].length};
    }
    /// From `<` to behind `>`.
    [[nodiscard]] TextSpan startTagOf(ElementNumber element) const;
    /// True for `<name/>` and for `<name></name>`.
    [[nodiscard]] bool isEmpty(ElementNumber element) const {
        return contentOf(element).length == 0;
    }
    /// False for an element that the reading ended in: what it lacks may have come later.
    [[nodiscard]] bool isClosed(ElementNumber element) const;
    /// Those elements, from the outermost on.
    [[nodiscard]] const std::vector<ElementNumber>& unclosed() const { return unclosed_; }
    /// What is between start tag and end tag.
    [[nodiscard]] TextSpan contentOf(ElementNumber element) const;

    /// An attribute's raw value, without the quotes; nothing when there is no such attribute.
    /// Values without quotes are found, too.
    [[nodiscard]] std::optional<TextSpan> attributeOf(ElementNumber element,
                                                      std::string_view name) const;
    /// The same as text; "" when there is no such attribute.
    [[nodiscard]] std::string_view attributeTextOf(ElementNumber element,
                                                   std::string_view name) const;
    /// The raw content without white space at both ends; nothing when there are elements in it.
    [[nodiscard]] std::optional<TextSpan> textOf(ElementNumber element) const;
    /// The raw text of the first child of that name; "" when there is none.
    [[nodiscard]] std::string_view childTextOf(ElementNumber element, std::string_view name) const;

    /// The innermost element that the byte at the offset belongs to; `kNoElement` outside the root.
    [[nodiscard]] ElementNumber elementAt(std::size_t offset) const;
    /// What a path as editing programs print it leads to: an element's start tag, or the value of
    /// an attribute (`/fcpxml[1]/event[1]/project[2]/@ref`). A step without a number means the
    /// first. Nothing when there is none.
    [[nodiscard]] std::optional<TextSpan> find(std::string_view path) const;

    /// The first element with the id (attribute "id", blanks at both ends ignored); `kNoElement`
    /// when there is none.
    [[nodiscard]] ElementNumber elementWithId(std::string_view id) const;
    /// All of them, in document order.
    [[nodiscard]] std::vector<ElementNumber> elementsWithId(std::string_view id) const;
    /// How many elements have an id, and which, in no particular order.
    [[nodiscard]] std::size_t idCount() const { return ids_.size(); }
    [[nodiscard]] ElementNumber idOwner(std::size_t index) const { return ids_[index].element; }
    /// Sets of elements that share an id, each in document order, at most `limit` sets.
    [[nodiscard]] std::vector<std::vector<ElementNumber>> repeatedIds(std::size_t limit) const;

    /// The elements with an attribute, or of a name, that the format's facts list
    /// (`fcpxml::kIndexedNames`, `xmeml::kIndexedNames`), in document order; none for other names.
    [[nodiscard]] const std::vector<ElementNumber>& elementsWithAttribute(
        std::string_view name) const;
    [[nodiscard]] const std::vector<ElementNumber>& elementsNamed(std::string_view name) const;

    /// What a user calls the element: the name that the format gives it, as raw text; "" for none,
    /// also where an XMEML element's name does not stand among its first children.
    [[nodiscard]] std::string_view titleOf(ElementNumber element) const;

    /// Bytes of memory that the index takes.
    [[nodiscard]] std::size_t memory() const;

  private:
    friend class ElementIndexBuilder;
    friend class IndexUpdate;

    struct Entry {
        std::uint32_t offset = 0;
        std::uint32_t length = 0;
        ElementNumber parent = kNoElement;
        ElementNumber end = 0;
        std::uint16_t name = 0;
        // `kLongTag` for a longer one, which is measured when it is asked for.
        std::uint16_t startTagLength = 0;
    };
    static_assert(sizeof(Entry) == 20);
    struct Id {
        std::uint32_t hash;
        ElementNumber element;
    };
    struct Collection {
        std::string_view name;
        std::vector<ElementNumber> elements;
    };

    static constexpr std::uint16_t kLongTag = std::numeric_limits<std::uint16_t>::max();
    // For the names after the first 65535 ones, which are read in the text.
    static constexpr std::uint16_t kOtherName = std::numeric_limits<std::uint16_t>::max();

    [[nodiscard]] static std::uint32_t hashOf(std::string_view id);
    [[nodiscard]] static const std::vector<ElementNumber>& find(
        const std::vector<Collection>& collections, std::string_view name);
    [[nodiscard]] std::string_view idOf(ElementNumber element) const;
    [[nodiscard]] std::pair<std::size_t, std::size_t> idsWithHash(std::uint32_t hash) const;
    void sortIds();

    std::string_view text_;
    platform::PagedList<Entry> entries_;
    // Sorted by hash, then by element.
    std::vector<Id> ids_;
    std::vector<Collection> withAttribute_;
    std::vector<Collection> named_;
    std::deque<std::string> names_;
    // Ascending.
    std::vector<ElementNumber> unclosed_;
};

}  // namespace vornic

#endif
