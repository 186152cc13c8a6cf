#ifndef VORNIC_TESTS_DESKTOP_PROGRAM_ACCESSIBLE_NODE_H
#define VORNIC_TESTS_DESKTOP_PROGRAM_ACCESSIBLE_NODE_H

#include <QDBusConnection>
#include <QDBusMessage>
#include <QPoint>
#include <QRect>
#include <QString>
#include <QVariantList>
#include <optional>
#include <string>
#include <vector>

namespace vornic::test {

/// One thing that a program shows to assistive technologies: a window, a control, a menu's entry.
/// Every question goes to the program, so that the answer is of now; about what has gone the
/// answers are empty.
class AccessibleNode {
  public:
    /// A state, by its number on the bus.
    enum class State : unsigned {
        active = 1,
        checked = 4,
        enabled = 8,
        focusable = 11,
        focused = 12,
        showing = 25,
    };

    AccessibleNode(QDBusConnection bus, QString service, QString path);

    [[nodiscard]] std::string name() const;
    [[nodiscard]] std::string description() const;
    /// Such as "push button".
    [[nodiscard]] std::string role() const;
    [[nodiscard]] bool is(State state) const;
    [[nodiscard]] std::vector<AccessibleNode> children() const;
    /// What an editor or a view of text holds.
    [[nodiscard]] std::string text() const;
    /// Where it is on the screen.
    [[nodiscard]] QRect area() const;

    /// Presses, toggles or opens it, whatever comes of that.
    void press() const;
    void takeFocus() const;

    /// The first of this node and those in it, in the order of the tree, that is on the screen and
    /// has a role and, unless it is empty, a name.
    [[nodiscard]] std::optional<AccessibleNode> find(const std::string& role,
                                                     const std::string& name) const;
    /// The tree below, a line each, to be read by people.
    [[nodiscard]] std::string describe(int depth = 0) const;

    [[nodiscard]] const QString& service() const { return service_; }
    bool operator==(const AccessibleNode& other) const {
        return service_ == other.service_ && path_ == other.path_;
    }

  private:
    [[nodiscard]] QDBusMessage request(const char* interface, const char* method,
                                       const QVariantList& arguments = {}) const;
    [[nodiscard]] QVariantList ask(const char* interface, const char* method,
                                   const QVariantList& arguments = {}) const;
    [[nodiscard]] std::string property(const char* name) const;

    QDBusConnection bus_;
    QString service_;
    QString path_;
};

}  // namespace vornic::test

#endif
