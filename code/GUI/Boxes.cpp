// The boxes, made with QMessageBox, and the test for names that would make Qt open a file.

#include "Boxes.h"

#include <QMessageBox>
#include <QPointer>
#include <QRegularExpression>

namespace
{

/// Like QMessageBox::warning(), but with the box on the heap, so that its parent may delete it.
void show_box(QMessageBox::Icon icon, QWidget* parent, const QString& title, const QString& text)
{
    const QPointer<QMessageBox> box = new QMessageBox(icon, title, text, QMessageBox::Ok, parent);
    box->exec();
    delete box;
}

} // namespace

void warn(QWidget* parent, const QString& title, const QString& text)
{
    show_box(QMessageBox::Warning, parent, title, text);
}

void inform(QWidget* parent, const QString& title, const QString& text)
{
    show_box(QMessageBox::Information, parent, title, text);
}

QString rich_name(const QString& name)
{
    // Qt opens files named in an attribute or a style sheet. Both need "=" or "style" after a "<".
    static const QRegularExpression opens_files("<.*(=|style)", QRegularExpression::CaseInsensitiveOption |
                                                                    QRegularExpression::DotMatchesEverythingOption);
    return name.contains(opens_files) ? QString(name).replace('<', "&lt;") : name;
}
