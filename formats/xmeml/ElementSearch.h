#ifndef VORNIC_FORMATS_XMEML_ELEMENT_SEARCH_H
#define VORNIC_FORMATS_XMEML_ELEMENT_SEARCH_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vornic {

/// Finds which of a list of element strings occur in a text, each followed by a blank or by ">", in
/// one pass for all of them. A plain, case-sensitive search for bytes: markup is not interpreted,
/// and the strings are opaque (they need not begin with "<"). The text may come in pieces; a string
/// that spans pieces is found. Time is linear in the length of the text whatever the number of
/// strings.
class ElementSearch {
  public:
    explicit ElementSearch(const std::vector<std::string>& elements);
    ~ElementSearch();
    ElementSearch(const ElementSearch&) = delete;
    ElementSearch& operator=(const ElementSearch&) = delete;

    /// Searches the next piece. @return false when every string has been found already, so that
    /// more pieces change nothing.
    bool append(std::string_view piece);
    /// True when the string at the index of the list has been found.
    [[nodiscard]] bool found(std::size_t index) const;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace vornic

#endif
