// tolmera-open: which drawings it has converted, what it tells, and that nothing of it stays. The viewer is a script,
// which writes the name that it gets, the rights of its folder, and whether it is a file.

#include "helper.h"

#include "Opening.h"

#include <cstdlib>

namespace
{

/// A drawing of layers and entities, given as group codes and values in turn.
QByteArray drawing(const QByteArray& layers, const QByteArray& entities)
{
    const QByteArray words =
        "0 SECTION 2 TABLES " + layers + " 0 ENDSEC 0 SECTION 2 ENTITIES " + entities + " 0 ENDSEC 0 EOF\n";
    return words.simplified().replace(' ', '\n') + '\n';
}

void write_program(const QString& name, const QByteArray& lines)
{
    QFile::setPermissions(write_file("bin/" + name, "#!/bin/sh\n" + lines), QFile::ReadOwner | QFile::ExeOwner);
}

/// Runs a command of the shell in the temporary folder; returns what it writes, and what is left in TMPDIR.
QString run(const QString& command)
{
    (void)!std::system(
        qPrintable("cd " + folder().path() + "; export TMPDIR=$PWD/tmp; { " + command + "; } >out; ls tmp >>out"));
    QFile out(folder().filePath("out"));
    return out.open(QIODevice::ReadOnly) ? QString(out.readAll()).trimmed() : "";
}

/// Notes what the windows tell, cancels the first progress and closes the messages.
void watch()
{
    auto* const timer = new QTimer(qApp);
    timer->callOnTimeout([] {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            auto* const box = qobject_cast<QMessageBox*>(window);
            auto* const dialog = qobject_cast<QProgressDialog*>(window);
            if (dialog != nullptr && dialog->isVisible() && dialog->value() > 0) {
                note("told", dialog->labelText(), dialog->value());
                dialog->findChild<QPushButton*>()->click();
            } else if (box != nullptr && box->isVisible()) {
                note("told", box->isModal() ? "modal" : box->text());
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
        write_program("tolmera", "[ $# = 0 ] || echo ${1##*/} $(stat -c '%a' \"${1%/*}\"; LC_ALL=C stat -c %F \"$1\")");
        qputenv("PATH", QFile::encodeName(folder().path()) + "/bin:" EXPLODE ":/usr/bin:/bin");
    }

    void converts_what_the_viewer_shows_wrongly_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("shown");
        const QByteArray line = " 0 LINE 8 A 10 -9.5 20 -9.5 11 9.5 21 9.5 ";
        const QByteArray many = line.repeated(5000);
        const QByteArray point = " 10 1.5 20 1.5 30 1.5" + line;
        const QByteArray face = " 10 0.0 20 0.0 30 1.5 11 9.5 21 0.0 31 1.5 12 9.5 22 9.5 32 1.5";
        const char* shown = "a.dxf 755 regular file"; // the file itself
        const auto row = [&](const char* name, const QByteArray& entities, const QByteArray& layers = "") {
            QTest::newRow(name) << drawing(layers, entities) << shown;
        };
        const auto row_of_line = [&](const char* name, const QByteArray& from, const QByteArray& to) {
            row(name, "0 LINE 10 " + from + " 20 " + from + " 11 " + to + " 21 " + to);
        };
        row("lines", line + line);
        row("with other properties",
            "0 3DFACE 5 20 330 1F 8 0 62 7 39 0.0" + face + " 13 0.0 23 9.5 33 1.5 70 0" + line);
        row("another layer off", line, "0 LAYER 2 B 70 4 62 7 0 LAYER 2 C 70 1 62 -7");
        row_of_line("large enough", "-1.0", "0.5");
        row_of_line("not too large", "-999999.5", "0.5");
        row_of_line("near enough", "5.1", "10.2");
        QTest::newRow("line ends of DOS") << drawing("", line).replace("\n", "\r\n") << shown;
        shown = "a (fitted).dxf 700 regular file";
        row_of_line("too small", "-0.99", "0.5");
        row_of_line("too large", "-1000001.5", "0.5");
        row_of_line("too far", "5.2", "10.2");
        row("one of many too far", many + "0 POINT 10 1.5 20 99999.5 30 -1000001.5" + line);
        shown = "a.dxf 700 regular file";
        row("bare 0", "0 POINT 8 A 10 0 20 1.5 30 1.5" + line);
        row("three corners", "0 3DFACE 8 A" + face + line);
        row("thickness", "0 POINT 39 2.5" + point);
        row("invisible", "0 POINT 60 1" + point);
        row("paper space", "0 POINT 67 1" + point);
        row("other entity", "0 CIRCLE 40 2.5" + point);
        row("other entity behind the middle", many + "0 CIRCLE 40 2.5" + point);
        row("layer off", "0 POINT 8 B" + point, "0 LAYER 2 B 70 0 62 -7");
        row("layer frozen", "0 POINT 8 B" + point, "0 LAYER 2 b 70 65 62 7");
        QTest::newRow("cut off") << drawing("", many).chopped(30) << shown;
    }
    void converts_what_the_viewer_shows_wrongly()
    {
        QFETCH(QByteArray, file);
        write_file("a.dxf", file);
        QTEST(run(OPEN " $PWD/a.dxf"), "shown");
    }

    void takes_any_name()
    {
        write_file("box", drawing("", "0 LINE 10 -9.5 20 -9.5 11 9.5 21 9.5"));
        QCOMPARE(run(OPEN), "");
        QCOMPARE(run("cp box HOUSE.DXF; " OPEN " HOUSE.DXF"), "HOUSE.dxf 700 symbolic link");
        QCOMPARE(run("cp box ./-x.dxf; " OPEN " -x.dxf"), "-x.dxf 755 regular file");
        QCOMPARE(run("f=$(printf 'b\\344r.dxf'); cp box $f; " OPEN " $f; rm $f"),
                 "b\xEF\xBF\xBDr.dxf 700 symbolic link");
    }

    void tells_what_happens_data()
    {
        QTest::addColumn<QByteArray>("exploder"); // the script; its last argument is the file to write
        QTest::addColumn<QString>("told");
        const auto row = [](const QByteArray& exploder, const char* told) { QTest::newRow(told) << exploder << told; };
        row("sleep 2; echo progress: 37 >&2; exec sleep 60", "Opening a.dxf 37, then exit code 0");
        const QByteArray say = "say() { echo tolmera-explode: \"$1\" >&2; }; say 'left out: 2 IMAGE'; ";
        row(say + "cp $3 $4", "a.dxf\\n\\nPoints, lines and faces cannot show: 2 IMAGE, then exit code 7");
        row(say + "say '<b>Why.'; exit 1",
            "a.dxf\\n\\nIt could not be converted, so much of it may be missing. <b>Why., then exit code 7");
        row("echo tolmera-explode: a.dxf holds nothing to show. >&2; exit 1", "exit code 7");
        row("echo tolmera-explode: a.dxf holds nothing to show. Hidden entities \\(see --all\\): 5. >&2; exit 1",
            "a.dxf\\n\\na.dxf holds nothing to show. Hidden entities: 5., then exit code 7");
        row("",
            "a.dxf\\n\\nIt could not be converted, so much of it may be missing. tolmera-explode is not installed., "
            "then exit code 7");
    }
    void tells_what_happens()
    {
        QFETCH(QByteArray, exploder);
        if (!exploder.isEmpty())
            write_program("tolmera-explode", exploder);
        write_program("tolmera", "sleep 2; exit 7");
        qputenv("PATH", QFile::encodeName(folder().path()) + "/bin:/usr/bin:/bin");
        events().clear();
        QByteArray program = "open";
        char* argv[] = {program.data(), nullptr};
        const std::string file = write_file("a.dxf", "x").toStdString();
        note("told", "exit code", show(1, argv, file, folder().path().toStdString() + "/tmp", Look::Wrong));
        QTEST(events()["told"], "told");
    }

    void leaves_nothing_behind()
    {
        write_file("HOUSE.DXF", drawing("", "0 LINE 10 -9.5 20 -9.5 11 9.5 21 9.5"));
        write_program("tolmera", "echo $$ >viewer; exec sleep 60");
        for (const char* ended : {"kill -TERM $!", "kill -HUP $!", "kill -SEGV $(cat viewer)"})
            QCOMPARE(run(OPEN " HOUSE.DXF & until [ -s viewer ]; do sleep 0.1; done; " + QString(ended) +
                         "; wait $!; echo $?; tr '\\0' ' ' 2>&- </proc/$(cat viewer)/cmdline; rm viewer"),
                     "1"); // and the viewer has ended
    }
};

QTEST_APPLESS_MAIN(TestOpen)
#include "open.moc"
