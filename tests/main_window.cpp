// The main window: what each command does, opening, the window's place, and that memory does not grow.

#include "helper.h"

#include "GL/GLObject.h"
#include "GUI/File/MyGlMDIChild.h"
#include "GUI/MyMainWindow.h"

#include <fstream>

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

    /// Chooses a command from the menus by its text, without ampersands and dots.
    void choose(const QString& text) const
    {
        for (const QMenu* menu : menus())
            for (QAction* action : menu->actions())
                if (action->text().remove('&').remove("...") == text)
                    return action->trigger();
        QTest::qFail(qPrintable("There is no command " + text), __FILE__, __LINE__);
    }

    QList<QMenu*> menus() const { return menuBar()->findChildren<QMenu*>(); }

    QMdiArea* const area = findChild<QMdiArea*>();
};

/// Commands by their pictures, or else by their texts, with their keys; * if checked.
QString items(const QList<QAction*>& actions)
{
    QStringList names;
    for (const QAction* action : actions) {
        QString name = action->text();
        for (const QString& picture : QDir(":/images").entryList())
            if (action->icon().pixmap(32).toImage() == QIcon(":/images/" + picture).pixmap(32).toImage())
                name = picture.chopped(4);
        const QString keys = action->shortcut().toString();
        if (!action->isSeparator())
            names += (action->isChecked() ? "*" : "") + name + (keys.isEmpty() ? "" : "(" + keys + ")");
    }
    return names.join(' ');
}

/// Names the [places] that are bright on the screen.
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
            } else {
                window.choose(step);
            }
            drawing = window.active();
            for (int i = 0; drawing != nullptr && drawing->get_drawing_object(i) != nullptr; ++i)
                drawing->get_drawing_object(i)->thickness(7);
        };
        play(act, [&]() -> State {
            QAction icon(window.windowIcon(), "");
            QList<QAction*> tools{&icon}, disabled, entries;
            for (const QToolBar* bar : window.findChildren<QToolBar*>())
                tools += bar->actions();
            for (QMenu* menu : window.menus()) {
                emit menu->aboutToShow();
                for (QAction* action : menu->actions())
                    if (!action->isEnabled() || action->isCheckable())
                        (action->isEnabled() ? entries : disabled) += action;
            }
            QRegion frames;
            for (const QMdiSubWindow* frame : window.area->subWindowList())
                frames += frame->geometry();
            return {{"tools", items(tools)},
                    {"disabled", items(disabled)},
                    {"windows", items(entries)},
                    {"picture", window.active() != nullptr ? picture_of(*window.active()) : "none"},
                    {"tiled", text_of(frames == window.area->viewport()->rect())},
                    {"direction", text_of(QApplication::layoutDirection())},
                    {"open", text_of(window.isVisible())}};
        });
    }

    void opens_files()
    {
        write_file("<IMG src=f>/a.dxf", dxf({"POINT inf nan 1e308", "POINT 1.0 2.0 3.0"}));
        write_file("sub/Häuser Дом 家.dxf", dxf(section("mixed")));
        write_file("tiny.dxf", dxf({"POINT 0.25 0.0 0.0"}));
        write_file("<p\nstyle.dxf", dxf({"TEXT 1.0"}));
        QVERIFY(QFile::link("sub", folder().filePath("link")));
        Main window;
        QString choice;
        const User user([&](QDialog* modal) {
            auto* dialog = qobject_cast<QFileDialog*>(modal);
            note("dialog", dialog->windowTitle(), "in", dialog->directory().path(), dialog->nameFilters().join(" | "));
            dialog->findChild<QLineEdit*>("fileNameEdit")->setText(choice);
            choice.isEmpty() ? modal->reject() : modal->accept();
        });
        const QStatusBar* bar = window.statusBar();
        connect(bar, &QStatusBar::messageChanged, [&](const QString& text) { note("told", text, "under", cursor()); });
        const auto act = [&](const QString& step) { // dialog or open FILE, or a command
            choice = step.section(' ', 1).replace("%n", "\n");
            if (step.startsWith("dialog"))
                window.choose("Open DXF-file");
            else if (step.startsWith("open"))
                note("opened", window.open_dxf(choice));
            else
                window.choose(step);
        };
        play(act, [&]() -> State {
            const MyGlMDIChild* drawing = window.active();
            if (drawing == nullptr)
                return {};
            return {{"cursor", cursor()},
                    {"frames", text_of(window.area->subWindowList().size())},
                    {"status", bar->currentMessage()},
                    {"title", text_of(drawing->windowTitle())},
                    {"view", text_of(drawing->size())},
                    {"scale", text_of(drawing->drawing_scaling())},
                    {"limit", text_of(drawing->drawing_limit())}};
        });
    }

    void keeps_its_place()
    {
        play([](const QString& step) { // what is stored
            write_file("Lastrove/Tolmera.conf", "[General]\n" + QString(step).replace(", ", "\n").toUtf8());
            MyMainWindow window;
            note("place", window.geometry());
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            window.setGeometry(150, 120, 600, 500);
            QTRY_VERIFY(window.pos() != window.geometry().topLeft()); // the window manager has framed it
            const QPoint pos = window.pos();
            window.close();
            const QSettings settings("Lastrove", "Tolmera");
            QCOMPARE(settings.value("pos").toPoint(), pos);
            QCOMPARE(settings.value("size").toSize(), window.size());
        });
    }

    /// Opens and closes $DRAWINGS drawings, at least 20.
    void does_not_grow()
    {
        Main window;
        const QString many = write_file("many.dxf", dxf(QStringList(9000, "LINE 1.0 2.0 3.0 4.0 5.0 6.0")));
        const int drawings = qMax(20, qEnvironmentVariableIntValue("DRAWINGS"));
        qint64 halfway = 0, mapped = 0, pages = 0;
        for (int number = 1; number <= drawings; ++number) {
            window.open_dxf(many);
            QTest::qWait(0);
            window.choose("Close");
            std::ifstream("/proc/self/statm") >> mapped >> pages;
            halfway = 2 * number <= drawings ? pages : halfway;
        }
        QVERIFY2(100 * pages < 105 * halfway, qPrintable(text_of("Memory pages halfway", halfway, "and last", pages)));
    }
};

QTEST_MAIN(TestMainWindow)
#include "main_window.moc"
