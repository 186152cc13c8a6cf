#ifndef VORNIC_TESTS_FOUNDATION_LOG_TEST_H
#define VORNIC_TESTS_FOUNDATION_LOG_TEST_H

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/log/QMLog.h"
#include "platform/settings/Bundle.h"
#include "platform/settings/PropertyList.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/programs/CapturedChild.h"
#include "tests/support/texts/LogText.h"

namespace vornic::test {

/// Tests of the log, each of which logs in a child process: the log is one for the process, and
/// some of its states are never left.
class LogTest : public ::testing::Test {
  protected:
    Unprivileged user;
    Sandbox sandbox;

    [[nodiscard]] std::string library() const { return sandbox.home() + "/.local/share/quillmark"; }
    [[nodiscard]] std::string logFolder() const { return library() + "/Logs/Quillmark"; }
    [[nodiscard]] std::string generation(int number, std::string_view name = "Vornic") const {
        return logFolder() + "/" + std::string(name) + "." + std::to_string(number) + ".log";
    }
    /// Writes an older log of one line.
    void writeGeneration(int number, std::string_view line) const {
        std::filesystem::create_directories(logFolder());
        std::ofstream(generation(number)) << line << '\n';
    }
    void setGlobalPreference(const platform::PropertyList& disableLogging) const {
        ErrorSlot error;
        const platform::PropertyList preferences(
            platform::PropertyList::Dictionary{{"disable-logging", disableLogging}});
        ASSERT_TRUE(
            preferences.writeFile(library() + "/Preferences/com.quillmark.global.plist", error));
    }

    /// A bundle with the given information, none for a null pointer.
    [[nodiscard]] platform::Bundle bundle(const char* version) const {
        const std::string folder = sandbox.folder() + "/Vornic.app";
        platform::PropertyList::Dictionary info{{"CFBundleName", "Vornic"}};
        if (version != nullptr) {
            info["CFBundleVersion"] = version;
        }
        ErrorSlot error;
        EXPECT_TRUE(platform::PropertyList(info).writeFile(folder + "/Contents/Info.plist", error));
        return platform::Bundle(folder);
    }

    /// Runs a function in a child whose bundle has the version 7, which makes headers whole.
    [[nodiscard]] ChildOutcome inChild(const std::function<void()>& function) const {
        const platform::Bundle own = bundle("7");
        return runInChild([&] {
            platform::Bundle::setMainBundle(own);
            function();
        });
    }

    /// The entries of a generation without dates and header.
    [[nodiscard]] static std::vector<std::string> entries(const std::string& path) {
        return withoutLogHeader(logMessages(readBytes(path)));
    }
    [[nodiscard]] std::vector<std::string> entries() const { return entries(generation(1)); }
};

}  // namespace vornic::test

#endif
