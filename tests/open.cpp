// tolmera-open: which drawings it has exploded, what it tells meanwhile, and that nothing of it stays. Runs with a
// viewer that writes down what it gets.

#include "helper.h"

#include "Opening.h"

#include <cstdlib>

namespace
{

/// A drawing of words, each a group code and its value in turn.
QByteArray drawing(const QByteArray& tables, const QByteArray& entities)
{
    QByteArray text;
    const QByteArrayList words =
        ("0 SECTION 2 TABLES " + tables + " 0 ENDSEC 0 SECTION 2 ENTITIES " + entities + " 0 ENDSEC 0 EOF").split(' ');
    for (const QByteArray& word : words)
        if (!word.isEmpty())
            text += word + '\n';
    return text;
}

QString content(const QString& name)
{
    QFile file(folder().filePath(name));
    return file.open(QIODevice::ReadOnly) ? QString(file.readAll()).trimmed() : "";
}

void write_program(const QString& name, const QByteArray& lines)
{
    QFile::setPermissions(write_file(name, "#!/bin/sh\n" + lines),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

/// Runs a command of the shell in the temporary folder; returns what it writes, and what is left in TMPDIR.
QString run(const QString& command)
{
    std::system(
        qPrintable("cd " + folder().path() + " && export TMPDIR=$PWD/tmp && { " + command + "; } >out; ls tmp >>out"));
    return content("out");
}

/// Looks at the windows while the program waits for events: notes their texts, cancels and closes them.
void watch()
{
    auto* const timer = new QTimer(qApp);
    timer->callOnTimeout([] {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            auto* const box = qobject_cast<QMessageBox*>(window);
            if (auto* dialog = qobject_cast<QProgressDialog*>(window); dialog != nullptr && dialog->value() > 0) {
                note(dialog->isVisible() ? dialog->labelText() : "hidden", dialog->value());
                dialog->findChild<QPushButton*>()->click();
            } else if (box != nullptr && box->isVisible()) {
                note(box->textFormat() == Qt::PlainText && !box->isModal() ? box->text() : "rich or modal");
                box->close();
            }
        }
    });
    timer->start(300);
}
Q_COREAPP_STARTUP_FUNCTION(watch)

} // namespace

class TestOpen : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QVERIFY(QDir(folder().path()).removeRecursively() && QDir().mkpath(folder().path() + "/tmp"));
        QVERIFY(QFile::setPermissions(folder().path(), QFile::Permissions(0x7755)));
        write_program(
            "bin/tolmera",
            "[ $# = 0 ] && echo no file || echo ${1##*/} $(stat -c %a \"${1%/*}\" && LC_ALL=C stat -c %F \"$1\")");
        qputenv("PATH", QFile::encodeName(folder().path()) + "/bin:" + EXPLODE + ":/usr/bin:/bin");
    }

    void has_exploded_what_the_viewer_shows_wrongly_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("shown");
        const QByteArray line = " 0 LINE 8 A 10 -9.5 20 -9.5 11 9.5 21 9.5 ";
        const QByteArray point = " 10 1.5 20 1.5 30 1.5" + line;
        const QByteArray face = " 10 0.0 20 0.0 30 1.5 11 9.5 21 0.0 31 1.5 12 9.5 22 9.5 32 1.5 13 0.0 23 9.5 33 1.5 ";
        const auto row = [](const char* name, const QByteArray& file, const char* shown = "a.dxf 700 regular file") {
            QTest::newRow(name) << file << shown;
        };
        const char* const itself = "a.dxf 755 regular file";
        row("lines", drawing("", line + line), itself);
        row("line ends of DOS", drawing("", line).replace("\n", "\r\n"), itself);
        row("handle, owner, colour, flags",
            drawing("", "0 3DFACE 5 20 330 1F 100 AcDbEntity 8 0 62 7 100 AcDbFace" + face + "70 0" + line), itself);
        row("handle of the last coordinate",
            drawing("", "0 LINE 5 31 10 1.5 20 1.5 30 1.5 11 2.5 21 2.5 31 2.5" + line));
        row("bare 0", drawing("", "0 POINT 8 A 10 0 20 1.5 30 1.5" + line));
        row("bare 0 at the end", drawing("", line + "31 0"), itself);
        row("bare 5 at the end", drawing("", line + "62 5" + line));
        row("three corners", drawing("", "0 3DFACE 8 A" + face.left(face.indexOf(" 13 ")) + line));
        row("thickness", drawing("", "0 POINT 39 2.5" + point));
        row("no thickness", drawing("", "0 POINT 39 0.0" + point), itself);
        row("invisible", drawing("", "0 POINT 60 1" + point));
        row("paper space", drawing("", "0 POINT 67 1" + point));
        row("other entity", drawing("", "0 CIRCLE 40 2.5" + point));
        row("last entity", drawing("", line + "0 CIRCLE 10 1.5 20 1.5 40 2.5"));
        row("layer off", drawing("0 LAYER 2 B 70 0 62 -7", "0 POINT 8 B" + point));
        row("layer frozen", drawing("0 LAYER 2 b 70 65 62 7", "0 POINT 8 B" + point));
        row("other layer off", drawing("0 LAYER 2 B 70 4 62 7 0 LAYER 2 C 70 1 62 -7", line), itself);
        row("layer ENTITIES", drawing("0 LAYER 2 ENTITIES 70 0 62 7", line));
        row("cut off", drawing("", line + line).chopped(30));
        row("large and cut off", drawing("", line.repeated(5000)).chopped(30));
        row("circle behind the middle", drawing("", line.repeated(5000) + "0 CIRCLE 40 2.5" + point));
        const char* const fitted = "a (fitted).dxf 700 regular file";
        row("large enough", drawing("", "0 LINE 10 -1.0 20 -1.0 11 0.5 21 0.5"), itself);
        row("too small", drawing("", "0 LINE 10 -0.99 20 -0.99 11 0.5 21 0.5"), fitted);
        row("not too large", drawing("", "0 LINE 10 -999999.5 20 -999999.5 11 0.5 21 0.5"), itself);
        row("too large", drawing("", "0 LINE 10 -1000001.5 20 -1000001.5 11 0.5 21 0.5"), fitted);
        row("near enough", drawing("", "0 LINE 10 5.1 20 9.9 11 10.2 21 9.9"), itself);
        row("too far", drawing("", "0 LINE 10 5.2 20 9.9 11 10.2 21 9.9"), fitted);
        row("too high", drawing("", "0 LINE 10 0.0 20 0.0 30 99.5 11 9.5 21 9.5 31 99.5"), fitted);
        row("at the origin", drawing("", "0 POINT 10 0.0 20 0.0 30 0.0"), itself);
    }
    void has_exploded_what_the_viewer_shows_wrongly()
    {
        QFETCH(QByteArray, file);
        write_file("a.dxf", file);
        QFETCH(QString, shown);
        QCOMPARE(run(OPEN " $PWD/a.dxf"), shown);
    }

    void takes_any_name_data()
    {
        QTest::addColumn<QString>("shown");
        QTest::newRow("") << "no file";
        QTest::newRow("./HOUSE.DXF") << "HOUSE.dxf 700 symbolic link";
        QTest::newRow("-x.dxf") << "-x.dxf 755 regular file";
        QTest::newRow("$(printf 'b\\344r.dxf')") << "b\xEF\xBF\xBDr.dxf 700 symbolic link";
        QTest::newRow("folder") << "folder.dxf 700 symbolic link";
    }
    void takes_any_name()
    {
        const QByteArray name = QTest::currentDataTag();
        QFETCH(QString, shown);
        write_file("box", drawing("", "0 LINE 10 -9.5 20 -9.5 11 9.5 21 9.5"));
        QCOMPARE(run((name.isEmpty()     ? ""
                      : name == "folder" ? "mkdir folder; "
                                         : "cp box ./" + name + "; ") +
                     OPEN " " + name + "; rm -f b?r.dxf"),
                 shown);
    }

    void tells_what_happens_data()
    {
        QTest::addColumn<QByteArray>("exploder"); // the script; its last argument is the file to write
        QTest::addColumn<QString>("told");
        QTest::newRow("progress") << QByteArray("sleep 2; echo progress: 37 >&2; exec sleep 60")
                                  << "Opening a.dxf 37|exit code 0";
        QTest::newRow("left out") << QByteArray("echo tolmera-explode: left out: 2 IMAGE >&2; cp $3 $4")
                                  << "a.dxf\\n\\nPoints, lines and faces cannot show: 2 IMAGE|exit code 7";
        QTest::newRow("failed") << QByteArray(
                                       "echo tolmera-explode: x >&2; echo 'tolmera-explode: <b>Why.' >&2; exit 1")
                                << "a.dxf\\n\\nIt could not be converted, so that much of it may be missing. "
                                   "<b>Why.|exit code 7";
        QTest::newRow("missing") << QByteArray()
                                 << "a.dxf\\n\\nIt could not be converted, so that much of it may be missing. "
                                    "tolmera-explode is not installed.|exit code 7";
    }
    void tells_what_happens()
    {
        QFETCH(QByteArray, exploder);
        QFETCH(QString, told);
        if (!exploder.isEmpty())
            write_program("bin/tolmera-explode", exploder);
        write_program("bin/tolmera", "sleep 3; exit 7");
        qputenv("PATH", QFile::encodeName(folder().path()) + "/bin:/usr/bin:/bin");
        seen().clear();
        QByteArray program = "open";
        char* argv[] = {program.data(), nullptr};
        const std::string file = write_file("a.dxf", "x").toStdString();
        note("exit code", show(1, argv, file, folder().path().toStdString() + "/tmp", Look::Wrong));
        QCOMPARE(seen().join('|'), told);
    }

    void leaves_nothing_behind_data()
    {
        QTest::addColumn<QString>("how"); // the shell ends it, whose process is $!, or the viewer
        QTest::newRow("terminated") << "kill -TERM $!";
        QTest::newRow("interrupted") << "kill -INT $!";
        QTest::newRow("logged out") << "kill -HUP $!";
        QTest::newRow("viewer crashed") << "kill -SEGV $(cat viewer)";
    }
    void leaves_nothing_behind()
    {
        write_file("HOUSE.DXF", drawing("", "0 LINE 10 -9.5 20 -9.5 11 9.5 21 9.5"));
        write_program("bin/tolmera", "echo $$ >viewer; exec sleep 60");
        QFETCH(QString, how);
        QCOMPARE(run(OPEN " HOUSE.DXF & until [ -s viewer ]; do sleep 0.1; done; " + how +
                     "; wait $!; echo $?; tr '\\0' ' ' 2>&- </proc/$(cat viewer)/cmdline"),
                 "1"); // and the viewer has ended
    }
};

QTEST_APPLESS_MAIN(TestOpen)
#include "open.moc"
