#ifndef VORNIC_JOB_CONVERSION_COMMIT_H
#define VORNIC_JOB_CONVERSION_COMMIT_H

#include <string>
#include <vector>

#include "base/Error.h"
#include "convert/VersionConversion.h"
#include "job/SwapObserver.h"
#include "job/Waiting.h"
#include "xml/tree/XMLDocument.h"

namespace vornic {

/// What became of a conversion that was written.
struct ConversionResult {
    /// Why the document could not be saved; the file is then as it was.
    ErrorSlot saveError;
    /// Why the type and creator codes could not be read; the error of the save counts as that too.
    ErrorSlot loadCodesError;
    /// Why the type and creator codes could not be written.
    ErrorSlot writeCodesError;
    /// Where the original lies in the Trash; "" where it was not kept.
    std::string original;
    /// What else the user should know, a sentence each.
    std::vector<std::string> notes;
    /// The wait for another run was ended; nothing was written.
    bool isCancelled = false;
};

/// Makes the document one of the plan's version and saves it in place of the file, atomically, with
/// the type and creator codes of Final Cut Pro XML. Elements that the version does not know must be
/// gone (`stripElementsAbove`). Behind a symbolic link the file that the link names is replaced. A
/// file that another program has changed since the document was loaded from it stays as it is,
/// which is an error of the save. Any thread.
/// @param document null to write no document and set the codes alone
[[nodiscard]] ConversionResult commitConversion(XMLDocument* document, const ConversionPlan& plan,
                                                const std::string& path);

/// The same with the original kept in the Trash. Waits for another run that changes the file, and
/// leaves a file alone that another program has open to write it.
/// @param document not null
[[nodiscard]] ConversionResult commitConversionKeepingOriginal(XMLDocument& document,
                                                               const ConversionPlan& plan,
                                                               const std::string& path,
                                                               const Waiting& waiting,
                                                               SwapObserver& observer);

}  // namespace vornic

#endif
