// The texts of the four information boxes: as boxes.txt has them, where a star stands for what is left open.

#include "helper.h"

#include "GUI/MyMainWindow.h"

class TestBoxes : public QObject
{
    Q_OBJECT

private slots:
    void say()
    {
        class Main : public MyMainWindow
        {
        public:
            Main() { ogl_version = "v.9 X, "; }
        } window;
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        const BoxReader reader;
        QVERIFY(QMetaObject::invokeMethod(&window, "aboutdrw")); // no box without a drawing
        QVERIFY(window.open_dxf(write_file("a.dxf", dxf({"LINE 1.0 2.0 3.0 4.0 5.0 6.0"}))));
        QVERIFY(window.open_dxf(write_file(
            "b.dxf", dxf({"POINT -2.25 0.5 3e-7", "LINE 1234567.0 100.0 0.0 1.0 1.0 0.0",
                         "LINE 1.0 1.0 0.0 2.0 2.0 0.0", "3DFACE 1.0 2.0", "3DFACE 1.0 2.0", "3DFACE 1.0 2.0"}))));
        window.setWindowTitle("T <i>1");
        for (const char* slot : {"about", "ireferences", "about_dxf", "aboutdrw"})
            QVERIFY(QMetaObject::invokeMethod(&window, slot));
        QFile expected(QFINDTESTDATA("boxes.txt"));
        QVERIFY(expected.open(QIODevice::ReadOnly));
        QString pattern = QRegularExpression::escape(QString(expected.readAll()).trimmed()).replace("\\*", ".*");
        pattern.replace("QT", qVersion()).replace("FOLDER", QFileInfo(folder().path()).canonicalFilePath());
        const QString boxes = reader.boxes.join('\n');
        QVERIFY2(QRegularExpression("^" + pattern + "$").match(boxes).hasMatch(), qPrintable(boxes));
        window.setWindowTitle("<img src=f>"); // a maximised drawing puts its name into the title
        for (const char* slot : {"about", "ireferences"}) QVERIFY(QMetaObject::invokeMethod(&window, slot));
        for (const QString& box : reader.boxes.mid(4)) QVERIFY(!box.section('|', 1).contains("<img"));
    }
};

TOLMERA_TEST(TestBoxes)
#include "boxes.moc"
