#include "widgets/ScreenParts.h"

#include "common/Text.h"

#include <string>

namespace corvel::desktop::ScreenParts {
namespace {

QLabel* sized(const QString& text, double scale, bool bold) {
    auto* label = new QLabel(text);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * scale);
    font.setBold(bold);
    label->setFont(font);
    label->setTextFormat(Qt::PlainText);
    return label;
}

}  // namespace

QString text(std::string_view core) {
    return QString::fromStdString(terminalSafe(std::string(core)));
}

QLabel* heading(const QString& title) {
    auto* label = sized(title, 1.15, true);
    label->setContentsMargins(0, 10, 0, 2);
    return label;
}

QLabel* title(const QString& title) {
    return sized(title, 1.5, true);
}

QLabel* note(const QString& note) {
    auto* label = new QLabel(note);
    label->setTextFormat(Qt::PlainText);
    label->setForegroundRole(QPalette::PlaceholderText);
    label->setWordWrap(true);
    return label;
}

QLabel* wrapped(const QString& text) {
    auto* label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

}  // namespace corvel::desktop::ScreenParts
