#ifndef VORNIC_APP_APPLICATION_HOST_H
#define VORNIC_APP_APPLICATION_HOST_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/OpenPanelSettings.h"
#include "repair/document/Document.h"

namespace vornic {

/// The application that the controller works for: its windows, its documents and its end. The
/// desktop implements it; a test records what it is told. Main thread only.
class ApplicationHost {
  public:
    virtual ~ApplicationHost() = default;

    /// Whether a window or a panel of the application is up and takes the keys.
    [[nodiscard]] virtual bool hasKeyWindow() const = 0;
    /// Runs the open panel modally. @return the paths of the chosen files, in the panel's order;
    /// nothing unless the user confirmed.
    [[nodiscard]] virtual std::optional<std::vector<std::string>> runOpenPanel(
        const OpenPanelSettings& settings) = 0;
    /// Opens the file as a document and shows its window; a file that is open already has its
    /// window brought to the front. The host presents what goes wrong to the user itself.
    /// @return true when there was no error.
    virtual bool openDocument(const std::string& path) = 0;
    /// The document of the window in front, or null.
    [[nodiscard]] virtual std::shared_ptr<Document> currentDocument() const = 0;
    /// Shows the about panel, which `QMAboutDialogController` has filled, in front of the windows.
    virtual void showAboutPanel() = 0;
    /// Ends the application, by way of `AppController::applicationWillTerminate`. It may be asked
    /// for before the loop of the main thread runs, and may return; the controller opens nothing
    /// more afterwards.
    virtual void terminate() = 0;
};

}  // namespace vornic

#endif
