// Modal message boxes for all windows, and file names in their rich text.
// The texts are left to the windows.
#pragma once

#include <QString>

class QWidget;

/// Show a modal box with an Ok button over `parent` and return when it is closed. `text` is rich text. The
/// parent may be deleted meanwhile.
void warn(QWidget* parent, const QString& title, const QString& text);
void inform(QWidget* parent, const QString& title, const QString& text);

/// A file name, or a window title that may contain one, for use in rich text. Markup is kept, unless it would make Qt
/// open a file, such as an image: then its tags are shown as text.
QString rich_name(const QString& name);
