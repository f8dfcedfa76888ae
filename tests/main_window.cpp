// The main window and its drawing windows: texts, what each command does, opening and closing, the window's place, and
// that a long session does not grow.

#include "helper.h"

#include "GL/GLObject.h"
#include "GUI/File/MyGlMDIChild.h"
#include "GUI/MyMainWindow.h"

namespace
{

class Main : public MyMainWindow
{
public:
    Main()
    {
        resize(1100, 800);
        show();
        activateWindow();
        (void)QTest::qWaitForWindowActive(this);
    }

    MyGlMDIChild* active() const
    {
        return area->activeSubWindow() ? qobject_cast<MyGlMDIChild*>(area->activeSubWindow()->widget()) : nullptr;
    }

    QMdiArea* const area = findChild<QMdiArea*>();
};

/// The pictures that an icon shows; more than one if they are alike.
QString icon_of(const QIcon& icon)
{
    QStringList names;
    for (const QString& name : QDir(":/images").entryList())
        if (icon.pixmap(32).toImage() == QIcon(":/images/" + name).pixmap(32).toImage())
            names += name.chopped(4);
    return names.join('+');
}

/// The commands of a menu or toolbar by their icons, or else by their texts; * for a checked one; with their keys.
QString items(const QList<QAction*>& actions)
{
    QStringList names;
    for (const QAction* action : actions)
        if (action->isVisible() || !action->isSeparator()) {
            const QString name = action->icon().isNull() ? action->text() : icon_of(action->icon());
            const QString keys = action->shortcut().toString();
            names += (action->isChecked() ? "*" : "") + (action->isSeparator() ? "-" : name) +
                     (keys.isEmpty() ? "" : "(" + keys + ")");
        }
    return names.join(' ');
}

/// What the screen shows of a drawing whose entities tell its sides and its renderings.
QString picture_of(const QWidget& view)
{
    QStringList names;
    for (const QString& place : section("places")) {
        const QStringList words = place.split(' ');
        const QPointF pos = QPointF(words[1].toInt(), -words[2].toInt()) / 18 * qMin(view.width(), view.height());
        if (QColor(shown(view, view.rect().center() + pos.toPoint())).lightness() > 200)
            names += words[0];
    }
    return names.join(' ');
}

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void init() { QSettings("Lastrove", "Tolmera").clear(); }

    void offers_commands()
    {
        Main window;
        const User user;
        QCOMPARE(text_of(window.windowTitle(), icon_of(window.windowIcon()), window.statusBar()->currentMessage()),
                 "Tolmera mainicon Ready");
        window.setWindowTitle("T <img src=f>"); // as a maximised drawing puts its name into the title
        play([&](const QString& step) {         // a menu, a toolbar, or choose COMMAND
            for (const QToolBar* bar : window.findChildren<QToolBar*>())
                if (bar->windowTitle() == step)
                    note("holds", items(bar->actions()));
            for (const QAction* menu : window.menuBar()->actions())
                if (menu->text() == step)
                    note("holds", items(menu->menu()->actions()));
            if (step.startsWith("choose "))
                choose(window, step.mid(7));
        });
    }

    void commands_act()
    {
        Main window;
        const User user;
        const auto act = [&](const QString& step) { // open FILES, keys, or a command
            MyGlMDIChild* drawing = window.active();
            if (step.startsWith("open ")) {
                for (const QString& name : step.split(' ').mid(1))
                    window.open_dxf(write_file(name, name == "empty" ? "" : dxf(section("scene"))));
            } else if (step.startsWith("ctrl+")) {
                QProcess::execute("xdotool", {"key", "--clearmodifiers", step});
            } else if (step == "(turn, move and zoom)") {
                drawing->drawing_translation({0.3, 0.2, 0.1});
                drawing->drawing_rotation({10, 20, 30});
                drawing->drawing_scaling(7);
                drawing->update();
            } else {
                choose(window, step);
            }
            drawing = window.active();
            for (int i = 0; drawing != nullptr && drawing->get_drawing_object(i) != nullptr; ++i)
                drawing->get_drawing_object(i)->thickness(7);
        };
        play(act, [&]() -> State {
            QList<QAction*> disabled, entries;
            for (const QAction* top : window.menuBar()->actions())
                if (QMenu* menu = top->menu()) {
                    emit menu->aboutToShow();
                    for (QAction* action : menu->actions())
                        if (!action->isEnabled() && !action->isSeparator())
                            disabled += action;
                    entries = top->text() == "&Window" ? menu->actions().mid(8) : entries;
                }
            QRegion frames;
            for (const QMdiSubWindow* frame : window.area->subWindowList())
                frames += frame->geometry();
            return {{"disabled", items(disabled)},
                    {"windows", items(entries)},
                    {"picture", window.active() != nullptr ? picture_of(*window.active()) : "none"},
                    {"tiled", text_of(frames == window.area->viewport()->rect())},
                    {"direction", text_of(QApplication::layoutDirection())},
                    {"open", text_of(window.isVisible())}};
        });
    }

    void opens_files()
    {
        write_file("sub/Häuser Дом 家.dxf", dxf(section("mixed")));
        write_file("<IMG src=f>/a.dxf", dxf({"POINT 0.0 0.0 0.0"}));
        write_file("infinite.dxf", dxf({"POINT inf nan 1e308", "POINT 1.0 2.0 3.0"}));
        write_file("<IMG src=f>.dxf", "");
        write_file("<p\nstyle.dxf", dxf({"TEXT 1.0"}));
        QVERIFY(QFile::link("sub", folder().filePath("link")));
        Main window;
        QString choice;
        const User user([&](QWidget* modal) {
            auto* dialog = qobject_cast<QFileDialog*>(modal);
            note("dialog", dialog->windowTitle(), "in", dialog->directory().path(), dialog->nameFilters().join(" | "));
            dialog->findChild<QLineEdit*>("fileNameEdit")->setText(choice);
            choice.isEmpty() ? dialog->reject() : static_cast<QDialog*>(dialog)->accept();
        });
        connect(window.statusBar(), &QStatusBar::messageChanged, [&](const QString& message) {
            if (!message.isEmpty())
                note("status", message, "under", cursor());
        });
        QDir::setCurrent(folder().path());
        const auto act = [&](const QString& step) { // dialog or open FILE, or a command
            choice = step.section(' ', 1).replace("%n", "\n").replace("%e9", QChar(QChar::ReplacementCharacter));
            if (step.startsWith("dialog"))
                choose(window, "Open DXF-file");
            else if (step.startsWith("open"))
                note("opened", window.open_dxf(choice));
            else
                choose(window, step);
        };
        play(act, [&]() -> State {
            const MyGlMDIChild* drawing = window.active();
            if (drawing == nullptr)
                return {};
            return {{"cursor", cursor()},
                    {"frames", text_of(window.area->subWindowList().size())},
                    {"title", text_of(drawing->windowTitle())},
                    {"scale", text_of(drawing->drawing_scaling())}};
        });
    }

    void keeps_its_place()
    {
        State state;
        const auto act = [&](const QString& step) { // what is stored
            write_file("Lastrove/Tolmera.conf", "[General]\n" + QString(step).replace(", ", "\n").toUtf8());
            QSettings settings("Lastrove", "Tolmera");
            settings.sync();
            MyMainWindow window;
            state["place"] = text_of(window.geometry());
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            window.setGeometry(150, 120, 600, 500);
            QTRY_VERIFY(window.pos() != window.geometry().topLeft()); // the window manager has framed it
            const QPoint pos = window.pos();
            QVERIFY(window.close());
            settings.sync();
            state["stored"] = text_of(settings.value("pos") == pos, settings.value("size").toSize());
        };
        play(act, [&] { return state; });
    }

    /// Opens, uses and closes DRAWINGS drawings, or 20, and picks in one that stays open, for Mesa never gives back
    /// some memory of a view that was picked in.
    void does_not_grow()
    {
        Main window;
        const User user([](QWidget* dialog) { qobject_cast<QDialog*>(dialog)->accept(); });
        window.open_dxf(write_file("few.dxf", dxf(section("scene"))));
        MyGlMDIChild* lasting = window.active();
        const QString many = write_file("many.dxf", dxf(QStringList(9000, "LINE 1.0 2.0 3.0 4.0 5.0 6.0")));
        const int drawings = qMax(20, qEnvironmentVariableIntValue("DRAWINGS"));
        QList<qint64> halfway, held;
        for (int number = 1; number <= drawings; ++number) {
            window.open_dxf(many);
            for (const char* command : {"Point rendering", "Solid rendering", "Left", "Source view", "Information"}) {
                choose(window, command);
                QTest::qWait(0);
            }
            window.active()->parentWidget()->close();
            QTest::mouseDClick(lasting, Qt::LeftButton, {}, lasting->rect().center());
            QTest::mouseDClick(lasting, Qt::RightButton);
            QFile memory("/proc/self/statm");
            QVERIFY(memory.open(QIODevice::ReadOnly));
            held = {memory.readAll().split(' ').at(1).toLongLong(), QDir("/proc/self/fd").entryList().size(),
                    QApplication::allWidgets().size()};
            halfway = 2 * number <= drawings ? held : halfway;
        }
        const bool is_steady = 100 * held[0] < 105 * halfway[0] && held[1] <= halfway[1] && held[2] <= halfway[2];
        QVERIFY2(is_steady, qPrintable(text_of("Pages, files, widgets halfway", halfway, "and last", held)));
        QCOMPARE(cursor(), "-");
    }
};

QTEST_MAIN(TestMainWindow)
#include "main_window.moc"
