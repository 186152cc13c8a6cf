#ifndef VORNIC_APP_OPEN_PANEL_SETTINGS_H
#define VORNIC_APP_OPEN_PANEL_SETTINGS_H

#include <string>
#include <vector>

namespace vornic {

/// One kind of file that may be chosen.
struct AllowedFileType {
    enum class Kind {
        /// A name extension without its dot, in any case.
        extension,
        /// A classic type code of four characters.
        typeCode,
        /// A uniform type identifier. No file of this platform carries one.
        typeIdentifier,
    };
    Kind kind;
    std::string text;
    friend bool operator==(const AllowedFileType&, const AllowedFileType&) = default;
};

/// How an open panel is run.
struct OpenPanelSettings {
    bool canChooseFiles = true;
    bool canChooseDirectories = false;
    bool canCreateDirectories = false;
    bool allowsMultipleSelection = false;
    /// What the panel says above its files.
    std::string message;
    /// In the order in which they are to be offered.
    std::vector<AllowedFileType> allowedFileTypes;

    /// Whether the file (links followed) is of an allowed type: by the extension of its name, or by
    /// the type code in its FinderInfo structure. Reads the disk only where the name does not tell.
    /// Any thread.
    [[nodiscard]] bool allowsFile(const std::string& path) const;
};

}  // namespace vornic

#endif
