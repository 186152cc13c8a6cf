#ifndef VORNIC_DESKTOP_FILE_ICONS_H
#define VORNIC_DESKTOP_FILE_ICONS_H

#include <QFileDialog>
#include <QFileIconProvider>

namespace vornic {

/// Icons and kinds of files that are told by the name alone. The toolkit's own provider reads into
/// every file of a folder, on the main thread: a device or a server that does not answer would stop
/// the program.
class FileIcons : public QFileIconProvider {
  public:
    /// Has a file dialog use it.
    static void useIn(QFileDialog& dialog);

    [[nodiscard]] QIcon icon(const QFileInfo& info) const override;
    [[nodiscard]] QIcon icon(IconType type) const override { return QFileIconProvider::icon(type); }
    [[nodiscard]] QString type(const QFileInfo& info) const override;
};

}  // namespace vornic

#endif
