// The texts of the four information boxes.

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
        const QString tr = "<tr><td>%1</td><td>&nbsp;:&nbsp;</td><td>%2</td></tr>", any = tr.arg("*", "*"),
                      link = "<a *</a>";
        // Slot, title and text, where a star stands for what is left open; without a drawing one has no box.
        const std::tuple<const char*, QString, QString> rows[] = {
            {"about", "About T <i>1",
                "<br /><b>T <i>1</b> v.2.1.<br /><br />Copyright*<table>" + any +
                    tr.arg("*", "<a href=\"mailto:*@*.example\">*@*.example</a>") + any + any +
                    "</table><br /><br />Application &#8220;T <i>1&#8221; (*) makes processing and viewing of the main "
                    "entities of 3D "
                    "graphical data, stored at DXF-files.<br /><br />Home page : <a "
                    "*://*.example\">*://*.example</a><br /><br /><hr />"},
            {"ireferences", "T <i>1 : References",
                "<br />Application &#8220;T <i>1&#8221; is built with using of the following external software:<br "
                "/><br />- Qt v." +
                    QString(qVersion()) +
                    " ( is available under the Lesser General Public License, LGPL ), Copyright *" + link +
                    ";<br /><br />- OpenGL ( is a registered trademark of SGI, " + link + " ), v.9 X, " + link +
                    ";<br /><br />- Icon set ( freeware ), Copyright *" + link + ".<br /><hr />"},
            {"about_dxf", "T <i>1 : About DXF",
                "<br /><b>Drawing eXchange Format</b> (DXF)*<i>Autodesk</i> (" + link +
                    ")*AutoCAD&#174;*<i>Adobe Illustrator</i>*<i>Corel Draw</i>*<i>Caddie</i>*<i>Solidworks</i> "
                    "etc.<br /><br />The "
                    "DXF&#8482; format is a tagged*<br /><br /><i>Tagged data</i>*<i>group code</i>.<br /><br />*<br "
                    "/><br />*<br /><hr />"},
            {"aboutdrw", "", ""},
            {"aboutdrw", "T <i>1 : Information about Model",
                "&nbsp;<table>" + tr.arg("File name", "b.dxf") +
                    tr.arg("Place", QFileInfo(folder().path()).canonicalFilePath()) + tr.arg("Size", "143 bytes") +
                    "</table><br /><table>" + tr.arg("Minimal point ( x, y, z )", "-2.25, 0.5, 0") +
                    tr.arg("Maximal point ( x, y, z )", "1.23457e+06, 100, 3e-07") + "</table><br /><table>" +
                    tr.arg("3D Points", "2") + tr.arg("3D Lines", "0") + tr.arg("3D Faces", "0") +
                    "</table><br /><hr />"},
        };
        for (const auto& [slot, title, text] : rows) {
            const BoxReader reader;
            window.setWindowTitle("T <i>1");
            QVERIFY(QMetaObject::invokeMethod(&window, slot));
            QCOMPARE(reader.boxes.size(), text.isEmpty() ? 0 : 1);
            const QString pattern = QRegularExpression::escape(title + "|" + text).replace("\\*", ".*");
            const QString box = reader.boxes.join("");
            QVERIFY2(text.isEmpty() || QRegularExpression("^" + pattern + "$").match(box).hasMatch(), qPrintable(box));
            if (text.isEmpty()) {
                QVERIFY(window.open_dxf(write_file("a.dxf", dxf({"LINE 1.0 2.0 3.0 4.0 5.0 6.0"}))));
                QVERIFY(
                    window.open_dxf(write_file("b.dxf", dxf({"POINT -2.25 0.5 3e-7", "POINT 1234567.0 100.0 0.0"}))));
            }
        }
    }
};

TOLMERA_TEST(TestBoxes)
#include "boxes.moc"
