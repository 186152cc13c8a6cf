#ifndef VORNIC_CHECK_DECLARED_ENCODING_H
#define VORNIC_CHECK_DECLARED_ENCODING_H

#include <string_view>

#include "report/Findings.h"
#include "xml/text/TextDecoding.h"

namespace vornic {

/// How the encoding that a file names goes with the one that it has.
enum class EncodingClaim {
    /// They agree, or the file names none.
    right,
    /// They differ, and XML parsers go by the bytes.
    wrong,
    /// The file names a single-byte encoding, which any bytes fit, and all it has is UTF-8.
    misleading,
    /// The file says UTF-16 and has single bytes: refused.
    refused,
};

/// Compares the encoding in the XML declaration with the bytes of a file (XML 1.0, section 4.3.3),
/// and adds a finding, with a mend, where they contradict each other.
/// @param text what `decoding` made of the bytes.
EncodingClaim checkDeclaredEncoding(std::string_view bytes, std::string_view text,
                                    const TextDecoding& decoding, Findings& findings);

}  // namespace vornic

#endif
