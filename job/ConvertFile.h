#ifndef VORNIC_JOB_CONVERT_FILE_H
#define VORNIC_JOB_CONVERT_FILE_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/StopToken.h"
#include "convert/ProjectConversion.h"
#include "job/SwapObserver.h"
#include "job/Waiting.h"
#include "platform/files/ContentDigest.h"

namespace vornic {

/// Whether a result is a bundle: a folder `NAME.fcpxmld` with the project in `Info.fcpxml`, which
/// FCPXML has from 1.10 on. As the file: a bundle of a bundle, where the version has bundles.
enum class BundleForm { asTheFile, bundle, file };

/// How a file is to be converted.
struct ConvertFileRequest {
    ConversionRequest conversion;
    /// Write nothing.
    bool isDryRun = false;
    /// Write nothing when something would be lost.
    bool isStrict = false;
    /// The result takes the file's place, the original goes to the Trash.
    bool isInPlace = false;
    BundleForm form = BundleForm::asTheFile;
    /// The file or folder that takes the result; nothing for a name with the version beside the
    /// file.
    std::optional<std::string> output;
    /// Of the bytes that the user has seen: a file with others is not converted. Nothing for any.
    std::optional<platform::ContentDigest::Value> expected = {};
    /// Asked before anything is written, and when that is to take the file's place; none for never.
    StopToken stop{};
};

/// How the conversion of a file ended.
struct ConvertedFile {
    /// With the path of the file, and in `conversion` that of the result.
    Report report;
    std::uint64_t losses = 0;
    /// Why nothing was written although something was to be, as a sentence; "" otherwise.
    std::string refusal;
    /// Whether that is because the file's format has no such version.
    bool isOtherFormat = false;
    /// What the user should know besides, a sentence each.
    std::vector<std::string> notes;
    /// Where the original lies after `isInPlace`; "" otherwise.
    std::string original;
};

/// Converts a project file, or the project of a bundle, and writes the result: as a new file beside
/// it, at a place of the user's choice, or in its own place. What else a bundle holds is copied
/// along. Nothing that stands anywhere is replaced but the file itself, with `isInPlace`. Raises
/// nothing but for memory that has run out. Any thread.
/// @param path of the file; of a bundle, that of the `Info.fcpxml` in it
/// @param observer follows the swap of `isInPlace`: `JournaledSwap`, so that it can be undone
[[nodiscard]] ConvertedFile convertFile(const std::string& path, const ConvertFileRequest& request,
                                        const Waiting& waiting, SwapObserver& observer);

}  // namespace vornic

#endif
