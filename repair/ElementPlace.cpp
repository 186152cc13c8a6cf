#include "repair/ElementPlace.h"

#include "xml/TextPlace.h"
#include "xml/XMLReader.h"

namespace vornic {

namespace {

class StartTags : public XMLReaderEvents {
  public:
    StartTags(std::string_view name, std::size_t index) : name_(name), left_(index) {}

    /// The offset of the tag that was wanted; nothing when it did not come.
    [[nodiscard]] std::optional<std::size_t> found() const { return found_; }

    void startElement(std::string_view name) override {
        if (!found_ && name == name_ && left_-- == 0) {
            found_ = place().offset;
        }
    }
    void attribute(std::string_view /*name*/, std::string_view /*rawValue*/) override {}
    void endElement(std::string_view /*name*/, bool /*selfClosed*/) override {}
    void text(std::string_view /*rawText*/) override {}
    void cdata(std::string_view /*content*/) override {}
    void comment(std::string_view /*content*/) override {}
    void processingInstruction(std::string_view /*target*/, std::string_view /*data*/) override {}
    void documentType(std::string_view /*name*/, std::string_view /*rawDeclaration*/) override {}

  private:
    std::string_view name_;
    std::size_t left_;
    std::optional<std::size_t> found_;
};

}  // namespace

std::optional<Place> placeOfElement(std::string_view text, std::string_view name,
                                    std::size_t index) {
    StartTags tags(name, index);
    static_cast<void>(readXML(text, XMLMode::tolerant, &tags));
    if (!tags.found()) {
        return std::nullopt;
    }
    TextPlace lines(text);
    lines.moveTo(*tags.found());
    Place place;
    place.offset = *tags.found();
    place.line = lines.line();
    place.column = lines.column();
    return place;
}

}  // namespace vornic
