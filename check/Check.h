#ifndef VORNIC_CHECK_CHECK_H
#define VORNIC_CHECK_CHECK_H

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/ElementIndex.h"
#include "report/Report.h"

namespace vornic {

struct CheckOptions {
    /// Findings of a rule that are kept; more are only counted.
    std::size_t mostOfARule = 100;
    /// Rules whose findings are neither counted nor kept.
    std::vector<RuleId> ignored = {};
    /// The newest version that the receiver of the file reads: of FCPXML ("1.8") or of XMEML ("4").
    /// Files of the other format are checked as without it. Nothing for any.
    std::optional<std::string> reads = {};
    /// What the mend of a version that is missing would write. Files of the other format get no
    /// such mend.
    std::optional<std::string> missingVersion = std::nullopt;
    /// The last component of the file's path, whose ending is compared with the contents; "" where
    /// the file has no name.
    std::string fileName = {};
    /// Whether a reference is reported to lead nowhere when the loss of its target's id is
    /// reported.
    bool tellsConsequences = false;
    /// Whether the rules of a large file may run on threads of their own: where a processor would
    /// else be idle. What is found is the same.
    bool usesThreads = false;
    /// Looks for the media that the project names, which nothing here does; none for the group
    /// that was not asked for. Finds in bytes of the index's text.
    /// @param isComplete false when a fault ended the reading
    std::function<void(const ElementIndex& index, bool isComplete, Findings& findings)> media = {};

    [[nodiscard]] bool runsBeside(std::size_t textLength) const {
        // A thread costs more than a small file.
        constexpr std::size_t kLargeText = std::size_t{1} << 20U;
        return usesThreads && textLength >= kLargeText;
    }
};

/// Says what is wrong with a project file: decodes its bytes, reads them, tolerant, and looks at
/// what its kind and version ask for. Nothing is written, nothing outside the bytes is looked at
/// but the system's time zones, where a date names one, and by `CheckOptions::media`, nothing
/// raised but for memory that has run out. Any thread.
/// @param bytes of the whole file.
/// @return the findings in the order of the file, with places in its bytes; `path` is left empty.
[[nodiscard]] Report checkFile(std::string_view bytes, const CheckOptions& options);

/// The same in two steps, so that something else can be made of what was found while it is looked
/// up where that stands. It keeps the text's index meanwhile. Any thread, one at a time.
class FileCheck {
  public:
    /// Finds.
    /// @param bytes of the whole file; must outlive this.
    FileCheck(std::string_view bytes, const CheckOptions& options);
    /// What mends make of a file that was checked, as far as that is known without reading it.
    struct Mended {
        ElementIndex index;
        /// What the file's rules find; nothing where they have to look for themselves.
        std::optional<Report> report;
        /// Whether it may hold characters that the rules about those look for.
        bool hasOddCharacters = true;
    };
    /// Finds in mended bytes, without reading them.
    /// @param mended what `report` made known of these bytes
    FileCheck(std::string_view bytes, const CheckOptions& options, Mended mended);
    ~FileCheck();
    FileCheck(FileCheck&& other) noexcept;
    FileCheck& operator=(FileCheck&& other) noexcept;

    /// What was found, in the order of the file. All offsets, also those of mends, are still the
    /// text's.
    [[nodiscard]] const Findings& findings() const;
    /// As in the report.
    [[nodiscard]] const std::string& encoding() const;
    /// Edits of the text, in its order, as edits of the file's bytes.
    [[nodiscard]] std::vector<Edit> toFileOffsets(std::vector<Edit> edits) const;
    /// Gives all findings their places. @return what `checkFile` returns, its findings in the order
    ///     of `findings`.
    [[nodiscard]] Report report() &&;

    /// The same in two steps: gives all findings their places, and looks at what edits will change.
    /// @param edits of the bytes, in their order
    void place(const std::vector<Edit>& edits);
    /// After that, what is known of the bytes that the edits make of these: of XMEML in UTF-8, of
    /// which all that the reader told is mended by them. Where they change how texts are written,
    /// but none that the rules read, the rules would find what they found.
    /// @param changed which must outlive what is known
    /// @param mended set to nothing where they have to be read
    [[nodiscard]] Report report(std::string_view changed, std::optional<Mended>& mended) &&;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace vornic

#endif
