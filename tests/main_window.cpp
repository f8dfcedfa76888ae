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
        if (!QTest::qWaitForWindowActive(this))
            qFatal("the main window does not become active");
    }

    /// Chooses the command with this text, without ampersands and dots.
    void choose(const QString& text)
    {
        for (QAction* action : findChildren<QAction*>())
            if (action->text().remove('&').remove("...") == text)
                return action->trigger();
        qFatal("no command %s", qPrintable(text));
    }

    MyGlMDIChild* active() const
    {
        const QMdiSubWindow* frame = area->activeSubWindow();
        return frame != nullptr ? qobject_cast<MyGlMDIChild*>(frame->widget()) : nullptr;
    }

    QMdiArea* const area = findChild<QMdiArea*>();
    using MyMainWindow::current_dxf_file_dir;
    using MyMainWindow::ogl_version;
};

QImage image(const QIcon& icon)
{
    return icon.pixmap(32).toImage().convertToFormat(QImage::Format_ARGB32);
}

/// The names of the pictures that an icon shows; more than one if they are alike.
QString told(const QIcon& icon)
{
    QStringList names;
    for (const QString& name : QDir(":/images").entryList())
        if (!icon.isNull() && image(icon) == image(QIcon(":/images/" + name)))
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

/// A drawing in which the sides and the renderings can be told apart.
QString write_scene(const QString& name)
{
    return write_file(name, dxf({"POINT 3.0 5.0 7.0", "POINT 9.0 9.0 9.0",
                                 "3DFACE -2.0 -2.0 0.0 2.0 -2.0 0.0 2.0 2.0 0.0 -2.0 2.0 0.0",
                                 "3DFACE -7.0 -7.0 0.0 -5.0 -7.0 0.0 -5.0 -5.0 0.0 -7.0 -5.0 0.0"}));
}

/// What the screen shows of it: the side on which its point is, and what there is of its faces.
QString told_picture(const QWidget& view)
{
    const struct {
        const char* name;
        QPointF place;
    } places[] = {{"front", {3, -5}},  {"back", {-3, -5}},  {"left", {7, -5}},     {"right", {-7, -5}},
                  {"top", {3, 7}},     {"bottom", {3, -7}}, {"corners", {-2, -2}}, {"edges", {1, -2}},
                  {"inside", {1, -1}}, {"second", {-6, 6}}};
    QStringList names;
    for (const auto& [name, place] : places) {
        const double unit = qMin(view.width(), view.height()) / 18.0;
        if (shown(view, (QPointF(view.width(), view.height()) / 2 + place * unit).toPoint()).lightness() > 200)
            names += name;
    }
    return names.join(' ');
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
            if (step == "actions")
                for (const QAction* action : window.findChildren<QAction*>("", Qt::FindDirectChildrenOnly))
                    note(action->text() + "|" + QKeySequence::listToString(action->shortcuts()) + "|" +
                         action->statusTip() + "|" + told(action->icon()));
            else if (step == "menus")
                for (const QAction* action : window.menuBar()->actions())
                    note(action->isSeparator() ? "-" : told(action->menu()));
            else if (step == "toolbars")
                for (const QToolBar* bar : window.findChildren<QToolBar*>())
                    note(told(bar));
            else if (step == "window")
                note(told(window.menuBar()->actions().first()->menu()->actions().at(3)->icon()),
                     told(window.windowIcon()), window.windowTitle(), window.statusBar()->currentMessage());
            else if (step.endsWith(".png")) { // where its lit side is
                const QImage icon = image(QIcon(":/images/" + step));
                QPoint weight;
                for (int i = 0; i < 32 * 32; ++i)
                    if (icon.pixelColor(i % 32, i / 32).red() > icon.pixelColor(i % 32, i / 32).blue() + 100)
                        weight += QPoint(2 * (i % 32) - 31, 2 * (i / 32) - 31);
                note(weight / 1000);
            } else {
                window.choose(step);
                window.setWindowTitle("T <img src=f>"); // as a maximised drawing puts its name into the title
                seen().replaceInStrings(qVersion(), "QT").replaceInStrings(" v." VERSION ".<", " v.VERSION.<");
            }
        });
    }

    void commands_act()
    {
        Main window;
        QMenu* menu = window.menuBar()->actions().at(2)->menu();
        const User user;
        play(
            [&](const QString& step) {
                if (step.startsWith("open "))
                    for (const QString& name : step.mid(5).split(' '))
                        QVERIFY(window.open_dxf(write_scene(name)));
                else if (step.startsWith("ctrl"))
                    QProcess::execute("xdotool", {"key", "--clearmodifiers", step});
                else if (step == "navigate") {
                    window.active()->drawing_translation({0.3, 0.2, 0.1});
                    window.active()->drawing_scaling(7);
                } else if (step == "frame without a drawing")
                    window.area->addSubWindow(new QWidget)->show();
                else if (step == "menu") {
                    menu->popup({});
                    note(told(menu));
                    const int objects = window.findChildren<QObject*>().size();
                    menu->close();
                    menu->popup({});
                    note(window.findChildren<QObject*>().size() - objects, "more objects");
                    delete window.area->subWindowList().at(1);
                    note(told(menu));
                    menu->close();
                } else {
                    menu->aboutToShow();
                    window.choose(step);
                }
                if (window.active() != nullptr)
                    for (unsigned long i = 0; i < window.active()->quantity_of_drawing_objects(); ++i)
                        window.active()->get_drawing_object(i)->thickness(7);
            },
            [&] {
                QStringList titles, disabled;
                QRegion together;
                int area = 0;
                for (const QMdiSubWindow* frame : window.area->subWindowList()) {
                    titles += (frame == window.area->activeSubWindow() ? "*" : "") + frame->windowTitle();
                    together += frame->geometry();
                    area += frame->width() * frame->height();
                }
                const QRect all = window.area->viewport()->rect();
                note(titles.join(' '), together == all && area == all.width() * all.height() ? "tiled" : "", "|",
                     window.active() != nullptr ? told_picture(*window.active()) : "no drawing");
                for (const QAction* action : window.findChildren<QAction*>("", Qt::FindDirectChildrenOnly))
                    if (!action->isEnabled())
                        disabled += action->text().remove('&');
                note("disabled:", disabled.join(','),
                     QApplication::layoutDirection() == Qt::RightToLeft ? "mirrored" : "");
            });
        QVERIFY(!window.isVisible());
    }

    void opens_files()
    {
        write_file("sub/Häuser Дом 家.dxf", dxf({"POINT -2.25 0.5 3e-7", "LINE 1234567.0 100.0 0.0 1.0 1.0 0.0", "LINE",
                                                 "3DFACE 1.0 2.0", "3DFACE 1.0 2.0", "3DFACE 1.0 2.0"}));
        write_file("origin.dxf", dxf({"POINT 0.0 0.0 0.0"}));
        write_file("<IMG src=f>.dxf", "");
        write_file("<p\nstyle.dxf", dxf({"TEXT 1.0"}));
        Main window;
        QString choice;
        const User user([&](QWidget* modal) {
            auto* dialog = qobject_cast<QFileDialog*>(modal);
            note("dialog", dialog->parent()->metaObject()->className(), dialog->windowTitle(),
                 dialog->directory().path(), dialog->nameFilters());
            dialog->findChild<QLineEdit*>("fileNameEdit")->setText(choice);
            choice.isEmpty() ? dialog->reject() : static_cast<QDialog*>(dialog)->accept();
        });
        struct Watch : QObject {
            QStatusBar* bar;
            bool eventFilter(QObject* object, QEvent* event) override
            {
                if (event->type() == QEvent::WindowTitleChange && object->inherits("MyGlMDIChild"))
                    note("loads", bar->currentMessage(), cursor());
                return false;
            }
        } watch;
        watch.bar = window.statusBar();
        qApp->installEventFilter(&watch);
        play([&](const QString& step) { // a file for the dialog, or for the function
            choice = step.section(' ', 1).replace("\\n", "\n").replace("\\u", QString(QChar::ReplacementCharacter));
            const int objects = window.findChildren<QObject*>().size();
            if (step.startsWith("dialog"))
                window.choose("Open DXF-file");
            else
                note(window.open_dxf(choice));
            note(window.statusBar()->currentMessage(), cursor(), window.current_dxf_file_dir,
                 window.ogl_version.left(2));
            note("objects:", window.findChildren<QObject*>().size() == objects ? "as before" : "more");
            if (window.active() == nullptr)
                return;
            MyGlMDIChild& drawing = *window.active();
            window.choose("Information");
            note(drawing.windowTitle(), drawing.isVisible(), drawing.drawing_limit(), drawing.drawing_scaling(),
                 drawing.drawing_source_scaling(), drawing.sizeHint(), drawing.minimumSizeHint());
            for (unsigned long i = 0; i < drawing.quantity_of_drawing_objects(); ++i)
                note("object", drawing.get_drawing_object(i)->local_id());
        });
        QCOMPARE(window.ogl_version, window.active()->version_of_OpenGL());
        QCOMPARE(window.statusBar()->findChild<QTimer*>()->interval(), 2000);
    }

    void keeps_its_place()
    {
        play([](const QString& step) { // a name, and what is stored
            write_file("Lastrove/Tolmera.conf", "[General]\n" + step.section("; ", 1).replace("; ", "\n").toUtf8());
            QSettings("Lastrove", "Tolmera").sync();
            note(MyMainWindow().geometry());
        });
        Main window;
        struct Busy : QWidget{void closeEvent(QCloseEvent * event) override{event->setAccepted(windowTitle() == "done");
    }
}* busy = new Busy;
window.area->addSubWindow(busy)->show();
window.resize(600, 500);
window.move(150, 120);
QTRY_VERIFY((window.pos() - QPoint(150, 120)).manhattanLength() < 40); // a frame may count
init();
QVERIFY(!window.close());
QCOMPARE(QSettings("Lastrove", "Tolmera").allKeys(), QStringList());
busy->setWindowTitle("done");
const QPoint pos = window.pos();
QVERIFY(window.close());
const QSettings settings("Lastrove", "Tolmera");
QCOMPARE(settings.allKeys(), (QStringList{"pos", "size"}));
QCOMPARE(settings.value("pos").toPoint(), pos);
QCOMPARE(settings.value("size").toSize(), QSize(600, 500));
}

void closed_drawings_give_their_memory_back()
{
    QByteArrayList faces;
    for (int i = 0; i < 20000; ++i)
        faces += "3DFACE 1.0 2.0 3.0 4.0 5.0 6.0 7.0 8.0 9.0 1.0 5.0 9.0";
    const QString path = write_file("large.dxf", dxf(faces));
    Main window;
    int megabytes[6] = {};
    for (int& now : megabytes) {
        QVERIFY(window.open_dxf(path));
        window.choose("Close");
        QTRY_COMPARE(window.findChildren<MyGlMDIChild*>().size(), 0);
        QFile file("/proc/self/statm");
        QVERIFY(file.open(QIODevice::ReadOnly));
        now = file.readAll().split(' ').at(1).toInt() / 256;
    }
    qDebug() << std::vector<int>(megabytes, megabytes + 6);
}
}
;

QTEST_MAIN(TestMainWindow)
#include "main_window.moc"
