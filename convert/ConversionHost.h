#ifndef VORNIC_CONVERT_CONVERSION_HOST_H
#define VORNIC_CONVERT_CONVERSION_HOST_H

#include <cstdint>
#include <string_view>

#include "ui/QMAlert.h"

namespace vornic {

/// What the conversion engines may do to the document that they work for. Every operation may be
/// called from any thread; those that change what the user sees have taken effect on the main
/// thread when they return. Without a window they do nothing.
class ConversionHost {
  public:
    virtual ~ConversionHost() = default;

    /// False for a headless document: no alerts and questions, messages printed as well as logged.
    [[nodiscard]] virtual bool hasGUI() const = 0;
    /// 0 for an XMEML file, anything else for a Final Cut Pro X file.
    [[nodiscard]] virtual int xmlType() const = 0;
    /// The lowest version that loses nothing; 0 until the analysis has run.
    [[nodiscard]] virtual std::int64_t minDowngradeVersion() const = 0;
    virtual void setMinDowngradeVersion(std::int64_t version) = 0;
    /// The document's window, parent of its sheets; null for a headless document.
    [[nodiscard]] virtual QMAlert::Window windowMain() const = 0;

    virtual void startConvertSpinner() = 0;
    virtual void stopConvertSpinner() = 0;
    /// Stops the busy indicator without waiting for it.
    virtual void stopConvertSpinnerLater() = 0;
    virtual void setConvertCurVersion(std::string_view text) = 0;
    virtual void setConvertDowngradeVersion(std::string_view text) = 0;
    virtual void removeAllConvertVersions() = 0;
    virtual void addConvertVersion(std::string_view title) = 0;
    virtual void setLastConvertVersionKey(std::string_view key) = 0;
    /// Enables the version menu and the convert button.
    virtual void enableConvertInterface() = 0;
};

}  // namespace vornic

#endif
