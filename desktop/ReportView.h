#ifndef VORNIC_DESKTOP_REPORT_VIEW_H
#define VORNIC_DESKTOP_REPORT_VIEW_H

#include <string_view>

#include <QPlainTextEdit>

namespace vornic {

/// The report of a document (`infoText`): entries set apart by an empty line, red when they report
/// an error. It is read, copied and searched like any text and stays quick with some hundred
/// thousand entries.
class ReportView : public QPlainTextEdit {
  public:
    explicit ReportView(QWidget* parent);

    /// Puts text at the end. While the end is in view it stays there.
    void append(std::string_view text, bool isError, bool isBold);
    [[nodiscard]] bool isEmpty() const { return document()->isEmpty(); }

    /// Selects the next place of a text, upper and lower case alike, from the selection on, and
    /// from the other end when there is none. @return false when it is nowhere.
    bool findText(const QString& text, bool backwards);

  protected:
    void changeEvent(QEvent* event) override;

  private:
    [[nodiscard]] QColor errorColor() const;
    void recolorErrors();
};

}  // namespace vornic

#endif
