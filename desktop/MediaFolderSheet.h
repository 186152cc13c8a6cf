#ifndef VORNIC_DESKTOP_MEDIA_FOLDER_SHEET_H
#define VORNIC_DESKTOP_MEDIA_FOLDER_SHEET_H

#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <functional>
#include <string>
#include <vector>

namespace vornic {

/// Asks which folder of media has moved, and where to.
class MediaFolderSheet : public QDialog {
  public:
    using Change = std::function<void(const std::string& oldFolder, const std::string& newFolder)>;

    /// @param folders to choose from, the likeliest first; another one can be typed
    /// @param change called with what the user has typed or chosen
    MediaFolderSheet(const std::vector<std::string>& folders, Change change, QWidget* parent);

  private:
    void browse();

    QComboBox* old_;
    QLineEdit* new_;
};

}  // namespace vornic

#endif
