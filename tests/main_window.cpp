// The main window: its commands and when they are enabled, opening files, the Window menu, settings.

#include "helper.h"

#include "GUI/File/MyGlMDIChild.h"
#include "GUI/MyMainWindow.h"

#include <sys/stat.h>

namespace
{

class Main : public MyMainWindow
{
public:
    Main()
    {
        show();
        activateWindow();
        if (!QTest::qWaitForWindowActive(this)) qFatal("the main window does not become active");
    }

    QMdiArea* area() const { return findChild<QMdiArea*>(); }
    MyGlMDIChild* drawing(int index) const
    {
        return static_cast<MyGlMDIChild*>(area()->subWindowList().at(index)->widget());
    }

    /// The command with this text, without ampersands and dots.
    QAction* command(const QString& text) const
    {
        for (QAction* action : findChildren<QAction*>())
            if (action->text().remove('&').remove("...") == text) return action;
        qFatal("no command %s", qPrintable(text));
    }

    QString enabled(const QString& texts) const
    {
        QStringList found;
        for (const QString& text : texts.split('|'))
            if (command(text)->isEnabled()) found += text;
        return found.join('|');
    }

    using MyMainWindow::current_dxf_file_dir;
    using MyMainWindow::ogl_version;
};

QString told(const QWidget* menu)
{
    QString text = menu->property("title").toString() + menu->windowTitle() + ":";
    for (const QAction* action : menu->actions())
        if (action->isVisible() || !action->isSeparator())
            text += action->isSeparator() ? "|-" : (action->isChecked() ? "|x " : "|") + action->text();
    return text;
}

QString drawing(const QString& name)
{
    return write_file(name, dxf({"3DFACE 1.0 1.0 0.5 2.0 1.0 0.5 2.0 2.0 0.5", "POINT 1.0 1.0 1.0"}));
}

const QString rendering = "Point rendering|Wireframe rendering|Solid rendering";
const QString other =
    "Open DXF-file|Information|Exit|Front|Bottom|Source view|Close|Close All|Tile|Cascade|Next|Previous|"
    "About|References|About DXF|Switch layout direction";
const QString without_drawing = "Open DXF-file|Exit|About|References|About DXF|Switch layout direction";

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QSettings("Lastrove", "Tolmera").setValue("pos", QPoint(40, 60));
        QSettings("Lastrove", "Tolmera").setValue("size", QSize(900, 700));
    }

    void has_its_texts_keys_slots_and_pictures()
    {
        const Main window;
        QStringList texts;
        for (const QAction* action : window.findChildren<QAction*>("", Qt::FindDirectChildrenOnly))
            texts += QStringList{action->text(), action->shortcut().toString(), action->statusTip(),
                action->icon().isNull() ? "" : "icon"}
                         .join('|');
        for (const QAction* action : window.menuBar()->actions())
            texts += action->isSeparator() ? "-" : told(action->menu());
        for (const QToolBar* bar : window.findChildren<QToolBar*>()) texts += told(bar);
        texts += window.windowTitle() + "|" + window.statusBar()->currentMessage();
        for (int i = MyMainWindow::staticMetaObject.methodOffset(); i < window.metaObject()->methodCount(); ++i)
            texts += window.metaObject()->method(i).methodSignature();
        for (const QString& name : QDir(":/images").entryList()) {
            QFile file(":/images/" + name);
            QVERIFY(file.open(QIODevice::ReadOnly));
            // Width, height, bit depth and colour type of a PNG's header chunk.
            texts += name + " " + file.read(26).mid(16).toHex() +
                     QString::number(QResource(file.fileName()).compressionAlgorithm());
        }
        QFile expected(QFINDTESTDATA("main_window.txt"));
        QVERIFY(expected.open(QIODevice::ReadOnly));
        QCOMPARE(texts, QString(expected.readAll()).trimmed().split('\n'));
    }

    void commands_follow_the_active_drawing()
    {
        Main window;
        const BoxReader reader;
        QCOMPARE(window.enabled(other + "|" + rendering), without_drawing);
        for (int i = MyMainWindow::staticMetaObject.methodOffset() + 10; i < window.metaObject()->methodCount(); ++i)
            QVERIFY(window.metaObject()->method(i).invoke(&window)); // does nothing

        QVERIFY(window.open_dxf(drawing("a.dxf")));
        QCOMPARE(window.enabled(other + "|" + rendering), other + "|Point rendering|Solid rendering");
        window.command("Solid rendering")->trigger();
        QCOMPARE(window.enabled(rendering), QString("Point rendering|Wireframe rendering"));
        QVERIFY(window.open_dxf(drawing("b.dxf")));
        window.command("Point rendering")->trigger();
        QCOMPARE(window.enabled(rendering), QString("Wireframe rendering|Solid rendering"));
        for (unsigned long i = 0; i < 2; ++i)
            QVERIFY(window.drawing(0)->get_drawing_object(i)->rendering() == GLObject::SOLID &&
                    window.drawing(1)->get_drawing_object(i)->rendering() == GLObject::POINT);
        const std::pair<const char*, DRVect3d> views[] = {{"Back", {0, 180, 0}}, {"Left", {0, 90, 0}},
            {"Right", {0, -90, 0}}, {"Top", {90, 0, 0}}, {"Bottom", {-90, 0, 0}}, {"Front", {}}, {"Source view", {}}};
        for (const auto& [text, rotation] : views) {
            window.drawing(1)->drawing_rotation({1, 2, 3});
            window.drawing(1)->drawing_scaling(7);
            window.command(text)->trigger();
            QVERIFY(window.drawing(1)->drawing_rotation() == rotation &&
                    window.drawing(0)->drawing_rotation() == DRVect3d());
        }
        QCOMPARE(window.drawing(1)->drawing_scaling(), 0.5);
        QVERIFY(window.open_dxf(write_file("none.dxf", "0\n")));
        QCOMPARE(window.enabled(rendering), rendering);

        // Another window takes the focus and gives it back.
        QWidget another;
        another.show();
        another.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&another));
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTRY_COMPARE(window.enabled(other), other);
        window.area()->setActiveSubWindow(window.area()->subWindowList().first());
        QCOMPARE(window.enabled(rendering), QString("Point rendering|Wireframe rendering"));
        for (const Qt::LayoutDirection direction : {Qt::RightToLeft, Qt::LeftToRight}) {
            window.command("Switch layout direction")->trigger();
            QCOMPARE(QApplication::layoutDirection(), direction);
        }
        window.command("Close All")->trigger();
        QTRY_COMPARE(window.enabled(other + "|" + rendering), without_drawing);
    }

    void opens_through_the_dialog()
    {
        Main window;
        QString choice, dialog_facts;
        const BoxReader reader([&](QWidget* modal) {
            auto* dialog = qobject_cast<QFileDialog*>(modal);
            dialog_facts =
                dialog->windowTitle() + "|" + dialog->directory().path() + "|" + dialog->nameFilters().join('|');
            dialog->findChild<QLineEdit*>("fileNameEdit")->setText(choice);
            choice.isEmpty() ? dialog->reject() : static_cast<QDialog*>(dialog)->accept();
        });
        const auto open = [&](const QString& path) {
            choice = path;
            window.command("Open DXF-file")->trigger();
            QVERIFY(QApplication::overrideCursor() == nullptr);
        };
        open("");
        QVERIFY(window.area()->subWindowList().isEmpty() && window.statusBar()->currentMessage() == "Ready");
        open(drawing("sub/Häuser.dxf"));
        QCOMPARE(window.statusBar()->currentMessage(), QString("File loaded"));
        QVERIFY(window.ogl_version.startsWith("v.") && window.ogl_version != "v.unknown, ");
        QCOMPARE(window.current_dxf_file_dir, QFileInfo(choice).canonicalPath());
        QVERIFY(window.open_dxf(drawing("b.dxf")));
        window.drawing(1)->parentWidget()->showMaximized();

        // A FIFO cannot be read as a drawing: two boxes, and nothing is left of its window.
        const QString loaded_from = window.current_dxf_file_dir;
        const QString fifo = folder().filePath("fifo.dxf"), title = window.windowTitle();
        QVERIFY(mkfifo(QFile::encodeName(fifo), 0600) == 0 && title.contains("b.dxf"));
        open(fifo);
        QCOMPARE(dialog_facts, title + " : Open File|" + loaded_from + "|Drawings ( *.dxf )|All files ( *.* )");
        QCOMPARE(reader.boxes.mid(1),
            QStringList(title + " : Warning |<br />Error reading of file: &#8220;" + fifo + "&#8221;.<br /><hr />"));
        QVERIFY(reader.boxes[0].startsWith("Warning |<br />"));
        QVERIFY(window.statusBar()->currentMessage() == "Loading DXF file..." &&
                window.current_dxf_file_dir == loaded_from);
        QVERIFY(window.area()->subWindowList().size() == 2 && window.findChildren<MyGlMDIChild*>().size() == 2);
        QCOMPARE(window.windowTitle(), title); // the active drawing is the one that was
    }

    void window_menu_lists_the_drawings()
    {
        Main window;
        QString expected = "&Window:|Cl&ose|Close &All|-|&Tile|&Cascade|-|Ne&xt|Pre&vious|-";
        for (int i = 1; i <= 12; ++i) {
            QVERIFY(window.open_dxf(drawing(QString::number(i) + " a&b%1.dxf")));
            expected += QString(i < 10 ? "|&%1 %1 a&b%" : "|%1 %1 a&b%").arg(i) + "1.dxf";
        }
        QVERIFY(window.ogl_version.isEmpty() && !window.current_dxf_file_dir.isEmpty());
        window.area()->addSubWindow(new QWidget)->show(); // a frame without a drawing has no entry
        window.area()->setActiveSubWindow(window.area()->subWindowList().at(11));
        auto* menu = window.findChildren<QMenu*>("", Qt::FindDirectChildrenOnly)
                         .value(0, window.menuBar()->actions().at(2)->menu());
        QMetaObject::invokeMethod(menu, "aboutToShow");
        QCOMPARE(told(menu), QString(expected).replace("|12 12", "|x 12 12"));
        const auto children = window.findChildren<QObject*>().size();
        menu->actions().at(9 + 2)->trigger();
        QMetaObject::invokeMethod(menu, "aboutToShow");
        QCOMPARE(told(menu), QString(expected).replace("|&3 3", "|x &3 3"));
        QCOMPARE(window.findChildren<QObject*>().size(), children);
        delete window.area()->subWindowList().at(1);
        QCOMPARE(told(menu), QString(expected).replace("|&2 2 a&b%1.dxf", "").replace("|&3 3", "|x &3 3"));
    }

    void position_and_size_are_kept()
    {
        QSettings settings("Lastrove", "Tolmera");
        const std::tuple<QVariant, QVariant, QSize> rows[] = {{QPoint(40, 60), QSize(640, 480), QSize(640, 480)},
            {"torn", QSize(-5, 3), QSize(400, 400)}, {QPoint(90000, 9), QSize(40000, 9), QSize(400, 400)}};
        for (const auto& [pos, size, expected] : rows) {
            settings.setValue("pos", pos);
            settings.setValue("size", size);
            settings.sync();
            Main window;
            QVERIFY(window.size() == expected && window.screen()->geometry().contains(window.geometry()));
            QVERIFY(window.open_dxf(drawing("a.dxf")));
            window.resize(600, 500);
            window.move(150, 120);
            QTRY_VERIFY((window.pos() - QPoint(150, 120)).manhattanLength() < 40); // a frame may count
            const QPoint moved_to = window.pos();
            QVERIFY(window.close() && window.area()->subWindowList().isEmpty());
            settings.sync();
            QCOMPARE(settings.value("pos").toPoint(), moved_to);
            QVERIFY(settings.value("size") == QSize(600, 500) && settings.allKeys().size() == 2);
        }
    }
};

TOLMERA_TEST(TestMainWindow)
#include "main_window.moc"
