// Boxes by QMessageBox. A name whose markup would make Qt open a file is shown as plain text.

#include "Boxes.h"

#include <QMessageBox>
#include <QRegularExpression>

void warn(QWidget* parent, const QString& title, const QString& text)
{
    QMessageBox::warning(parent, title, text, QMessageBox::Ok, QMessageBox::NoButton);
}

void inform(QWidget* parent, const QString& title, const QString& text)
{
    QMessageBox::information(parent, title, text, QMessageBox::Ok, QMessageBox::NoButton);
}

QString rich_name(const QString& name)
{
    // Qt opens what an attribute or a style sheet names; neither goes without "=" or "style" behind a "<".
    static const QRegularExpression opens_files("<.*(=|style)", QRegularExpression::CaseInsensitiveOption |
                                                                    QRegularExpression::DotMatchesEverythingOption);
    return name.contains(opens_files) ? QString(name).replace('<', "&lt;") : name;
}
