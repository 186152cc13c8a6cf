#ifndef VORNIC_REPAIR_DOCUMENT_CONVERSION_DIALOG_H
#define VORNIC_REPAIR_DOCUMENT_CONVERSION_DIALOG_H

#include <optional>
#include <string>
#include <string_view>

#include "convert/ConversionOffer.h"

namespace vornic {

/// The conversion dialog of a document's window, as far as the document drives it (`windowConvert`,
/// `convertCurVersion`, `convertDowngradeVersion`, `convertVersionPopUp`, `convertBtn`,
/// `convertSpinner`). The desktop draws it; a test records what it is told. Main thread only.
class ConversionDialog {
  public:
    virtual ~ConversionDialog() = default;

    /// Shows the dialog, empty and disabled, as a sheet in front and returns at once.
    virtual void beginConvertSheet() = 0;
    virtual void endConvertSheet() = 0;
    /// While the indicator turns, the dialog takes neither a choice nor a click.
    virtual void startConvertSpinner() = 0;
    virtual void stopConvertSpinner() = 0;
    /// Says what is going on; the end of the spinner ends that, too.
    virtual void setConvertState(std::string_view text) = 0;
    /// Says what has become of a conversion, until the next one begins.
    virtual void showConvertResult(std::string_view text) = 0;
    virtual void setConvertCurVersion(std::string_view text) = 0;
    /// Fills the label of the lowest version without loss and the version menu, each item with its
    /// key, and enables menu and button when there is a version to choose.
    virtual void showOffer(const ConversionOffer& offer) = 0;
    /// The key of the selected item of the version menu, or nothing.
    [[nodiscard]] virtual std::optional<std::string> selectedConvertVersionKey() const = 0;
    /// Whether the user wants the file as it was kept in the Trash.
    [[nodiscard]] virtual bool keepsOriginal() const = 0;
    /// Enables or disables menu and button.
    virtual void setConvertInterfaceEnabled(bool enabled) = 0;
};

}  // namespace vornic

#endif
