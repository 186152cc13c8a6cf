#include "formats/fcpxml/Bundle.h"

#include "base/PathText.h"
#include "base/Text.h"

namespace vornic::fcpxml {

bool isBundleName(std::string_view path) {
    const std::string name = platform::lastComponent(path);
    return lowercased(platform::splitExtension(name).extension) == kBundleExtension;
}

std::string contentOfBundle(std::string_view bundle) {
    return platform::joinPath(bundle, kBundleContent);
}

}  // namespace vornic::fcpxml
