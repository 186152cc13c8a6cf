#include "tests/desktop/program/AccessibleNode.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <utility>

namespace vornic::test {

namespace {

constexpr const char* kAccessible = "org.a11y.atspi.Accessible";
constexpr const char* kAction = "org.a11y.atspi.Action";
constexpr const char* kComponent = "org.a11y.atspi.Component";
constexpr const char* kText = "org.a11y.atspi.Text";
constexpr int kAnswerMilliseconds = 30000;
constexpr unsigned kBitsPerWord = 32;
// From the corner of the screen, not of the window.
constexpr unsigned kOnTheScreen = 0;

}  // namespace

AccessibleNode::AccessibleNode(QDBusConnection bus, QString service, QString path)
    : bus_(std::move(bus)), service_(std::move(service)), path_(std::move(path)) {}

QDBusMessage AccessibleNode::request(const char* interface, const char* method,
                                     const QVariantList& arguments) const {
    QDBusMessage message = QDBusMessage::createMethodCall(
        service_, path_, QString::fromLatin1(interface), QString::fromLatin1(method));
    message.setArguments(arguments);
    return message;
}

QVariantList AccessibleNode::ask(const char* interface, const char* method,
                                 const QVariantList& arguments) const {
    const QDBusMessage answer =
        bus_.call(request(interface, method, arguments), QDBus::Block, kAnswerMilliseconds);
    return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments() : QVariantList();
}

std::string AccessibleNode::property(const char* name) const {
    const QVariantList answer = ask("org.freedesktop.DBus.Properties", "Get",
                                    {QString::fromLatin1(kAccessible), QString::fromLatin1(name)});
    return answer.empty() ? std::string()
                          : answer.front().value<QDBusVariant>().variant().toString().toStdString();
}

std::string AccessibleNode::name() const {
    return property("Name");
}

std::string AccessibleNode::description() const {
    return property("Description");
}

std::string AccessibleNode::role() const {
    const QVariantList answer = ask(kAccessible, "GetRoleName");
    return answer.empty() ? std::string() : answer.front().toString().toStdString();
}

bool AccessibleNode::is(State state) const {
    const QVariantList answer = ask(kAccessible, "GetState");
    if (answer.empty()) {
        return false;
    }
    const auto number = static_cast<unsigned>(state);
    QList<unsigned> words;
    answer.front().value<QDBusArgument>() >> words;
    const auto word = static_cast<qsizetype>(number / kBitsPerWord);
    return word < words.size() && (words[word] >> (number % kBitsPerWord) & 1U) != 0;
}

std::vector<AccessibleNode> AccessibleNode::children() const {
    std::vector<AccessibleNode> found;
    const QVariantList answer = ask(kAccessible, "GetChildren");
    if (answer.empty()) {
        return found;
    }
    const auto list = answer.front().value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        QString service;
        QDBusObjectPath path;
        list.beginStructure();
        list >> service >> path;
        list.endStructure();
        found.emplace_back(bus_, service, path.path());
    }
    list.endArray();
    return found;
}

std::string AccessibleNode::text() const {
    const QVariantList answer = ask(kText, "GetText", {0, -1});
    return answer.empty() ? std::string() : answer.front().toString().toStdString();
}

QRect AccessibleNode::area() const {
    const QVariantList answer = ask(kComponent, "GetExtents", {kOnTheScreen});
    QRect area;
    if (!answer.empty()) {
        int left = 0;
        int top = 0;
        int width = 0;
        int height = 0;
        const auto extents = answer.front().value<QDBusArgument>();
        extents.beginStructure();
        extents >> left >> top >> width >> height;
        extents.endStructure();
        area = QRect(left, top, width, height);
    }
    return area;
}

// What is pressed may keep the program in a dialog, which it answers only after.
void AccessibleNode::press() const {
    bus_.send(request(kAction, "DoAction", {0}));
}

void AccessibleNode::takeFocus() const {
    static_cast<void>(ask(kComponent, "GrabFocus"));
}

std::optional<AccessibleNode> AccessibleNode::find(const std::string& role,
                                                   const std::string& name) const {
    if (this->role() == role && (name.empty() || this->name() == name) && is(State::showing)) {
        return *this;
    }
    for (const AccessibleNode& child : children()) {
        if (std::optional<AccessibleNode> found = child.find(role, name)) {
            return found;
        }
    }
    return std::nullopt;
}

std::string AccessibleNode::describe(int depth) const {
    std::string lines = std::string(static_cast<std::size_t>(depth) * 2, ' ') + role() + " \"" +
                        name() + "\"" + (is(State::showing) ? "" : " (hidden)") + "\n";
    for (const AccessibleNode& child : children()) {
        lines += child.describe(depth + 1);
    }
    return lines;
}

}  // namespace vornic::test
