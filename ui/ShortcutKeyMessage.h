#ifndef VORNIC_UI_SHORTCUT_KEY_MESSAGE_H
#define VORNIC_UI_SHORTCUT_KEY_MESSAGE_H

#include <string_view>

#include "foundation/QMLog.h"
#include "platform/Console.h"

namespace vornic {

/// Tells something about shortcut keys on the console and in the log. Any thread.
inline void tellOfShortcutKeys(std::string_view text) {
    platform::consoleLog(text);
    QMLog::appendLog("%@", text);
}

}  // namespace vornic

#endif
