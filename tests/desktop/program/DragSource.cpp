#include <QApplication>
#include <QDrag>
#include <QFile>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>

// A window from which the file that the program is started with can be dragged, at the left edge of
// the screen. Its title tells whether what is under the pointer takes the file.

namespace {

class DraggedFile : public QLabel {
  public:
    explicit DraggedFile(const QString& path) : path_(path) {
        setWindowTitle(QStringLiteral("Files"));
        setGeometry(0, 30, 60, 60);
    }

  protected:
    void mousePressEvent(QMouseEvent* /*event*/) override {
        auto* const files = new QMimeData;
        files->setUrls({QUrl::fromLocalFile(path_)});
        auto* const drag = new QDrag(this);  // which deletes itself
        drag->setMimeData(files);
        connect(drag, &QDrag::actionChanged, this, [this](Qt::DropAction action) {
            setWindowTitle(action == Qt::CopyAction ? QStringLiteral("accepted")
                                                    : QStringLiteral("refused"));
        });
        // As a file manager does with what was moved away from it.
        if (drag->exec(Qt::CopyAction | Qt::MoveAction) == Qt::MoveAction) {
            QFile::remove(path_);
        }
        setWindowTitle(QStringLiteral("dropped"));
    }

  private:
    QString path_;
};

}  // namespace

int main(int argc, char** argv) {
    const QApplication toolkit(argc, argv);
    DraggedFile file(QString::fromLocal8Bit(argv[argc - 1]));
    file.show();
    return QApplication::exec();
}
