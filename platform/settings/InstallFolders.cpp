#include "platform/settings/InstallFolders.h"

#include <string_view>

#include "base/PathText.h"
#include "platform/settings/Bundle.h"

#ifndef VORNIC_BINDIR
#error "VORNIC_BINDIR and its like are the folders that GNUInstallDirs names"
#endif

namespace vornic::platform {
namespace {

std::string layoutOf(InstallFolder kind) {
    switch (kind) {
        case InstallFolder::programs:
            return VORNIC_BINDIR;
        case InstallFolder::helpers:
            return VORNIC_LIBEXECDIR "/vornic";
        case InstallFolder::libraries:
            return VORNIC_LIBDIR "/vornic";
        case InstallFolder::data:
            break;
    }
    return VORNIC_DATADIR "/vornic";
}

/// The prefixes below which a program in this folder may have been installed.
std::vector<std::string> prefixesFor(const std::string& programFolder) {
    for (const InstallFolder kind : {InstallFolder::programs, InstallFolder::helpers}) {
        const std::string layout = layoutOf(kind);
        if (layout.starts_with('/')) {
            if (programFolder == layout) {
                return {VORNIC_PREFIX};
            }
        } else if (programFolder.ends_with("/" + layout)) {
            return {programFolder.substr(0, programFolder.size() - layout.size())};
        }
    }
    const std::string parent = parentFolder(programFolder);
    return {parent, parentFolder(parent)};
}

}  // namespace

std::vector<std::string> installFolders(InstallFolder kind) {
    return installFoldersFor(parentFolder(executablePath()), kind);
}

std::vector<std::string> installFoldersFor(const std::string& programFolder, InstallFolder kind) {
    const std::string layout = layoutOf(kind);
    if (layout.starts_with('/')) {
        return {layout};
    }
    std::vector<std::string> folders;
    for (const std::string& prefix : prefixesFor(programFolder)) {
        folders.push_back(joinPath(prefix, layout));
    }
    return folders;
}

}  // namespace vornic::platform
