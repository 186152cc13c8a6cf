#ifndef VORNIC_CONVERT_PROJECT_CONVERSION_H
#define VORNIC_CONVERT_PROJECT_CONVERSION_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "formats/FileKind.h"
#include "mend/EditList.h"
#include "report/Report.h"
#include "xml/text/TextDecoding.h"

namespace vornic {

/// What a conversion is to make of a project file.
struct ConversionRequest {
    /// "1.10" for FCPXML, "5" for XMEML; empty where only the lowest version is asked for.
    std::string to = {};
    /// The version that files are read as, whatever they declare.
    std::optional<std::string> assumed = {};
    /// Whether XMEML loses what the target does not have. FCPXML always does.
    bool strips = false;
    /// Findings of a rule that are kept; more are only counted.
    std::size_t mostOfARule = Findings::kNoLimit;
    /// Whether a large file may be checked on a thread of its own while it is converted: where a
    /// processor would else be idle. What comes of it is the same.
    bool usesThreads = false;
};

/// What a conversion makes of the bytes of a project file, in memory.
struct ProjectConversion {
    using Sink = std::function<bool(std::string_view piece)>;

    /// What is wrong with the file, and what the conversion drops or changes, with the places of
    /// the file; without its path.
    Report report;
    FileKind kind = FileKind::none;
    /// How much is lost.
    std::uint64_t losses = 0;
    /// Why nothing can be written, as a sentence; "" when something can.
    std::string refusal;
    /// Whether it was refused because the file's format has no such version.
    bool isOtherFormat = false;
    /// Where; 0 for the file as a whole.
    std::size_t line = 0;
    std::size_t column = 0;

    /// Converts FCPXML by its root element, and XMEML; or looks for the lowest version only.
    /// Nothing outside the bytes is looked at, but for the catalogue of XMEML's versions. Linear;
    /// any thread.
    /// @param bytes of the whole file
    [[nodiscard]] static ProjectConversion of(std::string bytes, const ConversionRequest& request);
    /// The same, while a thread may still be looking for what is wrong with a large file: edits,
    /// losses and refusal are there, the report only after `finish`.
    [[nodiscard]] static ProjectConversion begin(std::string bytes,
                                                 const ConversionRequest& request);
    /// Waits for that thread and completes the report. Nothing but the report changes; once, in the
    /// state that `begin` left. The conversion may have been moved meanwhile.
    void finish();

    /// Hands the bytes of the result over, in the file's own encoding.
    /// @return false when the sink stopped it, or the encoding lacks a character.
    [[nodiscard]] bool write(const Sink& sink) const;
    /// False when the result is the file, byte for byte.
    [[nodiscard]] bool isAnythingChanged() const { return !edits.empty(); }

    /// The text and what is changed in it.
    DecodedText source;
    EditList edits;

    /// What `finish` needs; none once it has been called.
    struct Open;
    std::shared_ptr<Open> open;
};

/// True for a version of FCPXML, and of XMEML, that files can be converted to.
[[nodiscard]] bool isFCPXMLTarget(std::string_view version);
[[nodiscard]] bool isXMEMLTarget(std::string_view version);
/// True for a version that files may be read as.
[[nodiscard]] bool isProjectVersion(std::string_view version);

}  // namespace vornic

#endif
