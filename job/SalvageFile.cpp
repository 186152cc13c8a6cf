#include "job/SalvageFile.h"

#include <utility>

#include "base/FormatString.h"
#include "base/PathText.h"
#include "platform/files/FileSystem.h"
#include "salvage/Salvage.h"

namespace vornic {

namespace {

std::string outputPath(const std::string& path, const std::optional<std::string>& output) {
    if (!output) {
        return salvagedPath(path);
    }
    return platform::isDirectory(*output) ? joinPath(*output, lastComponent(salvagedPath(path)))
                                          : *output;
}

}  // namespace

std::string salvagedPath(const std::string& path) {
    const std::string name = lastComponent(path);
    const auto parts = splitExtension(name);
    return path.substr(0, path.size() - name.size()) + std::string(parts.stem) + "-salvaged" +
           std::string(parts.extension);
}

SalvagedFile salvageFile(const std::string& path, const std::optional<std::string>& output,
                         std::size_t mostOfARule) {
    SalvagedFile result;
    result.report.path = path;
    std::optional<std::string> bytes = platform::readFile(path, result.error);
    if (!bytes) {
        return result;
    }
    salvage::SalvageOptions options;
    options.mostOfARule = mostOfARule;
    salvage::Salvage salvaged = salvage::salvage(std::move(*bytes), options);
    result.report = std::move(salvaged.report);
    result.report.path = path;
    result.report.copies.emplace();
    result.isSound = salvaged.isSound;
    if (!salvaged.refusal.empty()) {
        result.error.emplace();
        result.error->domain = kXMLErrorDomain;
        result.error->description =
            formatString("The file %@ was not salvaged. %@", path, salvaged.refusal);
        return result;
    }
    for (const std::string& copy : salvaged.copies) {
        std::optional<ResultFile> written =
            writeResultFile(outputPath(path, output), copy, path, result.error);
        if (!written) {
            return result;
        }
        result.report.copies->push_back(written->path);
        result.copies.push_back(std::move(*written));
    }
    return result;
}

}  // namespace vornic
