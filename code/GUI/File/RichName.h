// Names of files in rich texts, where a name may look like markup.
#pragma once

#include <QRegularExpression>
#include <QString>

/// A file name, or a window's title that may hold one, as it goes into a rich text: as it is, but for one whose markup
/// could make Qt open another file (an image, a style) and wait for it. There "<" becomes an entity, so that the name
/// is shown as text.
inline QString rich_name(const QString& name)
{
    static const QRegularExpression opens_files("<.*(=|style)", QRegularExpression::CaseInsensitiveOption |
                                                                    QRegularExpression::DotMatchesEverythingOption);
    return name.contains(opens_files) ? QString(name).replace('<', "&lt;") : name;
}
