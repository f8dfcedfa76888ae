// What the tests share: drawings in a temporary folder, the player of scenes, and a user who answers boxes.
#pragma once

#include <QtTest>
#include <QtWidgets>

#include <functional>

#ifdef __SANITIZE_ADDRESS__
// Drivers stay loaded to the end, so that a leak in one is reported with its name.
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

/// Before main(): loads the pictures; settings go to the temporary folder.
static void prepare()
{
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder().path()));
    Q_INIT_RESOURCE(Tolmera);
}
Q_CONSTRUCTOR_FUNCTION(prepare)

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
inline QByteArray dxf(const QStringList& entities)
{
    QByteArray text = "  0\nSECTION\n  2\nENTITIES\n";
    for (const QString& entity : entities) {
        const QByteArrayList words = entity.toLatin1().split(' ');
        text += "  0\n" + words[0] + "\n  8\nWALLS\n";
        for (int i = 1; i < words.size(); ++i)
            text += " " + QByteArray::number(10 * ((i - 1) % 3 + 1) + (i - 1) / 3) + "\n" + words[i] + "\n";
    }
    return text + "  0\nENDSEC\n  0\nEOF\n";
}

/// The lines of this test's scenes, with the temporary folder's path in place of FOLDER.
inline const QStringList& scenes()
{
    static const QStringList lines = [] {
        QFile file(SCENES);
        file.open(QIODevice::ReadOnly);
        return QString(file.readAll()).replace("FOLDER", folder().path()).split('\n');
    }();
    return lines;
}

/// A section of the scenes, up to the next blank line.
inline QStringList section(const QString& name)
{
    const auto first = scenes().indexOf("[" + name + "]") + 1;
    return scenes().mid(first, scenes().indexOf("", first) - first);
}

/// What can be seen, by name.
using State = QMap<QString, QString>;

template <typename... T> QString text_of(const T&... values)
{
    QString text;
    (QDebug(&text).noquote() << ... << values);
    return text.replace('\n', "\\n").trimmed();
}

/// What has happened in the step in progress.
inline State& events()
{
    static State the_events;
    return the_events;
}

template <typename... T> void note(const QString& name, const T&... values)
{
    QString& text = events()[name];
    text += (text.isEmpty() ? "" : ", then ") + text_of(values...);
}

/// Plays the scene of the current test function up to the first step that fails. `act` does what a step says, `look`
/// returns the lasting state, which with the events must match the step within five seconds; "…" matches anything.
inline void play(
    const std::function<void(const QString&)>& act, const std::function<State()>& look = [] { return State(); })
{
    State lasting;
    for (auto i = scenes().indexOf(QString("[%1]").arg(QTest::currentTestFunction())) + 1; !scenes()[i].isEmpty();) {
        const auto line = static_cast<int>(i) + 1;
        QString step = scenes()[i];
        while (scenes()[++i].startsWith("  "))
            step += scenes()[i].trimmed().prepend(' ');
        const QString doing = step.section("=>", 0, 0).trimmed();
        State wanted = lasting;
        for (const QString& change : step.section("=>", 1).trimmed().split("; ", Qt::SkipEmptyParts))
            wanted[change.section(' ', 0, 0)] = change.section(' ', 1);
        events().clear();
        act(doing);
        QString problem;
        const auto is_as_wanted = [&] {
            problem.clear();
            State got = lasting = look();
            got.insert(events());
            for (const QString& name : wanted.keys() + got.keys()) {
                const QString form = QRegularExpression::escape(wanted[name]).replace("\\…", ".*");
                if (!got[name].contains(QRegularExpression(QRegularExpression::anchoredPattern(form))))
                    problem = QString("%1 is \"%2\", wanted \"%3\"").arg(name, got[name], wanted[name]);
            }
            return problem.isEmpty();
        };
        if (!QTest::currentTestFailed() && !QTest::qWaitFor(is_as_wanted))
            QTest::qFail(qPrintable("\"" + doing + "\": " + problem), SCENES, line);
        if (QTest::currentTestFailed())
            return;
    }
}

/// The colour that the screen shows at a position of a widget.
inline QString shown(const QWidget& widget, QPoint pos)
{
    const QPoint place = widget.mapToGlobal(pos);
    return widget.screen()->grabWindow(0, place.x(), place.y(), 1, 1).toImage().pixelColor(0, 0).name();
}

/// The shape of the override cursor, in Qt's words.
inline QString cursor()
{
    const QCursor* cursor = QApplication::overrideCursor();
    return cursor == nullptr ? "-" : QMetaEnum::fromType<Qt::CursorShape>().valueToKey(cursor->shape());
}

/// Answers every modal window that comes up while it lives: accepts a message box and notes what the user reads there;
/// hands any other dialog to `on_dialog`.
class User : public QTimer
{
public:
    explicit User(const std::function<void(QDialog*)>& on_dialog = {})
    {
        callOnTimeout([on_dialog] {
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            if (auto* box = qobject_cast<QMessageBox*>(dialog)) {
                note("box", text_of(box->icon()).mid(13), "under", cursor(), "\"" + box->windowTitle() + "\"",
                     QTextDocumentFragment::fromHtml(box->text()).toPlainText().simplified());
                box->accept();
            } else if (dialog != nullptr && on_dialog) {
                on_dialog(dialog);
            }
        });
        start(10);
    }
};
