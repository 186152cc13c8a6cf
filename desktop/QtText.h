#ifndef VORNIC_DESKTOP_QT_TEXT_H
#define VORNIC_DESKTOP_QT_TEXT_H

#include <QFile>
#include <QString>
#include <string>
#include <string_view>

namespace vornic {

/// Text of the library, which is UTF-8, as the toolkit has it. Bytes that are no UTF-8 show as
/// U+FFFD.
[[nodiscard]] inline QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// A path as the toolkit has it: to be shown only, since not every path is text.
[[nodiscard]] inline QString pathToQString(const std::string& path) {
    return QFile::decodeName(QByteArray::fromStdString(path));
}

/// The name of the file at a path, to be shown on one line: control characters, and those that turn
/// the direction of the text around, show as U+FFFD.
[[nodiscard]] QString fileNameOf(const std::string& path);
/// Whether a character turns the direction of the text around it (Unicode Standard Annex 9).
[[nodiscard]] bool turnsDirection(QChar character);
/// Text from a file, to be shown on one line: line breaks and tabs show as spaces, other control
/// characters, and those that turn the direction of the text around, as U+FFFD.
[[nodiscard]] QString oneLine(QString text);
/// A text, or a path, as a tool tip, which wraps where it is long; nothing in it is taken for
/// markup. All tool tips are made by it.
[[nodiscard]] QString toolTipOf(const QString& text);
[[nodiscard]] QString toolTipOf(const std::string& path);

/// The text with places to break a line in words that are longer than any line, such as file names.
[[nodiscard]] QString wrappable(const QString& text);

[[nodiscard]] inline std::string pathFromQString(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

}  // namespace vornic

#endif
