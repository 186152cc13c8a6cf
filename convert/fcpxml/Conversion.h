#ifndef VORNIC_CONVERT_FCPXML_CONVERSION_H
#define VORNIC_CONVERT_FCPXML_CONVERSION_H

#include <cstdint>
#include <optional>
#include <string>

#include "formats/ElementIndex.h"
#include "formats/fcpxml/Version.h"
#include "mend/EditList.h"
#include "report/Findings.h"
#include "xml/text/TextSpan.h"

namespace vornic::fcpxml {

inline constexpr Version kOldestTarget{6};

/// How a text becomes one of another version.
struct Conversion {
    /// Of the text that was converted; empty where it cannot be.
    EditList edits;
    /// How much is lost: nothing where something only takes another form.
    std::uint64_t losses = 0;
    /// Why the text cannot be converted without inventing something, in words that follow the
    /// place; "" when it can.
    std::string refusal;
    /// Where; of the text.
    TextSpan refusedAt;
};

/// Converts a text to another version and reports what it drops or rewrites. A result of a
/// valid text is valid by the definition of its version; faults of the text stay as they are. From
/// 1.6 on nothing is refused. Linear; any thread.
/// @param index of the whole text, whose root is `fcpxml`
/// @param from the version that the text is in, whatever it declares
/// @param to `kOldestTarget` or newer
/// @param findings takes what is reported, with offsets in the text
[[nodiscard]] Conversion convert(const ElementIndex& index, Version from, Version to,
                                 Findings& findings);

/// The lowest version, from `kOldestTarget` on, in which the text loses nothing; nothing where it
/// loses something in all of them.
[[nodiscard]] std::optional<Version> lowestVersion(const ElementIndex& index, Version from);

}  // namespace vornic::fcpxml

#endif
