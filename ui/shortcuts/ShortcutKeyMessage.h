#ifndef VORNIC_UI_SHORTCUTS_SHORTCUT_KEY_MESSAGE_H
#define VORNIC_UI_SHORTCUTS_SHORTCUT_KEY_MESSAGE_H

#include <string_view>

#include "foundation/log/QMLog.h"
#include "platform/processes/Console.h"

namespace vornic {

/// Tells something about shortcut keys on the console and in the log. Any thread.
inline void tellOfShortcutKeys(std::string_view text) {
    platform::consoleLog(text);
    QMLog::appendLog("%@", text);
}

}  // namespace vornic

#endif
