#include "formats/fcpxml/Bundle.h"

#include "base/PathText.h"
#include "base/Text.h"

namespace vornic::fcpxml {

bool isBundleName(std::string_view path) {
    const std::string name = lastComponent(path);
    return lowercased(splitExtension(name).extension) == kBundleExtension;
}

std::string contentOfBundle(std::string_view bundle) {
    return joinPath(bundle, kBundleContent);
}

}  // namespace vornic::fcpxml
