#ifndef VORNIC_FORMATS_ELEMENT_INDEX_BUILDER_H
#define VORNIC_FORMATS_ELEMENT_INDEX_BUILDER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "formats/ElementIndex.h"
#include "formats/IndexedNames.h"
#include "xml/reader/XMLReader.h"

namespace vornic {

/// Makes the index of a text while `readXML` reads it, for both formats and for any other root
/// element:
///
///     ElementIndexBuilder builder(text);
///     const XMLReading reading = readXML(text, XMLMode::tolerant, &builder, &sink);
///     const ElementIndex index = std::move(builder).finish();
///
/// After a fault the index holds what was read before it; elements that were open end there.
class ElementIndexBuilder final : public XMLReaderEvents {
  public:
    explicit ElementIndexBuilder(std::string_view text)
        : index_(text), isTooLong_(text.size() >= kLongest) {}

    [[nodiscard]] ElementIndex finish() &&;

    void startElement(std::string_view name) override;
    void attribute(std::string_view name, std::string_view rawValue) override;
    void finishStartTag() override;
    void endElement(std::string_view name, bool selfClosed) override;
    void text(std::string_view rawText) override;
    void cdata(std::string_view content) override;
    void comment(std::string_view content) override;
    void processingInstruction(std::string_view target, std::string_view data) override;
    void documentType(std::string_view name, std::string_view rawDeclaration) override;

  private:
    using Entry = ElementIndex::Entry;
    using Collection = ElementIndex::Collection;

    static constexpr std::size_t kLongest = 0xFFFFFFFF;
    static constexpr std::uint8_t kNotListed = 0xFF;

    void listNamesOf(FileKind kind);
    [[nodiscard]] std::uint16_t numberOf(std::string_view name);
    [[nodiscard]] std::uint16_t newNumberOf(std::string_view name);
    void noteEnd(std::size_t offset) { lastOffset_ = offset; }

    ElementIndex index_;
    bool isTooLong_;
    std::vector<ElementNumber> open_;
    std::size_t lastOffset_ = 0;
    std::unordered_map<std::string_view, std::uint16_t> numbers_;
    // For each name, its place among the listed ones.
    std::vector<std::uint8_t> listing_;
    // The numbers of the names that were met last, by a cheap hash.
    std::array<std::uint16_t, 256> recent_{};
};

/// The root element with its attributes, where it stands near the beginning of a text; else
/// nothing. What a file is has to be known before it is read as such.
[[nodiscard]] ElementIndex indexOfHead(std::string_view text);

}  // namespace vornic

#endif
