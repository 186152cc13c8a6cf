#ifndef VORNIC_FORMATS_XMEML_VIEW_H
#define VORNIC_FORMATS_XMEML_VIEW_H

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/ElementIndex.h"
#include "formats/xmeml/Name.h"

namespace vornic::xmeml {

/// Elements by their numbers, the last one not included.
struct ElementRange {
    ElementNumber first = 0;
    ElementNumber end = 0;
};

/// An XMEML file as its rules read it: the index, with the names that they know as numbers.
class View {
  public:
    /// @param isComplete false when a fault ended the reading, so that the rest of the file is not
    ///     known.
    View(const ElementIndex& index, bool isComplete);

    [[nodiscard]] const ElementIndex& index() const { return *index_; }
    [[nodiscard]] bool isComplete() const { return isComplete_; }

    [[nodiscard]] Name nameOf(ElementNumber element) const {
        return names_[index_->nameNumberOf(element)];
    }
    [[nodiscard]] bool is(ElementNumber element, Name name) const {
        return element != kNoElement && nameOf(element) == name;
    }
    /// The element around it when that has the name, else `kNoElement`.
    [[nodiscard]] ElementNumber parentOf(ElementNumber element, Name name) const;
    [[nodiscard]] ElementNumber childOf(ElementNumber element, Name name) const;

    /// What the element says, as a program reads it: references replaced, white space at both ends
    /// left out. "" for none, and for an element with others in it.
    /// @param storage keeps the text where it differs from the file's; the result may view it.
    [[nodiscard]] std::string_view textOf(ElementNumber element, std::string& storage) const;
    /// The same, kept; "" for `kNoElement`.
    [[nodiscard]] std::string textOf(ElementNumber element) const;
    /// The value of the attribute "id", read in the same way.
    [[nodiscard]] std::string_view idOf(ElementNumber element, std::string& storage) const;

    /// Where a finding about the element stands: what it says, else its start tag.
    [[nodiscard]] TextSpan placeOf(ElementNumber element) const;

    /// What an editor calls it: `the clip item "A001"`, `the rate of the clip item "A001"`.
    [[nodiscard]] std::string describe(ElementNumber element) const;

    /// True for an element that only names another of its kind by its id: `<file id="f1"/>`.
    [[nodiscard]] bool isReference(ElementNumber element) const;

  private:
    [[nodiscard]] std::string titleOf(ElementNumber element) const;

    const ElementIndex* index_;
    bool isComplete_;
    // By the index's number of the name; the last is for names beyond those.
    std::vector<Name> names_;
};

/// A value as a message shows it: in quotes and not too long; "empty" when there is none.
[[nodiscard]] std::string quoted(std::string_view value);

/// The first child of each name, gathered in one walk over the children.
class Parts {
  public:
    Parts(const View& view, ElementNumber element);

    [[nodiscard]] ElementNumber operator[](Name name) const {
        return first_[static_cast<std::size_t>(name)];
    }
    [[nodiscard]] bool has(Name name) const { return (*this)[name] != kNoElement; }

  private:
    std::array<ElementNumber, kNameCount + 1> first_;
};

}  // namespace vornic::xmeml

#endif
