// The preview program as file managers run it: what its pictures show, what it refuses, and what it leaves behind.

#include "helper.h"

#include <sys/stat.h>

namespace
{

/// A cube. A face has the numbers of its corners, with x in bit 0, y in bit 1 and z in bit 2.
QStringList box(double low, double high)
{
    QStringList entities;
    for (const char* face : {"0132", "2376", "1375", "4576", "0154", "0264"}) {
        entities += "3DFACE";
        for (const char corner : QByteArray(face))
            for (int bit = 1; bit < 8; bit *= 2)
                entities.last() += ' ' + QString::number((corner & bit) != 0 ? high : low, 'e', 9);
    }
    return entities;
}

QString files()
{
    QString told;
    for (const QFileInfo& file :
         QDir(folder().path()).entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot))
        told += file.fileName() + file.symLinkTarget() + QString::number(file.size()) + ' ';
    return told;
}

/// Runs a command of the shell in the temporary folder, with the program as $T. Returns its exit code and what it says.
QString run(const QString& command)
{
    QProcess process;
    process.setWorkingDirectory(folder().path());
    process.start("bash", {"-c", "umask 022; T='timeout 60 " THUMBNAILER "'; " + command});
    process.waitForFinished(-1);
    const QString code = QString::number(process.exitCode());
    return (code + ' ' + QString(process.readAllStandardError()).split('\n').filter("thumbnailer").join(' ')).trimmed();
}

} // namespace

class TestPreview : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QVERIFY(QDir(folder().path()).removeRecursively() && QDir().mkpath(folder().path()));
        write_file("box.dxf", dxf(box(0, 1)));
        write_file("old.png", "old");
    }

    void pictures_show_the_drawing_data()
    {
        QTest::addColumn<QByteArray>("drawing");
        QTest::addColumn<QString>("expected"); // where it is not background, then the shades at some places
        const auto row = [](const char* name, const QByteArray& drawing, const char* expected) {
            QTest::newRow(name) << drawing << expected;
        };
        const char* const whole = "100x114 at 14,7 204 192 138 138";
        row("box", dxf(box(0, 1)), whole);
        row("far off", dxf(box(1e6, 1e6 + 4)), whole);
        row("what cannot be exploded", "7\n" + dxf(box(0, 1)), whole);
        row("line before a box", dxf(box(0, 1) += "LINE 0.5 0.2 -0.1 0.5 0.8 -0.1"), "100x114 at 14,7 224 192 138 138");
        row("line", dxf({"LINE 0.0 0.0 0.0 1.0 0.0 0.0"}), "116x68 at 6,30 80 80 80 245");
        row("lone point", dxf({"POINT 5e8 5e8 7.0"}), "16x16 at 56,56 80 80 80 245");
        row("points at the edges", dxf({"POINT 0.0 0.0 0.0", "POINT 0.0 2.0 0.0"}), "12x126 at 58,1 80 80 80 80");
        row("circle", dxf({"CIRCLE 0.0 0.0 0.0"}).replace(" 30\n", " 40\n5.0\n 30\n"), "90x116 at 19,6 80 80 80 80");
    }
    void pictures_show_the_drawing()
    {
        QFETCH(QByteArray, drawing);
        write_file("a.dxf", drawing);
        QCOMPARE(run("$T -s 128 a.dxf old.png"), "0");
        const QImage image(folder().filePath("old.png"));
        QRect drawn; // the shade of the background is 80
        for (int i = 0; i < 128 * 128; ++i)
            if (qGray(image.pixel(i % 128, i / 128)) > 87)
                drawn |= QRect(i % 128, i / 128, 1, 1);
        QString seen = QString("%1x%2 at %3,%4").arg(drawn.width()).arg(drawn.height()).arg(drawn.x()).arg(drawn.y());
        for (const QPoint& place : {QPoint(33, 79), {69, 49}, {98, 89}, {64, 64}}) // front, top, side, middle
            seen += QString(" %1").arg(qGray(image.pixel(place)));
        QTEST(seen, "expected");
    }

    void refusals_tell_why_and_leave_all_as_it_was()
    {
        write_file("infinite.dxf", dxf(box(0, qInf())));
        write_file("edge_on.dxf", dxf({"3DFACE 0.0 0.0 0.0 0.0 0.0 1.0 -1.0 -1.0 2.0 -1.0 -1.0 1.0"}));
        write_file("slow.dxf", dxf(QStringList(5000, "3DFACE -1.0 -1.0 -1.0 1.0 -1.0 1.0 1.0 1.0 1.0 -1.0 1.0 -1.0")));
        write_file("empty.dxf", dxf({}));
        QVERIFY(QFile::resize(write_file("large.dxf", ""), (256 << 20) + 1));
        QVERIFY(QFile::link("old.png", folder().filePath("link")));
        QCOMPARE(::mkfifo(QFile::encodeName(folder().filePath("pipe")), 0600), 0);
        const QString before = files();
        const auto refuses = [&](const char* arguments, const char* reason) {
            QCOMPARE(run(QString("$T -s ") + arguments), QString("1 tolmera-thumbnailer: ") + reason);
            QCOMPARE(files(), before);
        };
        for (const char* arguments : {"9 box.dxf", "0 box.dxf old.png", "1025 box.dxf old.png", "9px box.dxf old.png"})
            refuses(arguments, "usage: tolmera-thumbnailer -s SIZE INPUT OUTPUT, SIZE from 1 to 1024 pixels");
        refuses("9 missing.dxf old.png", "the file cannot be read");
        refuses("9 empty.dxf old.png", "the file holds no points, lines or faces");
        refuses("9 large.dxf old.png", "the file is too large: it holds more than 256 MiB");
        refuses("9 infinite.dxf old.png", "the drawing has no finite extents");
        refuses("9 edge_on.dxf old.png", "nothing of the drawing can be seen");
        refuses("9 box.dxf missing/new.png", "the picture cannot be written: No such file or directory");
        refuses("9 box.dxf box.dxf", "the picture cannot be written: it is the drawing");
        for (const char* arguments : {"9 box.dxf link", "9 box.dxf pipe"})
            refuses(arguments, "the picture cannot be written: it is not a regular file");
        refuses("1024 slow.dxf old.png", "the drawing is too large: it cannot be drawn within 8 seconds");
    }

    /// The thumbnail service of Xfce makes the file and reads from what it opened before.
    void pictures_are_written_in_place()
    {
        QFile old(write_file("old.png", QByteArray(100000, 'x')));
        QVERIFY(old.setPermissions(QFile::ReadOwner | QFile::WriteOwner) && old.open(QIODevice::ReadOnly));
        const auto permissions = old.permissions();
        QCOMPARE(run("$T -s 64 box.dxf old.png && $T -s 64 box.dxf new.png >&- 2>&- && cmp old.png new.png"), "0");
        QVERIFY(old.readAll().startsWith("\x89PNG"));
        QCOMPARE(QFile::permissions(old.fileName()), permissions);
        run("rm new.png; ulimit -f 0; $T -s 9 box.dxf old.png; $T -s 9 box.dxf new.png");
        QCOMPARE(files(), "box.dxf" + QString::number(dxf(box(0, 1)).size()) + " old.png0 ");
    }

    void memory_is_bounded()
    {
#ifdef __SANITIZE_ADDRESS__
        QSKIP("the sanitizer takes terabytes of addresses");
#endif
        QCOMPARE(run("ulimit -S -d 60000; $T -s 1024 box.dxf old.png"),
                 "1 tolmera-thumbnailer: the drawing is too large: it does not fit into memory");
    }
};

QTEST_GUILESS_MAIN(TestPreview)
#include "preview.moc"
