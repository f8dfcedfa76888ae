// The modal boxes of all windows, and file names in their rich texts.
// What a box says is left to its window.
#pragma once

#include <QString>

class QWidget;

/// Show a modal box over `parent` with the single button Ok and return when it is closed. `text` is rich text. The
/// parent may be deleted meanwhile, if the window is closed by program.
void warn(QWidget* parent, const QString& title, const QString& text);
void inform(QWidget* parent, const QString& title, const QString& text);

/// A file name, or a window's title that may hold one, as part of a rich text. Markup stays as it is unless Qt would
/// open a file for it, such as an image: such a name is shown as plain text.
QString rich_name(const QString& name);
