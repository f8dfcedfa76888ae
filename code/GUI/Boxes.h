// The modal boxes of all windows, and file names in their rich texts.
// What a box says is left to its window.
#pragma once

#include <QString>

class QWidget;

/// Show a modal box over `parent` with the single button Ok and return when it is closed. `text` is rich text. The
/// parent may be deleted meanwhile.
void warn(QWidget* parent, const QString& title, const QString& text);
void inform(QWidget* parent, const QString& title, const QString& text);

/// A file name, or a window's title that may hold one, as part of a rich text. Markup is kept, but a name whose markup
/// would make Qt open a file, such as an image, is shown as plain text.
QString rich_name(const QString& name);
