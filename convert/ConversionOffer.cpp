#include "convert/ConversionOffer.h"

#include "base/FormatString.h"
#include "base/Text.h"

namespace vornic {

std::int64_t ConversionOffer::lowestVersion() const {
    return lowest ? integerValue(versions[*lowest].key) : 1;
}

std::string ConversionOffer::lowestText() const {
    return formatString("Can be downgraded without changes to version: %@",
                        lowest ? versions[*lowest].title : "1 (Final Cut Pro 4+)");
}

}  // namespace vornic
