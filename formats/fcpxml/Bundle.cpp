#include "formats/fcpxml/Bundle.h"

#include "base/PathText.h"
#include "base/Text.h"

namespace vornic::fcpxml {

bool isBundleName(std::string_view path) {
    const std::string name = lastComponent(path);
    return lowercased(splitExtension(name).extension) == kBundleExtension;
}

std::string bundleAround(const std::string& path) {
    const std::string folder = parentFolder(path);
    return isBundleName(folder) ? folder : path;
}

std::string contentOfBundle(std::string_view bundle) {
    return joinPath(bundle, kBundleContent);
}

}  // namespace vornic::fcpxml
