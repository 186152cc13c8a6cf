#include "ui/shortcuts/QMShortcutKeyTableDelegate.h"

#include <algorithm>
#include <map>
#include <utility>

#include "platform/session/KeyboardLayout.h"
#include "platform/settings/Bundle.h"
#include "ui/shortcuts/ShortcutKeyManager.h"
#include "ui/shortcuts/ShortcutKeyMessage.h"
#include "ui/shortcuts/ShortcutKeyNames.h"

namespace vornic {

using platform::PropertyList;

namespace {

constexpr const char* kId = "id";
constexpr const char* kDescription = "description";
constexpr const char* kKeyName = "keyname";
constexpr const char* kShortcutKey = "shortcutkey";
constexpr const char* kUnknown = "Unknown";

std::string bundleIdentifier() {
    return platform::Bundle::mainBundle().infoString("CFBundleIdentifier").value_or("");
}

/// The text under a key; "" for none.
std::string textIn(const PropertyList::Dictionary& dictionary, const char* key) {
    const auto found = dictionary.find(key);
    const std::string* const text = found != dictionary.end() ? found->second.string() : nullptr;
    return text != nullptr ? *text : std::string();
}

/// The commands of the application; those without an id or a description are none.
std::vector<PropertyList::Dictionary> readCommands() {
    const auto path = platform::Bundle::mainBundle().pathForResource("QMKeys", "plist");
    ErrorSlot error;
    const auto list = path ? PropertyList::readFile(*path, error) : std::nullopt;
    const PropertyList* const keys = list ? list->find("QMKeys") : nullptr;
    std::vector<PropertyList::Dictionary> commands;
    if (keys == nullptr || keys->array() == nullptr) {
        tellOfShortcutKeys("The list of the application's commands cannot be read");
        return commands;
    }
    for (const PropertyList& each : *keys->array()) {
        const PropertyList::Dictionary* const command = each.dictionary();
        if (command != nullptr && !textIn(*command, kId).empty() &&
            !textIn(*command, kDescription).empty()) {
            commands.push_back(*command);
        }
    }
    return commands;
}

}  // namespace

QMShortcutKeyTableDelegate& QMShortcutKeyTableDelegate::sharedController() {
    static auto* const instance =
        new QMShortcutKeyTableDelegate;  // NOLINT(cppcoreguidelines-owning-memory)
    return *instance;
}

void QMShortcutKeyTableDelegate::awakeFromNib() {
    editor_ = std::make_unique<QMShortcutKeyFieldEditor>(*this);
    observations_.clear();
    observations_.push_back(std::make_unique<NotificationCenter::Observation>(
        kChangedNotification, [this](const UserInfo& userInfo) { keyChanged(userInfo); }));
    observations_.push_back(std::make_unique<NotificationCenter::Observation>(
        kClearedNotification, [this](const UserInfo& userInfo) { keyCleared(userInfo); }));
    if (ShortcutKeyPane* const shown = pane()) {
        shown->tableView().dataCell(kDescription).setLeaf(true);
    }
    populateKeyData();
}

void QMShortcutKeyTableDelegate::populateKeyData() {
    if (ShortcutKeyPane* const shown = pane()) {
        const bool hasManager = ShortcutKeyManager::exists();
        shown->setManagerNoticeHidden(hasManager);
        shown->setEditingEnabled(hasManager);
        shown->showFailure("");
    }
    rows_ = readCommands();
    readShortcuts();
    show();
}

void QMShortcutKeyTableDelegate::readShortcuts() {
    ErrorSlot error;
    const std::optional<ShortcutWatchList::Array> entries = ShortcutWatchList::entries(error);
    if (!entries) {
        finishChange(false, error);
        return;
    }
    const std::string application = bundleIdentifier();
    std::unique_ptr<platform::KeyboardLayout> layout;
    for (const PropertyList& each : *entries) {
        const PropertyList::Dictionary* const entry = each.dictionary();
        Row* const row = entry != nullptr && textIn(*entry, "bundleid") == application
                             ? rowWithId(textIn(*entry, "commandid"))
                             : nullptr;
        if (row == nullptr) {
            continue;
        }
        if (!layout) {
            layout = platform::KeyboardLayout::current();
        }
        const ShortcutKey key = ShortcutKey::fromEntry(*entry);
        (*row)[kKeyName] =
            PropertyList(nameForKey(layout.get(), key.keyCode, key.modifiers()).value_or(kUnknown));
        (*row)[kShortcutKey] = PropertyList(key.userInfo());
    }
}

QMShortcutKeyTableDelegate::Text QMShortcutKeyTableDelegate::tableViewObjectValueForTableColumn(
    std::string_view column, std::size_t row) const {
    const auto value =
        row < rows_.size() ? rows_[row].find(std::string(column)) : Row::const_iterator();
    if (row >= rows_.size() || value == rows_[row].end() || value->second.string() == nullptr) {
        return std::nullopt;
    }
    return *value->second.string();
}

void QMShortcutKeyTableDelegate::tableViewWillDisplayCell(QMShortcutKeyTextCell& cell,
                                                          std::string_view column,
                                                          std::size_t row) const {
    cell.setStringValue(tableViewObjectValueForTableColumn(column, row).value_or(""));
    cell.setConflicting(conflictingRows_.count(row) != 0);
}

void QMShortcutKeyTableDelegate::clearShortcutKey() {
    keyCleared({});
}

void QMShortcutKeyTableDelegate::keyChanged(const UserInfo& userInfo) {
    Row* const row = selectedRow();
    if (row == nullptr) {
        return;
    }
    const ShortcutKey key = ShortcutKey::fromUserInfo(userInfo);
    const Row before = *row;
    (*row)[kKeyName] =
        PropertyList(nameForKeyCode(key.keyCode, key.modifiers()).value_or(kUnknown));
    (*row)[kShortcutKey] = PropertyList(key.userInfo());
    if (!setKeyboardShortcutWithID(textIn(*row, kId), std::nullopt, key.keyCode, key.shift, key.cmd,
                                   key.opt, key.ctrl)) {
        *row = before;
    }
    show();
}

void QMShortcutKeyTableDelegate::keyCleared(const UserInfo& /*userInfo*/) {
    Row* const row = selectedRow();
    if (row == nullptr) {
        return;
    }
    ErrorSlot error;
    const ShortcutWatchList::Command command{
        .bundleId = bundleIdentifier(), .id = textIn(*row, kId), .params = std::nullopt};
    if (finishChange(ShortcutWatchList::remove(command, error), error)) {
        row->erase(kKeyName);
        row->erase(kShortcutKey);
    }
    show();
}

bool QMShortcutKeyTableDelegate::setKeyboardShortcutWithID(const Text& commandId,
                                                           const Params& params,
                                                           std::uint32_t keycode, bool shift,
                                                           bool cmd, bool opt, bool ctrl) {
    if (!commandId && !params) {
        return false;
    }
    ErrorSlot error;
    const ShortcutKey key{.keyCode = keycode, .shift = shift, .cmd = cmd, .opt = opt, .ctrl = ctrl};
    const ShortcutWatchList::Command command{
        .bundleId = bundleIdentifier(), .id = commandId, .params = params};
    return finishChange(ShortcutWatchList::assign(command, key, error), error);
}

QMShortcutKeyTableDelegate::Text QMShortcutKeyTableDelegate::nameForKeyCode(
    std::uint32_t keyCode, std::uint16_t modifiers) {
    return nameForKey(platform::KeyboardLayout::current().get(), keyCode, modifiers);
}

QMShortcutKeyTableDelegate::Text QMShortcutKeyTableDelegate::stringForKeyCode(
    std::uint32_t keyCode, std::uint16_t withModifierFlags) {
    return stringForKey(platform::KeyboardLayout::current().get(), keyCode, withModifierFlags);
}

ShortcutKeyPane* QMShortcutKeyTableDelegate::pane() const {
    return parentView_ != nullptr ? parentView_->pane() : nullptr;
}

QMShortcutKeyTableDelegate::Row* QMShortcutKeyTableDelegate::rowWithId(std::string_view id) {
    const auto row = std::find_if(rows_.begin(), rows_.end(),
                                  [id](const Row& each) { return textIn(each, kId) == id; });
    return row != rows_.end() ? &*row : nullptr;
}

QMShortcutKeyTableDelegate::Row* QMShortcutKeyTableDelegate::selectedRow() {
    ShortcutKeyPane* const shown = pane();
    const std::optional<std::size_t> row =
        shown != nullptr ? shown->tableView().selectedRow() : std::nullopt;
    return row && *row < rows_.size() ? &rows_[*row] : nullptr;
}

std::map<std::string, std::vector<std::size_t>> QMShortcutKeyTableDelegate::rowsByKey() const {
    std::map<std::string, std::vector<std::size_t>> rows;
    for (std::size_t row = 0; row < rows_.size(); ++row) {
        const auto key = rows_[row].find(kShortcutKey);
        if (key != rows_[row].end()) {
            rows[key->second.toXML()].push_back(row);
        }
    }
    return rows;
}

std::string QMShortcutKeyTableDelegate::findConflicts() {
    conflictingRows_.clear();
    std::string text;
    for (const auto& [key, rows] : rowsByKey()) {
        if (rows.size() < 2) {
            continue;
        }
        conflictingRows_.insert(rows.begin(), rows.end());
        text += (text.empty() ? "" : "\n") + textIn(rows_[rows.front()], kKeyName) +
                " is the shortcut of ";
        for (const std::size_t row : rows) {
            text += row == rows.front() ? "" : row == rows.back() ? " and " : ", ";
            text += "“" + textIn(rows_[row], kDescription) + "”";
        }
        text += ".";
    }
    return text;
}

void QMShortcutKeyTableDelegate::show() {
    const std::string text = findConflicts();
    if (ShortcutKeyPane* const shown = pane()) {
        shown->tableView().reloadData();
        shown->showConflicts(text);
    }
}

/// Tells a failure; or tells who wants to know that the list has been written.
bool QMShortcutKeyTableDelegate::finishChange(bool isWritten, const ErrorSlot& error) {
    const std::string failure = isWritten || !error ? "" : error->localizedDescription();
    if (!failure.empty()) {
        tellOfShortcutKeys(failure);
    }
    if (ShortcutKeyPane* const shown = pane()) {
        shown->showFailure(failure);
    }
    if (isWritten) {
        NotificationCenter::post(kReloadNotification);
        ShortcutKeyManager::setup();
    }
    return isWritten;
}

}  // namespace vornic
