#ifndef VORNIC_XML_READER_XML_ATTRIBUTE_READER_H
#define VORNIC_XML_READER_XML_ATTRIBUTE_READER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string_view>

#include "xml/reader/XMLInput.h"

namespace vornic {

/// Reads the attributes of a start tag, one call for each, and finds those that are repeated.
class XMLAttributeReader {
  public:
    explicit XMLAttributeReader(XMLInput& input) : in_(input) {}

    /// Call at the beginning of each start tag. @param element its name.
    void beginTag(std::string_view element) {
        element_ = element;
        nameCount_ = 0;
        marks_ = 0;
        doubtfulEnd_ = false;
    }

    /// Reads the attribute whose name begins at the position.
    /// @param name which was looked for there already.
    /// @param spaced false when no white space stands before the name, which is a fault.
    void read(std::string_view name, bool spaced);

  private:
    // Up to this many names of a tag are simply compared with each other.
    static constexpr std::size_t kFewNames = 16;

    void checkRepetition(std::string_view name);
    [[nodiscard]] bool isAmongFew(std::string_view name) const;
    [[nodiscard]] bool addToMany(std::string_view name);
    void readQuotedValue(std::string_view name, bool spaced);
    void readUnquotedValue(std::string_view name, bool afterSpace);
    void addEmptyValue(std::string_view name, const char* place, std::string_view replacement);
    const char* passSpecialValue(const char* place);
    /// @param end the place behind the attribute.
    void report(std::string_view name, std::string_view value, const char* end);

    XMLInput& in_;
    std::string_view element_;
    std::size_t nameCount_ = 0;
    std::array<std::string_view, kFewNames> fewNames_;
    // A bit for each name, which others may share.
    std::uint64_t marks_ = 0;
    // All names, kept only for tags with many of them.
    std::set<std::string_view> manyNames_;
    // The last value held or ended with something that makes it doubtful where it really ends.
    bool doubtfulEnd_ = false;
};

}  // namespace vornic

#endif
