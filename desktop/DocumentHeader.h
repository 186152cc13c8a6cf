#ifndef VORNIC_DESKTOP_DOCUMENT_HEADER_H
#define VORNIC_DESKTOP_DOCUMENT_HEADER_H

#include <QLabel>
#include <QPushButton>
#include <QWidget>
#include <functional>
#include <map>
#include <string>

#include "app/window/HeaderText.h"
#include "desktop/ElidedLabel.h"
#include "desktop/OutcomeBadge.h"

namespace vornic {

/// The head of a document's window: what the file is, and one sentence about its state with what
/// can be done about it.
class DocumentHeader : public QWidget {
  public:
    DocumentHeader(const std::string& path, std::function<void(HeaderOffer)> accept,
                   QWidget* parent);

    void setText(const HeaderText& text);
    /// What is going on, without a sign.
    void setBusy(const QString& sentence);
    /// Version and size. @param facts "" for nothing
    void setFacts(const QString& facts);

  private:
    QWidget* makeSentence();
    QWidget* makeOffers(QWidget* parent);

    std::function<void(HeaderOffer)> accept_;
    QLabel* facts_;
    OutcomeBadge* badge_ = nullptr;
    QLabel* sentence_ = nullptr;
    QWidget* buttons_ = nullptr;
    std::map<HeaderOffer, QPushButton*> offers_;
};

}  // namespace vornic

#endif
