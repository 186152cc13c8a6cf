#ifndef VORNIC_TESTS_UI_SHORTCUTS_RECORDING_SHORTCUT_KEY_PANE_H
#define VORNIC_TESTS_UI_SHORTCUTS_RECORDING_SHORTCUT_KEY_PANE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ui/shortcuts/ShortcutKeyPane.h"

namespace vornic::test {

/// A pane that writes down what it is to show. It comes from the interface file
/// "QMShortcutKeyConfig" and fills a view that counts.
class RecordingShortcutKeyPane : public ShortcutKeyPane,
                                 public QMShortcutKeyTableview,
                                 public ShortcutKeyInterface {
  public:
    [[nodiscard]] QMShortcutKeyTableview& tableView() override { return *this; }
    void setManagerNoticeHidden(bool hidden) override { isNoticeHidden = hidden; }
    void setEditingEnabled(bool enabled) override { isEditingEnabled = enabled; }
    void showConflicts(std::string_view text) override { conflicts = text; }
    void showFailure(std::string_view text) override { failure = text; }

    void reloadData() override { ++reloads; }
    [[nodiscard]] std::optional<std::size_t> selectedRow() const override { return selection; }

    [[nodiscard]] ShortcutKeyPane* loadInterface(const std::string& name) override {
        loaded.push_back(name);
        return isThere ? this : nullptr;
    }
    void addFilling(ShortcutKeyPane& pane) override { added.push_back(&pane); }

    bool isThere = true;
    std::vector<std::string> loaded;
    std::vector<ShortcutKeyPane*> added;
    std::optional<bool> isNoticeHidden;
    std::optional<bool> isEditingEnabled;
    std::string conflicts;
    std::string failure;
    int reloads = 0;
    std::optional<std::size_t> selection;
};

}  // namespace vornic::test

#endif
