#ifndef VORNIC_DESKTOP_INCOMING_FILES_H
#define VORNIC_DESKTOP_INCOMING_FILES_H

#include <QLocalSocket>
#include <QObject>
#include <QTimer>
#include <functional>
#include <string>
#include <vector>

namespace vornic {

/// Who takes the files of later starts. Main thread.
class FileReceiver {
  public:
    virtual ~FileReceiver() = default;
    /// Tells, at once or as soon as it is known, whether files can be opened here.
    virtual void whenDecided(std::function<void(bool mayOpen)> told) = 0;
    /// Opens the files. @param paths absolute. @return true when they were taken.
    /// @param activation the desktop's token for coming to the front; "" for none
    virtual bool receive(const std::vector<std::string>& paths, const std::string& activation) = 0;
};

/// The files that another program offers on a connection (`HandOverProtocol.h`), which it owns.
/// Goes with the connection. Main thread.
class IncomingFiles : public QObject {
  public:
    IncomingFiles(QLocalSocket* connection, FileReceiver& receiver);

  private:
    void read();
    void readPaths();
    void answerOffer();
    void take();
    void say(char word);
    [[nodiscard]] bool isTakenBack() const;

    QLocalSocket& connection_;
    FileReceiver& receiver_;
    QTimer signOfLife_;
    std::vector<std::string> paths_;
    std::string activation_;
    bool isOffered_ = false;
};

}  // namespace vornic

#endif
