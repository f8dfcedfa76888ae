// The preview program as file managers run it: what its pictures show, what it refuses, and what it leaves behind.

#include "helper.h"

#include <sys/stat.h>

namespace
{

/// Runs a command of the shell in the temporary folder, with the program as $T. Notes its exit code, -1 after a signal,
/// and what it tells.
void run(const QString& command)
{
    QProcess process;
    process.setWorkingDirectory(folder().path());
    process.start("bash", {"-c", "umask 022; T=" THUMBNAILER "; " + command});
    process.waitForFinished();
    note(process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
         process.readAllStandardError().trimmed());
}

QByteArray content(const QString& name)
{
    QFile file(QDir(folder().path()).filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write_drawing(const char* name, int times = 1)
{
    const QString entities = (section(name) + '\n').repeated(times).chopped(1);
    write_file(QString(name) + ".dxf", dxf(entities.toLatin1().split('\n')));
}

QByteArray files()
{
    QStringList told;
    for (const QFileInfo& file : QDir(folder().path()).entryInfoList(QDir::AllEntries | QDir::System))
        told += file.fileName() + file.symLinkTarget() + QString::number(file.size());
    return told.join(' ').toUtf8() + content("old.png");
}

/// Runs a command that is refused.
void refuse(const QString& command)
{
    const QByteArray before = files();
    QElapsedTimer timer;
    timer.start();
    run(command);
    note(timer.elapsed() < 9000 ? "in time," : "too late,", files() == before ? "all is as it was" : files());
}

} // namespace

class TestPreview : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QVERIFY(QDir(folder().path()).removeRecursively() && QDir().mkpath(folder().path()));
        write_drawing("box");
        write_file("old.png", "old");
    }

    void pictures_show_the_drawing()
    {
        play([&](const QString& step) { // a drawing, the size, and places as parts of the picture
            const QStringList words = step.split(' ');
            write_file("a.dxf", dxf(section(words[0]).toLatin1().split('\n')));
            run("exec $T -s " + words[1] + " a.dxf old.png");
            const QImage image(folder().filePath("old.png"));
            QRect extents;
            for (int i = 0; i < image.width() * image.height(); ++i) // the background's shade is 80
                if (const QPoint pos(i % image.width(), i / image.width()); qGray(image.pixel(pos)) > 87)
                    extents |= QRect(pos, QSize(1, 1));
            note(image.size(), extents);
            for (const QString& place : words.mid(2))
                note("shade", qGray(image.pixel(int(place.section(',', 0, 0).toDouble() * image.width()),
                                                int(place.section(',', 1).toDouble() * image.width()))));
        });
    }

    void refusals_tell_why_and_leave_all_as_it_was()
    {
        write_drawing("infinite_box");
        write_drawing("edge_on");
        write_drawing("large_face", 2000);
        write_file("empty.dxf", dxf({}));
        QVERIFY(QFile::resize(write_file("large.dxf", ""), (256 << 20) + 1));
        write_file("folder/file", "");
        QVERIFY(QFile::link("old.png", folder().filePath("link")));
        QCOMPARE(::mkfifo(QFile::encodeName(folder().filePath("pipe")), 0600), 0);
        play(refuse);
    }

    /// The thumbnail service of Xfce makes the file and reads from what it opened before.
    void pictures_are_written_in_place()
    {
        QFile old(write_file("old.png", QByteArray(100000, 'x')));
        QVERIFY(old.setPermissions(QFile::ReadOwner | QFile::WriteOwner) && old.open(QIODevice::ReadOnly));
        const auto permissions = old.permissions();
        seen().clear();
        run("exec env --block-signal $T -s 64 box.dxf old.png");
        run("exec $T -s 64 box.dxf new.png");
        QCOMPARE(seen(), QStringList({"0", "0"}));
        QCOMPARE(old.readAll(), content("new.png"));
        QCOMPARE(QFile::permissions(old.fileName()), permissions);
    }

    void the_process_that_draws_ends_with_the_program()
    {
        write_drawing("large_face", 2000);
        QProcess process;
        process.start(THUMBNAILER, {"-s", "1024", folder().filePath("large_face.dxf"), folder().filePath("new.png")});
        QVERIFY(process.waitForStarted());
        const QString children = QString("/proc/%1/task/%1/children").arg(process.processId());
        QTRY_VERIFY(!content(children).isEmpty());
        const QString child = "/proc/" + content(children).trimmed();
#ifndef __SANITIZE_ADDRESS__
        QTRY_VERIFY(content(child + "/limits").contains(QByteArray::number(1280 << 20)));
#endif
        process.kill();
        QTRY_VERIFY(content(child + "/cmdline").isEmpty());
    }

    void memory_is_bounded()
    {
#ifdef __SANITIZE_ADDRESS__
        QSKIP("the sanitizer takes terabytes of addresses");
#endif
        play(refuse);
    }
};

QTEST_GUILESS_MAIN(TestPreview)
#include "preview.moc"
