// Boxes by QMessageBox. A name whose markup would make Qt open a file is shown as plain text.

#include "Boxes.h"

#include <QFile>
#include <QMessageBox>
#include <QRegularExpression>

namespace
{

bool fits_locale(const QString& name)
{
    return !name.contains(QChar::ReplacementCharacter) && QFile::decodeName(QFile::encodeName(name)) == name;
}

} // namespace

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
    const QString text = name.contains(opens_files) ? QString(name).replace('<', "&lt;") : name;
    return fits_locale(name) ? text : text + "<br />(this name is not in the encoding of the locale)";
}
