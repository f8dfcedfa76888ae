// What the tests share: files in a temporary folder, the scenes of texts.txt, and a user who answers boxes and looks at
// the screen.
#pragma once

#include <QtTest>
#include <QtWidgets>

#include <functional>

#include "Drawing/DRVect3d.h"

#ifdef __SANITIZE_ADDRESS__
// Drivers stay loaded to the end, so that a leak in one is told by its name.
extern "C" int dlclose(void* /*library*/) noexcept
{
    return 0;
}
#endif

inline QTemporaryDir& folder()
{
    static QTemporaryDir the_folder(QFileInfo(QDir::tempPath()).canonicalFilePath() + "/test");
    return the_folder;
}

/// Before main(): the pictures, and settings of the test's own.
static void prepare()
{
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder().path()));
    Q_INIT_RESOURCE(Tolmera);
}
Q_CONSTRUCTOR_FUNCTION(prepare)

/// What has come up since the last step of a scene, a line each.
inline QStringList& seen()
{
    static QStringList lines;
    return lines;
}

inline QDebug operator<<(QDebug debug, const DRVect3d& vector)
{
    return debug << vector.x() << vector.y() << vector.z();
}

template <typename... T> void note(const T&... values)
{
    QString line;
    (QDebug(&line).noquote() << ... << values);
    seen() += line.replace('\n', "\\n").trimmed();
}

/// A section of texts.txt, up to the next blank line; FOLDER stands for the temporary folder.
inline QString section(const QString& name)
{
    QFile file(QFINDTESTDATA("texts.txt"));
    file.open(QIODevice::ReadOnly);
    const QString text = QString(file.readAll()).replace("FOLDER", folder().path());
    return text.section("[" + name + "]\n", 1).section("\n\n", 0, 0);
}

/// Plays the scene of the current test function in texts.txt: does what each line says that begins with "> ", and
/// compares what comes up with the lines below it. `look` notes what lasts, until it is as expected or for five
/// seconds.
template <typename Act>
void play(
    const Act& act, const std::function<void()>& look = [] {})
{
    for (const QString& step : ("\n" + section(QTest::currentTestFunction())).split("\n> ").mid(1)) {
        const QStringList expected = step.split('\n').mid(1);
        const QString doing = step.section('\n', 0, 0);
        seen().clear();
        act(doing);
        const QStringList done = seen();
        const auto is_as_expected = [&] {
            seen() = done;
            look();
            return seen() == expected;
        };
        if (!QTest::qWaitFor(is_as_expected))
            for (int i = 0; i < qMax(expected.size(), seen().size()); ++i)
                QCOMPARE(doing + " brings " + seen().value(i), doing + " brings " + expected.value(i));
    }
}

/// Writes a file into the temporary folder and returns its path.
inline QString write_file(const QString& name, const QByteArray& bytes)
{
    QFile file(folder().filePath(name));
    QDir().mkpath(QFileInfo(file).path());
    file.open(QIODevice::WriteOnly);
    file.write(bytes);
    return file.fileName();
}

/// A drawing of entities, each a text such as "POINT 1.5 2.5 3.5" with its coordinates in the order x, y, z.
inline QByteArray dxf(const QByteArrayList& entities)
{
    QByteArray text = "  0\nSECTION\n  2\nENTITIES\n";
    for (const QByteArray& entity : entities) {
        const QByteArrayList words = entity.split(' ');
        text += "  0\n" + words[0] + "\n  8\nWALLS\n";
        for (int i = 1; i < words.size(); ++i)
            text += " " + QByteArray::number(10 * ((i - 1) % 3 + 1) + (i - 1) / 3) + "\n" + words[i] + "\n";
    }
    return text + "  0\nENDSEC\n  0\nEOF\n";
}

/// What the X server shows of a native widget, at a position from its upper left corner.
inline QString shown(const QWidget& widget, QPoint pos)
{
    return widget.screen()->grabWindow(widget.winId(), pos.x(), pos.y(), 4, 4).toImage().pixelColor(0, 0).name();
}

/// The shape of the override cursor, in Qt's words.
inline QString cursor()
{
    const QCursor* cursor = QApplication::overrideCursor();
    return cursor == nullptr ? "-" : QMetaEnum::fromType<Qt::CursorShape>().valueToKey(cursor->shape());
}

/// Answers every modal window that comes up while it lives: notes a message box, with its icon, its parent, the cursor
/// over it, its title and its text, and presses its only button, Ok; hands any other window to `on_dialog`.
class User : public QTimer
{
public:
    explicit User(const std::function<void(QWidget*)>& on_dialog = {})
    {
        callOnTimeout([on_dialog] {
            QWidget* window = QApplication::activeModalWidget();
            if (auto* box = qobject_cast<QMessageBox*>(window)) {
                note(box->icon(), box->parent()->metaObject()->className(), cursor(),
                     box->windowTitle() + "|" + box->text());
                if (box->standardButtons() == QMessageBox::Ok)
                    box->button(QMessageBox::Ok)->click();
            } else if (window != nullptr && on_dialog) {
                on_dialog(window);
            }
        });
        start(10);
    }
};
