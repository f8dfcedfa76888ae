// The roads of a file into a drawing window: loaded, empty, unreadable.

#include "helper.h"

#include "GUI/File/MyGlMDIChild.h"

class TestDrawingWindow : public QObject
{
    Q_OBJECT

private slots:
    void loads()
    {
        const QByteArray mixed = dxf({"POINT -250.0 3.0 7.0", "LINE 1.0 2.0 3.0 4.0 5.0 6.0",
            "3DFACE 0.0 0.0 0.5 1.0 0.0 0.5 1.0 1.0 0.5 0.0 1.0 0.5"});
        const QString drawings = DRAWINGS "/"; // of other programs, where the build was given them
        const struct {
            QString path;
            unsigned long points, lines, faces;
            double limit;
        } rows[] = {{write_file("mixed.dxf", mixed), 1, 1, 1, 250},
            {write_file("Häuser/Дом 家.dxf", mixed), 1, 1, 1, 250},
            {write_file("origin.dxf", dxf({"POINT 0.0 0.0 0.0"})), 1, 0, 0, 0},
            {drawings + "3dface.dxf", 0, 5, 44, 4919.4426113424679}, {drawings + "lineTest.dxf", 0, 1, 2, 0.5},
            {drawings + "points.dxf", 2, 0, 0, 5.5}, {drawings + "PinkEggFromLW.dxf", 0, 0, 288, 0}};
        for (const auto& row : rows) {
            const QFileInfo file(row.path);
            if (!file.exists() && row.path.startsWith(drawings)) continue;
            MyGlMDIChild window(nullptr);
            QVERIFY(window.loadFile(row.path));
            QVERIFY2(window.points() == row.points && window.lines() == row.lines && window.faces() == row.faces,
                qPrintable(row.path));
            QVERIFY(window.windowTitle() == file.fileName() && window.tell_file_name() == file.fileName());
            QVERIFY(window.tell_file_path() == file.canonicalPath() && window.tell_file_size() == file.size());
            QVERIFY(window.drawing_limit() == row.limit &&
                    window.drawing_scaling() == (row.limit == 0 ? 1.0 : 1 / row.limit));
            QCOMPARE(window.drawing_source_scaling(), window.drawing_scaling());
            if (row.limit == 250) { // its face has a normal, and so is lit
                window.get_drawing_object(2)->rendering(GLObject::SOLID);
                window.drawing_scaling(0.5);
                window.show();
                QVERIFY(QTest::qWaitForWindowExposed(&window));
                window.updateGL();
                QVERIFY(frame(window).pixelColor(260, 190).lightness() > 250);
                QVERIFY(window.drawing_min_point() == DRVect3d(-250, 0, 0.5) &&
                        window.drawing_max_point() == DRVect3d(4, 5, 7));
            }
            QCOMPARE(window.quantity_of_drawing_objects(), row.points + row.lines + row.faces);
            for (unsigned long i = 0; i < window.quantity_of_drawing_objects(); ++i)
                QCOMPARE(window.get_drawing_object(i)->local_id(), 1024 + i);
        }
    }

    void warns()
    {
        const QString unread = "Warning |<br />Error reading of &#8220;%1&#8221; file.<br /><hr />";
        const QString empty =
            "Warning |<br />The known entities were not found in the &#8220;%1&#8221; file.<br /><hr />";
        const QString missing = folder().filePath("a <b> & \n c.dxf");
        const std::pair<QString, QString> rows[] = {{missing, unread.arg(missing)},
            {write_file("<IMG src=f>.dxf", ""), empty.arg("&lt;IMG src=f>.dxf")},
            {folder().path(), unread.arg(folder().path())}, {write_file("empty.dxf", ""), empty.arg("empty.dxf")},
            {write_file("text.dxf", dxf({"TEXT 1.0"})), empty.arg("text.dxf")}};
        for (const auto& [path, text] : rows) {
            const bool readable = path.endsWith(".dxf") && path != missing;
            const BoxReader reader;
            MyGlMDIChild window(nullptr);
            QApplication::setOverrideCursor(Qt::WaitCursor);
            QCOMPARE(window.loadFile(path), readable);
            QCOMPARE(reader.boxes, QStringList(text));
            QCOMPARE(window.windowTitle(), readable ? QFileInfo(path).fileName() : QString());
            QVERIFY(
                window.drawing_scaling() == 1 && window.drawing_source_scaling() == 1 && window.drawing_limit() == 1);
        }
    }
};

TOLMERA_TEST(TestDrawingWindow)
#include "drawing_window.moc"
