#include "tests/desktop/program/DesktopSession.h"

#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <xcb/xcb.h>

#include "tests/desktop/program/Waiting.h"

namespace vornic::test {

namespace {

constexpr const char* kTool = "/usr/bin/xdotool";
constexpr const char* kWindowManager = "/usr/bin/openbox";
constexpr const char* kMessageBus = "/usr/bin/dbus-daemon";
constexpr const char* kRegistry = "org.a11y.atspi.Registry";
constexpr const char* kRoot = "/org/a11y/atspi/accessible/root";

const QString kSessionName = QStringLiteral("session");
const QString kAccessibilityName = QStringLiteral("accessibility");

}  // namespace

std::string DesktopSession::missingParts() {
    const std::map<std::string, std::string> parts{
        {"/usr/bin/Xvfb", "Xvfb"},
        {kTool, "xdotool"},
        {kWindowManager, "openbox"},
        {kMessageBus, "dbus-daemon"},
        {"/usr/share/dbus-1/services/org.a11y.Bus.service", "at-spi2-core"}};
    std::string missing;
    for (const auto& [path, name] : parts) {
        if (!exists(path)) {
            missing += missing.empty() ? name : ", " + name;
        }
    }
    return missing;
}

DesktopSession::DesktopSession(std::string folder) : folder_(std::move(folder)) {
    std::filesystem::create_directories(folder_);
    std::filesystem::permissions(folder_, std::filesystem::perms::owner_all);
    // What the message bus starts is left to this process when the bus has ended.
    EXPECT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    screen_ = std::make_unique<VirtualScreen>(folder_ + "/display");
    if (!screen_->display()) {
        throw std::runtime_error("the screen did not come up");
    }
    environment_ = {"DISPLAY=" + *screen_->display(),
                    "DBUS_SESSION_BUS_ADDRESS=unix:path=" + folder_ + "/bus",
                    "XDG_RUNTIME_DIR=" + folder_,
                    "TMPDIR=" + folder_,
                    "LANG=C.UTF-8",
                    "GSETTINGS_BACKEND=memory",
                    "QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1"};
    startWindowManager();
    startMessageBus();
}

DesktopSession::~DesktopSession() {
    QDBusConnection::disconnectFromBus(kAccessibilityName);
    QDBusConnection::disconnectFromBus(kSessionName);
    for (std::unique_ptr<RunningProgram>* const program : {&messageBus_, &windowManager_}) {
        if (*program) {
            (*program)->sendSignal(SIGTERM);
            (*program)->finish();
            program->reset();
        }
    }
    screen_.reset();
    EXPECT_TRUE(becomesTrue([] {
        while (waitpid(-1, nullptr, WNOHANG) > 0) {
        }
        return waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD;
    })) << "something that was started in the session still runs";
}

void DesktopSession::startWindowManager() {
    windowManager_ = std::make_unique<RunningProgram>(
        ProgramSettings{.program = kWindowManager,
                        .arguments = {"--sm-disable"},
                        .environment = {environment_[0], "HOME=" + folder_, "PATH=/usr/bin:/bin"}});
    waitUntil("the window manager", [this] { return !act({"get_num_desktops"}).empty(); });
}

void DesktopSession::startMessageBus() {
    std::vector<std::string> variables = environment_;
    variables.insert(variables.end(), {"HOME=" + folder_, "PATH=/usr/bin:/bin"});
    messageBus_ = std::make_unique<RunningProgram>(
        ProgramSettings{.program = kMessageBus,
                        .arguments = {"--session", "--nofork", "--nopidfile",
                                      "--address=unix:path=" + folder_ + "/bus"},
                        .environment = variables});
    const QString address = QString::fromStdString("unix:path=" + folder_ + "/bus");
    waitUntil("the message bus", [&address] {
        QDBusConnection::disconnectFromBus(kSessionName);
        return QDBusConnection::connectToBus(address, kSessionName).isConnected();
    });
    // The question starts the accessibility bus.
    const QDBusReply<QString> reply =
        QDBusConnection(kSessionName)
            .call(QDBusMessage::createMethodCall(
                QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
                QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress")));
    if (!QDBusConnection::connectToBus(reply.value(), kAccessibilityName).isConnected()) {
        throw std::runtime_error("the accessibility bus did not come up: " +
                                 reply.error().message().toStdString());
    }
}

std::optional<AccessibleNode> DesktopSession::application(pid_t process) const {
    const QDBusConnection bus(kAccessibilityName);
    const AccessibleNode desktop(bus, QString::fromLatin1(kRegistry), QString::fromLatin1(kRoot));
    for (const AccessibleNode& application : desktop.children()) {
        if (bus.interface()->servicePid(application.service()).value() ==
            static_cast<unsigned>(process)) {
            return application;
        }
    }
    return std::nullopt;
}

std::string DesktopSession::act(const std::vector<std::string>& arguments) const {
    return runProgram({.program = kTool,
                       .arguments = arguments,
                       .environment = {environment_[0], "PATH=/usr/bin:/bin"}})
        .output;
}

void DesktopSession::pressKeys(const std::vector<std::string>& keys) const {
    std::vector<std::string> arguments{"key", "--clearmodifiers"};
    arguments.insert(arguments.end(), keys.begin(), keys.end());
    act(arguments);
}

void DesktopSession::activate(const std::string& title) const {
    act({"search", "--onlyvisible", "--name", title, "windowactivate"});
}

void DesktopSession::closeWindow(const std::string& title) const {
    const std::string found = act({"search", "--onlyvisible", "--name", title});
    const std::string display = environment_[0].substr(environment_[0].find('=') + 1);
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(display.c_str(), nullptr), &xcb_disconnect);
    constexpr std::string_view kMessage = "_NET_CLOSE_WINDOW";
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> type(
        xcb_intern_atom_reply(
            connection.get(),
            xcb_intern_atom(connection.get(), 0, kMessage.size(), kMessage.data()), nullptr),
        &std::free);
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = static_cast<xcb_window_t>(std::stoul(found));
    event.type = type->atom;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data->root;
    // The window manager hears what is said to the root (EWMH, root window messages).
    xcb_send_event(connection.get(), 0, root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
    // A connection that ends at once takes what it said along.
    std::free(xcb_get_input_focus_reply(connection.get(), xcb_get_input_focus(connection.get()),
                                        nullptr));
}

void DesktopSession::type(const std::string& text) const {
    act({"type", "--delay", "1", text});
}

void DesktopSession::movePointer(const QPoint& place) const {
    act({"mousemove", std::to_string(place.x()), std::to_string(place.y())});
}

void DesktopSession::click(const AccessibleNode& node) const {
    QRect last;
    waitUntil("something to click on at rest", [&] {
        const QRect now = node.area();
        return std::exchange(last, now) == now && now.isValid();
    });
    movePointer(last.center());
    act({"click", "1"});
}

}  // namespace vornic::test
