#include "desktop/FileIcons.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QMimeDatabase>

namespace vornic {

void FileIcons::useIn(QFileDialog& dialog) {
    static FileIcons icons;  // a dialog does not own what it uses
    dialog.setIconProvider(&icons);
}

QIcon FileIcons::icon(const QFileInfo& info) const {
    return QFileIconProvider::icon(info.isDir() ? Folder : File);
}

QString FileIcons::type(const QFileInfo& info) const {
    if (info.isDir()) {
        return QCoreApplication::translate("FileIcons", "Folder");
    }
    return QMimeDatabase().mimeTypeForFile(info, QMimeDatabase::MatchExtension).comment();
}

}  // namespace vornic
