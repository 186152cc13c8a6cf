#include "desktop/OpenPanel.h"

#include <QFileSystemModel>
#include <QHeaderView>
#include <QSortFilterProxyModel>
#include <QTreeView>
#include <algorithm>
#include <utility>

#include "desktop/AlertBox.h"
#include "desktop/FileIcons.h"
#include "desktop/QtText.h"
#include "desktop/Sheet.h"
#include "desktop/WindowSize.h"

namespace vornic {

namespace {

constexpr QSize kSize(820, 520);

// Shows folders, and the files that the settings allow.
class AllowedFiles : public QSortFilterProxyModel {
  public:
    explicit AllowedFiles(OpenPanelSettings settings) : settings_(std::move(settings)) {}

  protected:
    [[nodiscard]] bool filterAcceptsRow(int row, const QModelIndex& parent) const override {
        const QModelIndex index = sourceModel()->index(row, 0, parent);
        const QString path = index.data(QFileSystemModel::FilePathRole).toString();
        const auto* const files = dynamic_cast<const QFileSystemModel*>(sourceModel());
        return (files != nullptr && files->isDir(index)) ||
               settings_.allowsFile(pathFromQString(path));
    }

  private:
    OpenPanelSettings settings_;
};

}  // namespace

OpenPanel::OpenPanel(const OpenPanelSettings& settings)
    : QFileDialog(nullptr, toQString(settings.message)), settings_(settings) {
    setObjectName(QStringLiteral("openPanel"));
    setAcceptMode(QFileDialog::AcceptOpen);
    setFileMode(settings.allowsMultipleSelection ? QFileDialog::ExistingFiles
                                                 : QFileDialog::ExistingFile);
    setOption(QFileDialog::ReadOnly, !settings.canCreateDirectories);
    setOption(QFileDialog::DontUseNativeDialog);
    FileIcons::useIn(*this);
    setProxyModel(new AllowedFiles(settings));  // which the panel owns
    setNameFilter(tr("Final Cut Pro XML files (*)"));
    setOption(QFileDialog::HideNameFilterDetails);
    fitOnScreen(*this, kSize);
    if (const auto* const list = findChild<QTreeView*>()) {
        list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
        list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    }
}

std::vector<std::string> OpenPanel::paths() const {
    std::vector<std::string> paths;
    for (const QString& path : selectedFiles()) {
        paths.push_back(pathFromQString(path));
    }
    return paths;
}

bool OpenPanel::hasAttachedSheet() const {
    return hasSheet(*this);
}

void OpenPanel::makeKeyAndOrderFront() {
    raise();
    activateWindow();
}

void OpenPanel::accept() {
    const QStringList names = selectedFiles();
    const auto refused = std::find_if(names.begin(), names.end(), [this](const QString& name) {
        return QFileInfo(name).isFile() && !settings_.allowsFile(pathFromQString(name));
    });
    if (refused == names.end()) {
        QFileDialog::accept();
        return;
    }
    tell(this, tr("The file “%1” cannot be chosen.").arg(fileNameOf(pathFromQString(*refused))),
         tr("It is no Final Cut Pro XML file: its name ends neither in “.xml” nor in “.fcpxml”."));
}

}  // namespace vornic
