#ifndef VORNIC_TESTS_UI_SHORTCUTS_SHORTCUT_KEY_FIXTURE_H
#define VORNIC_TESTS_UI_SHORTCUTS_SHORTCUT_KEY_FIXTURE_H

#include <chrono>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/settings/Bundle.h"
#include "platform/settings/PropertyList.h"
#include "platform/threads/Thread.h"
#include "tests/support/fakes/ChosenKeyboard.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/ConsoleCapture.h"
#include "tests/support/programs/StandInProgram.h"
#include "tests/support/texts/LogCapture.h"

namespace vornic::test {

/// An application "com.example.Cutter" with the commands "open", "close" and "print", a US
/// keyboard, and a home folder without a watch list.
class ShortcutKeyFixture : public ::testing::Test {
  protected:
    using List = platform::PropertyList;
    using Dictionary = platform::PropertyList::Dictionary;
    using Array = platform::PropertyList::Array;

    ShortcutKeyFixture() {
        writeList(bundle + "/Contents/Info.plist", {{"CFBundleIdentifier", "com.example.Cutter"}});
        writeCommands(Array{command("open", "Open a file"), command("close", "Close the window"),
                            command("print", "Print the report")});
        platform::Bundle::setMainBundle(platform::Bundle(bundle));
    }
    ~ShortcutKeyFixture() override {
        EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::seconds(30)));
        platform::Bundle::setMainBundle(std::nullopt);
    }

    static void writeList(const std::string& path, const Dictionary& root) {
        ErrorSlot error;
        EXPECT_TRUE(List(root).writeFile(path, error));
    }
    static List command(const char* id, const char* description) {
        return List(Dictionary{{"id", id}, {"description", description}});
    }
    void writeCommands(const Array& commands) const {
        writeList(bundle + "/Contents/Resources/QMKeys.plist", {{"QMKeys", List(commands)}});
    }
    static List entry(const char* bundleId, const char* commandId, int keycode, int modifiers) {
        return List(Dictionary{{"bundleid", bundleId},
                               {"commandid", commandId},
                               {"keycode", keycode},
                               {"modifiers", modifiers}});
    }
    static List ownEntry(const char* commandId, int keycode, int modifiers) {
        return entry("com.example.Cutter", commandId, keycode, modifiers);
    }
    void writeWatchList(const Array& entries) const {
        writeList(watchList, {{"watchlist", List(entries)}});
    }
    /// What stands in the watch list, which must be sound.
    [[nodiscard]] Dictionary storedList() const {
        ErrorSlot error;
        const auto list = List::readFile(watchList, error);
        EXPECT_TRUE(list) << (error ? error->localizedDescription() : "");
        return list && list->dictionary() != nullptr ? *list->dictionary() : Dictionary();
    }
    [[nodiscard]] Array storedEntries() const {
        const Dictionary root = storedList();
        const auto entries = root.find("watchlist");
        EXPECT_NE(entries, root.end());
        return entries != root.end() && entries->second.array() != nullptr
                   ? *entries->second.array()
                   : Array();
    }
    /// Installs a manager that writes its arguments down.
    [[nodiscard]] StandInProgram installManager() const {
        return StandInProgram(manager, sandbox.path("arguments"));
    }

    Unprivileged user;
    Sandbox sandbox;
    LogCapture log;
    ChosenKeyboard keyboard{"us"};
    std::string bundle = sandbox.path("Cutter.app");
    std::string library = sandbox.home() + "/.local/share/quillmark";
    std::string preferences = library + "/Preferences";
    std::string watchList = preferences + "/com.quillmark.shortcutkeys.plist";
    std::string manager =
        library + "/Application Support/Quillmark/Shared Resources/QMShortcutKeyManager";
};

}  // namespace vornic::test

#endif
