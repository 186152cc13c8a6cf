#ifndef VORNIC_APP_CLI_PATH_LOOKUP_H
#define VORNIC_APP_CLI_PATH_LOOKUP_H

#include <string>
#include <string_view>

namespace vornic {

/// What `vornic-check --where PATH FILE` says.
struct PathLookup {
    bool isFound = false;
    /// The place with the lines around it, or where the path ends, in lines that end with a line
    /// break. Text from the file is escaped as for a terminal.
    std::string text;
    /// False when the file's bytes are no text in which a path could be looked for.
    bool isText = true;
};

/// Looks for the element or attribute of a path as editing programs print it, such as
/// "/fcpxml[1]/event[1]/project[2]/@ref"; a step without a number means the first. Any thread.
/// @param bytes of the whole file, as far as it can be read: what stands before a fault that ends
///     the reading is found.
/// @param name what the file is called in the text.
[[nodiscard]] PathLookup lookUpPath(std::string bytes, std::string_view name,
                                    std::string_view path);

/// Whether a text has the form of such a path.
[[nodiscard]] bool isElementPath(std::string_view text);

}  // namespace vornic

#endif
