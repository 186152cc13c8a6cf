#ifndef VORNIC_APP_WINDOW_CONVERSION_PREVIEW_H
#define VORNIC_APP_WINDOW_CONVERSION_PREVIEW_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/window/FileActions.h"
#include "base/StopToken.h"
#include "convert/ConversionOffer.h"
#include "formats/FileKind.h"
#include "platform/files/ContentDigest.h"
#include "report/Findings.h"

namespace vornic {

/// Places of a file that lose the same thing.
struct ConversionLoss {
    /// What goes: "<note> has no place in <clip> in version 1.8 and is left out".
    std::string what;
    std::uint64_t count = 0;
    /// Names and places of the first ones, with what is lost: "Clip 1, 01:00:04:12, line 63: …".
    std::vector<std::string> places;
};

/// What a conversion to a version would leave out of a file.
struct ConversionPreview {
    std::string version;
    /// Why there is no such conversion, as a sentence; "" otherwise.
    std::string refusal;
    /// How much goes, and how much only takes another form.
    std::uint64_t losses = 0;
    std::uint64_t forms = 0;
    /// Those that lose the most come first.
    std::vector<ConversionLoss> list;
    /// Of the file that was looked at.
    platform::ContentDigest::Value digest{};

    /// What comes of it, as a sentence: "3 things go, which version 1.8 does not have."
    [[nodiscard]] std::string result() const;
};

/// A file as it was when somebody began to look for a version of it. Any thread.
class ConvertibleBytes {
  public:
    /// @return null, with the slot filled, when the file cannot be read.
    [[nodiscard]] static std::shared_ptr<const ConvertibleBytes> read(const std::string& path,
                                                                      ErrorSlot& error);
    /// Costs what a conversion costs, but for the writing.
    [[nodiscard]] ConversionPreview previewOf(const std::string& version) const;
    /// The same for a version that the dialog of XMEML offers: there, nothing goes but in a
    /// downgrade below the lowest version without a loss.
    [[nodiscard]] ConversionPreview previewOf(const ConversionOffer& offer,
                                              const std::string& version) const;
    [[nodiscard]] const std::string& bytes() const { return bytes_; }

  private:
    explicit ConvertibleBytes(std::string bytes);

    std::string bytes_;
    platform::ContentDigest::Value digest_;
};

/// The versions that a file of FCPXML can become.
struct FCPXMLVersions {
    /// Why there are none, as a sentence; "" otherwise.
    std::string refusal;
    /// The one that the file is in, and the lowest one without a loss ("" for none).
    std::string current;
    std::string lowest;
    /// From the newest down.
    std::vector<std::string> targets;
    std::shared_ptr<const ConvertibleBytes> file;
};

/// Reads a file and looks which versions it can become, by its root element. Any thread.
[[nodiscard]] FCPXMLVersions fcpxmlVersionsOf(const std::string& path);

/// "1.10 (Final Cut Pro 10.6+)"; the version alone where no release is known.
[[nodiscard]] std::string withRelease(const std::string& version);

/// A version of a format, and what a menu calls it.
struct VersionOfKind {
    std::string version;
    std::string title;
};

/// The versions of XMEML or FCPXML, from the newest down; none for another kind.
[[nodiscard]] std::vector<VersionOfKind> versionsOf(FileKind kind);

/// How a file is to be converted.
struct VersionRequest {
    std::string version;
    /// In place of the file, whose original goes to the Trash and can be restored; else as a new
    /// file beside it.
    bool isInPlace = false;
    /// Of the file that was looked at: one that has changed since is left alone.
    platform::ContentDigest::Value digest{};
    /// Asked before anything is written; none for never.
    StopToken stop{};
};

struct ConvertedVersion : FileActionResult {
    bool isStopped = false;
};

/// Converts a file of FCPXML, or its copy. Any thread; may wait for other programs.
/// @return `replaced` is where the original is, or the copy that was written
[[nodiscard]] ConvertedVersion convertFCPXML(const std::string& path, const VersionRequest& request,
                                             const std::string& program,
                                             const std::string& version);

}  // namespace vornic

#endif
