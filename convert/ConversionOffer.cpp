#include "convert/ConversionOffer.h"

#include "base/Text.h"

namespace vornic {

std::int64_t ConversionOffer::lowestVersion() const {
    return lowest ? integerValue(versions[*lowest].key) : 1;
}

std::string ConversionOffer::lowestTitle() const {
    return lowest ? versions[*lowest].title : "1 (Final Cut Pro 4+)";
}

}  // namespace vornic
