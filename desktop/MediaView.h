#ifndef VORNIC_DESKTOP_MEDIA_VIEW_H
#define VORNIC_DESKTOP_MEDIA_VIEW_H

#include <QLabel>
#include <QPushButton>
#include <QTreeView>
#include <QWidget>
#include <functional>
#include <memory>
#include <string>

#include "desktop/ElidedLabel.h"
#include "desktop/MediaModel.h"

namespace vornic {

/// The media files that a document's file names: whether they are there, and what can be done when
/// they are not. They are looked for on a thread, whenever the page comes to be seen.
class MediaView : public QWidget {
  public:
    struct Actions {
        std::function<void()> findInFolder;
        std::function<void()> changeFolder;
        /// The user wants to see a medium in its folder.
        std::function<void(const MediaTableRow&)> showFile;
        /// The user wants to see where the project names a medium.
        std::function<void(std::size_t line)> showLine;
    };

    /// @param path of the project file, absolute
    MediaView(std::string path, Actions actions, QWidget* parent);

    /// The file may have changed: the media are read anew, once the page is seen.
    void expire();
    [[nodiscard]] MediaModel& model() { return *model_; }
    [[nodiscard]] QTreeView& table() { return *table_; }
    /// The medium that is chosen; null for none.
    [[nodiscard]] const MediaTableRow* currentMedium() const;
    /// Whether what is shown is what was found last.
    [[nodiscard]] bool isRead() const { return isRead_; }
    /// While the file is being changed, nothing else can be done to it.
    void setMayChange(bool mayChange);

    /// The selected rows, or the current one, a line each.
    [[nodiscard]] QString selectedText() const;
    void copy();

  protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    QWidget* makeBar();
    void read();
    void show(std::shared_ptr<const MediaTable> table);
    void updateButtons();

    std::string path_;
    Actions actions_;
    MediaModel* model_;
    QTreeView* table_;
    ElidedLabel* summary_ = nullptr;
    QPushButton* findButton_ = nullptr;
    QPushButton* changeButton_ = nullptr;
    QPushButton* showButton_ = nullptr;
    bool isRead_ = false;
    bool mayChange_ = true;
    // What an older reading brings is dropped.
    unsigned number_ = 0;
};

}  // namespace vornic

#endif
