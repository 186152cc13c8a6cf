#ifndef VORNIC_REPAIR_REPAIR_HOST_H
#define VORNIC_REPAIR_REPAIR_HOST_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace vornic {

/// What a run may do to the document that it works for. The engines know the document only through
/// this class. Every operation may be called from any thread; those that change what the user sees
/// have taken effect on the main thread when they return.
class RepairHost {
  public:
    virtual ~RepairHost() = default;

    /// Report lines; each is also written to the log.
    virtual void clearInfoText() = 0;
    virtual void appendInfoText(std::string_view text) = 0;
    virtual void appendBoldInfoText(std::string_view text) = 0;
    virtual void appendErrorInfoText(std::string_view text) = 0;
    virtual void appendBoldErrorInfoText(std::string_view text) = 0;

    /// The progress sheet, its label and its bar.
    virtual void startProgress() = 0;
    virtual void endProgress() = 0;
    virtual void setProgressLabel(std::string_view text) = 0;
    virtual void setProgressMax(std::int64_t maximum) = 0;
    virtual void setProgressValue(std::int64_t value) = 0;
    virtual void setIndeterminateProgress() = 0;
    /// Stands for `setProgressValue` of each value from `first` to `last` that is no multiple of
    /// `except`, in order, up to the moment of a cancellation. A host of which only the latest
    /// value can be seen may set that alone.
    /// @return false when a cancellation came before the last value.
    [[nodiscard]] virtual bool setProgressValues(std::int64_t first, std::int64_t last,
                                                 std::int64_t except) {
        for (std::int64_t value = first;; ++value) {
            if (value % except != 0) {
                setProgressValue(value);
            }
            if (value >= last) {
                return true;
            }
            if (progressCancelled()) {
                return false;
            }
        }
    }

    /// Shows a message with an explanation. Without a message nothing happens; without an
    /// explanation it is empty.
    virtual void displayAlert(std::optional<std::string_view> message,
                              std::optional<std::string_view> info) = 0;

    /// True once the user, or a signal, has asked to cancel.
    [[nodiscard]] virtual bool progressCancelled() const = 0;
    virtual void setProgressCancelled(bool cancelled) = 0;

    /// True once any step has found something wrong with the file.
    [[nodiscard]] virtual bool fileHasErrs() const = 0;
    virtual void setFileHasErrs(bool hasErrors) = 0;
    /// True while everything that was found could be mended.
    [[nodiscard]] virtual bool fileWasRepaired() const = 0;
    virtual void setFileWasRepaired(bool wasRepaired) = 0;

    /// 0 for an XMEML file, 1 for an FCPXML file.
    [[nodiscard]] virtual int xmlType() const = 0;
    virtual void setXmlType(int type) = 0;
};

}  // namespace vornic

#endif
