#ifndef VORNIC_DESKTOP_FILE_MANAGER_H
#define VORNIC_DESKTOP_FILE_MANAGER_H

#include <QDBusConnection>
#include <QObject>
#include <functional>
#include <string>

namespace vornic {

/// Has the user's file manager show a file, selected, in its folder, through the interface
/// org.freedesktop.FileManager1 (freedesktop, "File Manager Interface"). Returns at once.
/// @param path absolute.
/// @param owner nothing is called after its end.
/// @param unable called when no file manager has done so.
/// @param bus where to look for the file manager.
void revealInFileManager(const std::string& path, QObject* owner, std::function<void()> unable,
                         const QDBusConnection& bus = QDBusConnection::sessionBus());

}  // namespace vornic

#endif
