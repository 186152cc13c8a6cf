#ifndef VORNIC_REPORT_MEND_RECORD_H
#define VORNIC_REPORT_MEND_RECORD_H

#include <string>

#include "report/Finding.h"

namespace vornic {

/// What became of the mend of one finding.
struct MendRecord {
    /// With its mend, and with its place in the file as the user gave it.
    Finding finding;
    bool isMade = false;
    /// Why not, in words that follow "not mended: "; "" when it is made.
    std::string why;
};

}  // namespace vornic

#endif
