// The main window and its drawing windows: texts, what each command does, opening and closing, place, memory.

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

    /// Chooses the command with this text, without ampersands and dots.
    void choose(const QString& text)
    {
        windows->aboutToShow();
        for (QAction* action : findChildren<QAction*>())
            if (action->text().remove('&').remove("...") == text)
                return action->trigger();
    }

    MyGlMDIChild* active() const
    {
        return area->activeSubWindow() ? qobject_cast<MyGlMDIChild*>(area->activeSubWindow()->widget()) : nullptr;
    }

    QMdiArea* const area = findChild<QMdiArea*>();
    QMenu* const windows = menuBar()->actions().at(2)->menu();
    using MyMainWindow::current_dxf_file_dir;
    using MyMainWindow::ogl_version;
};

/// The names of the pictures that an icon shows; more than one if they are alike.
QString told(const QIcon& icon)
{
    QStringList names;
    for (const QString& name : QDir(":/images").entryList())
        if (icon.pixmap(32).toImage() == QIcon(":/images/" + name).pixmap(32).toImage())
            names += name;
    return names.join('+');
}

QString told(const QWidget* menu)
{
    QString text = menu->property("title").toString() + menu->windowTitle() + ":";
    for (const QAction* action : menu->actions())
        if (action->isVisible() || !action->isSeparator())
            text += action->isSeparator() ? "|-" : (action->isChecked() ? "|x " : "|") + action->text();
    return text;
}

/// What the screen shows of a drawing that can tell the sides and the renderings.
QString told_picture(const QWidget& view)
{
    QString names;
    for (const QString& place : section("places").split('\n')) {
        const QPointF pos = QPointF(place.section(' ', 1, 1).toInt(), -place.section(' ', 2).toInt()) / 18 *
                            qMin(view.width(), view.height());
        if (QColor(shown(view, view.rect().center() + pos.toPoint())).lightness() > 200)
            names += place.section(' ', 0, 0) + " ";
    }
    return names;
}

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void init() { QSettings("Lastrove", "Tolmera").clear(); }

    void has_texts_keys_and_icons()
    {
        Main window;
        window.ogl_version = "v.9 X, ";
        const User user;
        play([&](const QString& step) {
            if (step == "all") {
                for (const QAction* action : window.findChildren<QAction*>("", Qt::FindDirectChildrenOnly))
                    note(action->text() + "|" + QKeySequence::listToString(action->shortcuts()) + "|" +
                         action->statusTip() + "|" + told(action->icon()));
                for (const QAction* action : window.menuBar()->actions())
                    note(action->isSeparator() ? "-" : told(action->menu()));
                for (const QToolBar* bar : window.findChildren<QToolBar*>())
                    note(told(bar));
                note(told(window.menuBar()->actions().first()->menu()->actions().at(3)->icon()),
                     told(window.windowIcon()), window.windowTitle(), window.statusBar()->currentMessage());
            }
            const QImage icon(":/images/" + step);
            QPoint lit; // side
            for (int i = 0; i < icon.width() * icon.height(); ++i)
                if (icon.pixelColor(i % 32, i / 32).red() > icon.pixelColor(i % 32, i / 32).blue() + 100)
                    lit += QPoint(2 * (i % 32) - 31, 2 * (i / 32) - 31);
            if (!icon.isNull())
                note(lit / 1000);
            window.choose(step);
            window.setWindowTitle("T <img src=f>"); // as a maximised drawing puts its name into the title
            seen().replaceInStrings(qVersion(), "QT").replaceInStrings(" v." VERSION ".<", " v.VERSION.<");
        });
    }

    void commands_act()
    {
        Main window;
        const User user;
        play(
            [&](const QString& step) {
                for (const QString& name : step.split(' ').mid(1))
                    if (step.startsWith("open "))
                        QVERIFY(window.open_dxf(write_file(name, dxf(section("scene").toLatin1().split('\n')))));
                if (step.startsWith("ctrl"))
                    QProcess::execute("xdotool", {"key", "--clearmodifiers", step});
                if (step == "navigate")
                    note(window.active()->drawing_translation({0.3, 0.2, 0.1}),
                         window.active()->drawing_rotation({10, 20, 30}), window.active()->drawing_scaling(7));
                if (step == "frame without a drawing")
                    window.area->addSubWindow(new QWidget)->show();
                if (step == "empty drawing")
                    QVERIFY(window.open_dxf(write_file("empty", "")));
                window.choose(step);
                window.windows->aboutToShow();
                if (step == "delete")
                    delete window.area->subWindowList().at(1);
                for (int i = 0; window.active() != nullptr && window.active()->get_drawing_object(i) != nullptr; ++i)
                    window.active()->get_drawing_object(i)->thickness(7);
            },
            [&] {
                QStringList disabled;
                QRegion frames;
                for (const QMdiSubWindow* frame : window.area->subWindowList())
                    frames += frame->geometry();
                note(frames == window.area->viewport()->rect() ? "tiled" : "",
                     window.active() != nullptr ? told_picture(*window.active()) : "no drawing", told(window.windows));
                for (const QAction* action : window.findChildren<QAction*>("", Qt::FindDirectChildrenOnly))
                    if (!action->isEnabled())
                        disabled += action->text().remove('&');
                note("disabled:", disabled.join(','), QApplication::layoutDirection());
            });
        QVERIFY(!window.isVisible());
    }

    void opens_files()
    {
        write_file("sub/Häuser Дом 家.dxf", dxf(section("mixed").toLatin1().split('\n')));
        write_file("origin.dxf", dxf({"POINT 0.0 0.0 0.0"}));
        write_file("<IMG src=f>/a.dxf", dxf({"POINT 0.0 0.0 0.0"}));
        QVERIFY(QFile::link("sub", folder().filePath("link")));
        write_file("<IMG src=f>.dxf", "");
        write_file("<p\nstyle.dxf", dxf({"TEXT 1.0"}));
        Main window;
        QString choice;
        const User user([&](QWidget* modal) {
            auto* dialog = qobject_cast<QFileDialog*>(modal);
            note(dialog->parent()->metaObject()->className(), dialog->windowTitle(), dialog->directory().path(),
                 dialog->nameFilters().join("; "));
            dialog->findChild<QLineEdit*>("fileNameEdit")->setText(choice);
            choice.isEmpty() ? dialog->reject() : static_cast<QDialog*>(dialog)->accept();
        });
        connect(window.statusBar(), &QStatusBar::messageChanged, [&](const QString& message) {
            const auto* timer = window.statusBar()->findChild<QTimer*>();
            if (!message.isEmpty())
                note("status", message, timer != nullptr ? timer->interval() : 0, cursor());
        });
        QDir::setCurrent(folder().path());
        play([&](const QString& step) { // a file for the dialog, or for the function
            choice = step.section(' ', 1).replace("%n", "\n").replace("%u", QString(QChar::ReplacementCharacter));
            const auto widgets = QApplication::allWidgets().size();
            if (step.startsWith("dialog"))
                window.choose("Open DXF-file");
            else
                note(window.open_dxf(choice));
            note(cursor(), window.current_dxf_file_dir,
                 QApplication::allWidgets().size() == widgets ? "no more widgets" : "more widgets");
            const MyGlMDIChild& drawing = *window.active();
            note(drawing.windowTitle(), drawing.isVisible(), drawing.drawing_limit(), drawing.drawing_scaling(),
                 drawing.drawing_source_scaling(), drawing.sizeHint(), drawing.minimumSizeHint(),
                 window.ogl_version == drawing.version_of_OpenGL());
            window.ogl_version += " as it was";
            window.choose("Information");
        });
    }

    void keeps_its_place()
    {
        play([](const QString& step) { // a name, and what is stored
            write_file("Lastrove/Tolmera.conf", "[General]\n" + step.section("; ", 1).replace("; ", "\n").toUtf8());
            QSettings settings("Lastrove", "Tolmera");
            settings.sync();
            MyMainWindow window;
            note(window.geometry());
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            window.setGeometry(150, 120, 600, 500);
            QTRY_VERIFY(window.pos() != window.geometry().topLeft()); // the window manager has framed it
            const QPoint pos = window.pos();
            struct Busy : QWidget {
                void closeEvent(QCloseEvent* event) override { event->ignore(); }
            };
            if (step == "busy")
                window.findChild<QMdiArea*>()->addSubWindow(new Busy)->show();
            note(window.close());
            settings.sync();
            note(settings.allKeys().join(", "), settings.value("pos") == pos, settings.value("size"));
        });
    }

    void closed_drawings_give_their_memory_back()
    {
        const QByteArray face = "3DFACE 1.0 2.0 3.0 4.0 5.0 6.0 7.0 8.0 9.0 1.0 5.0 9.0";
        const QString path = write_file("large.dxf", dxf((face + "|").repeated(50000).chopped(1).split('|')));
        Main window;
        int before = 0;
        for (int round = 0; round < 6; ++round) {
            QVERIFY(window.open_dxf(path));
            window.choose("Close");
            QTRY_COMPARE(window.findChildren<MyGlMDIChild*>().size(), 0);
            QFile file("/proc/self/statm");
            QVERIFY(file.open(QIODevice::ReadOnly));
            const int megabytes = file.readAll().split(' ').at(1).toInt() / 256;
            before = round < 2 ? megabytes : before;
#ifndef __SANITIZE_ADDRESS__ // which keeps what is freed for a while
            QVERIFY2(megabytes - before < 4, qPrintable(QString("%1 MB more").arg(megabytes - before)));
#endif
        }
    }
};

QTEST_MAIN(TestMainWindow)
#include "main_window.moc"
