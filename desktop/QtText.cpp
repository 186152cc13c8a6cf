#include "desktop/QtText.h"

#include <QChar>

#include "base/PathText.h"

namespace vornic {

namespace {

bool misleads(QChar character) {
    return turnsDirection(character) || character.category() == QChar::Other_Control;
}

}  // namespace

bool turnsDirection(QChar character) {
    switch (character.direction()) {
        case QChar::DirLRE:
        case QChar::DirRLE:
        case QChar::DirPDF:
        case QChar::DirLRO:
        case QChar::DirRLO:
        case QChar::DirLRI:
        case QChar::DirRLI:
        case QChar::DirFSI:
        case QChar::DirPDI:
            return true;
        default:
            return false;
    }
}

QString fileNameOf(const std::string& path) {
    QString name = pathToQString(path == "/" ? path : lastComponent(path));
    for (QChar& character : name) {
        if (misleads(character)) {
            character = QChar::ReplacementCharacter;
        }
    }
    return name;
}

QString oneLine(QString text) {
    for (QChar& character : text) {
        if (character == u'\n' || character == u'\t') {
            character = u' ';
        } else if (misleads(character)) {
            character = QChar::ReplacementCharacter;
        }
    }
    return text;
}

QString wrappable(const QString& text) {
    constexpr int kLongestWord = 60;
    constexpr QChar kBreak(0x200B);  // ZERO WIDTH SPACE
    QString broken;
    int length = 0;
    for (const QChar character : text) {
        const bool endsWord = character.isSpace() || character == u'/' || character == u'-';
        if (length >= kLongestWord && !endsWord && !character.isLowSurrogate()) {
            broken += kBreak;
            length = 0;
        }
        broken += character;
        length = endsWord ? 0 : length + 1;
    }
    return broken;
}

QString toolTipOf(const QString& text) {
    return text.isEmpty() ? QString() : QStringLiteral("<p>%1</p>").arg(text.toHtmlEscaped());
}

QString toolTipOf(const std::string& path) {
    return toolTipOf(pathToQString(path));
}

}  // namespace vornic
