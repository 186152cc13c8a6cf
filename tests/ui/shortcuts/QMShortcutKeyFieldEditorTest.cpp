#include <vector>

#include <gmock/gmock.h>

#include "ui/shortcuts/QMShortcutKeyFieldEditor.h"
#include "ui/shortcuts/QMShortcutKeyTableDelegate.h"

namespace vornic {
namespace {

using ::testing::ElementsAre;

TEST(QMShortcutKeyFieldEditor, postsTheKeyAndWhatIsHeldWithIt) {
    std::vector<NotificationCenter::UserInfo> posted;
    const NotificationCenter::Observation observation(
        "QMShortcutKeyChanged",
        [&](const NotificationCenter::UserInfo& info) { posted.push_back(info); });
    QMShortcutKeyFieldEditor editor(QMShortcutKeyTableDelegate::sharedController());
    editor.keyDown({.keyCode = 71, .shift = true, .cmd = false, .opt = false, .ctrl = true});
    EXPECT_THAT(
        posted,
        ElementsAre(NotificationCenter::UserInfo{
            {"keycode", 71}, {"shift", true}, {"ctrl", true}, {"opt", false}, {"cmd", false}}));
    EXPECT_EQ(&editor.delegate(), &QMShortcutKeyTableDelegate::sharedController());
}

}  // namespace
}  // namespace vornic
