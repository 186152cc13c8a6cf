#include "repair/pipeline/ElementPlace.h"

#include <utility>

#include "formats/ElementIndexBuilder.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/TextPlace.h"

namespace vornic {

std::optional<Place> placeOfElement(std::string_view text, std::string_view name,
                                    std::size_t index) {
    ElementIndexBuilder builder(text);
    static_cast<void>(readXML(text, XMLMode::tolerant, &builder));
    const ElementIndex elements = std::move(builder).finish();
    std::size_t left = index;
    for (ElementNumber element = 0; element < elements.size(); ++element) {
        if (elements.isNamed(element, name) && left-- == 0) {
            TextPlace lines(text);
            lines.moveTo(elements.spanOf(element).offset);
            Place place;
            place.offset = elements.spanOf(element).offset;
            place.line = lines.line();
            place.column = lines.column();
            return place;
        }
    }
    return std::nullopt;
}

}  // namespace vornic
