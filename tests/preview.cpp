// The preview program as file managers run it: what its pictures show, what it refuses, and what it leaves behind.
#include "helper.h"

#include <sys/stat.h>

namespace
{

/// Runs the program in the temporary folder by a command of the shell. Returns its exit code, -1 after a signal, and
/// what it told.
QByteArray run(const QString& arguments, const QString& by = "exec")
{
    QProcess process;
    process.setWorkingDirectory(folder().path());
    process.start("bash", {"-c", "umask 022; " + by + " " THUMBNAILER " " + arguments});
    process.waitForFinished();
    const int code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    return QByteArray::number(code) + ' ' + process.readAllStandardError();
}

QByteArray content(const QString& name)
{
    QFile file(QDir(folder().path()).filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// An entity. Each coordinate has its decimal point, for a bare 0 would end the entity.
QByteArray entity(const QByteArray& type, const std::vector<double>& coordinates)
{
    QByteArray text = type;
    for (const double coordinate : coordinates)
        text += ' ' + QByteArray::number(coordinate, 'e', 16);
    return text;
}

/// A cube from `o` to `e` along each axis: its front, top and right side, then its back, bottom and left side.
QByteArrayList box(double o, double e)
{
    QByteArrayList sides;
    for (const QByteArray corners :
         {"000100110010", "010110111011", "100110111101", "001101111011", "000100101001", "000010011001"}) {
        std::vector<double> coordinates;
        for (const char digit : corners)
            coordinates.push_back(digit == '0' ? o : e);
        sides += entity("3DFACE", coordinates);
    }
    return sides;
}

/// Points along the y axis.
QByteArrayList points(int quantity)
{
    QByteArrayList entities;
    for (int i = 0; i < quantity; ++i)
        entities += entity("POINT", {0, i * 1.0, 0});
    return entities;
}

/// Many faces, each of which fills most of the picture.
QByteArray slow_drawing()
{
    const QByteArray large = entity("3DFACE", {-1, -1, -1, 1, -1, 1, 1, 1, 1, -1, 1, -1});
    return dxf(QVector<QByteArray>(2000, large).toList());
}

struct Spot {
    double x, y; // fractions of the picture's sides, from its left and its top
    int grey;
};
using Spots = std::vector<Spot>;

constexpr int background = 80;

} // namespace
Q_DECLARE_METATYPE(Spots)

class TestPreview : public QObject
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(QDir(folder().path()).removeRecursively() && QDir().mkpath(folder().path())); }

    void pictures_show_the_drawing_data()
    {
        QTest::addColumn<QByteArrayList>("entities");
        QTest::addColumn<int>("size");
        QTest::addColumn<QRect>("extents"); // of what is not background
        QTest::addColumn<Spots>("spots");
        const auto row = [](const char* name, const QByteArrayList& entities, int size, QRect extents,
                            const Spots& spots = {}) { QTest::newRow(name) << entities << size << extents << spots; };

        // The front of a box is to the left, and light; its top is less light; its right side is dark.
        const QByteArrayList sides = box(0, 1);
        const QRect middle(10, 2, 108, 124);
        const Spots shades = {{0.417, 0.788, 204},      {0.167, 0.452, 204},     {0.542, 0.38, 192},
                              {0.458, 0.139, 192},      {0.625, 0.524, 138},     {0.791, 0.716, 138},
                              {0.05, 0.05, background}, {0.95, 0.95, background}};
        row("a box", sides, 128, middle, shades);
        row("a box, its hidden sides first", sides.mid(3) + sides.mid(0, 3), 128, middle, shades);
        row("a box far from the origin", box(1e6, 1e6 + 4), 128, middle, shades);
        row("a box, the front of which has a NaN",
            sides.mid(1) + QByteArrayList{entity("3DFACE", {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, NAN, 0})}, 128, middle,
            {{0.417, 0.788, 192}});
        row("1024 pixels", sides, 1024, {85, 20, 854, 984}, shades);
        row("16 pixels", sides, 16, {1, 0, 14, 16}, {{0.3, 0.62, 204}, {0.5, 0.26, 192}, {0.7, 0.62, 138}});
        row("2 pixels", sides, 2, {0, 0, 2, 2}, {{0, 0.5, 149}, {0.5, 0.5, 112}});
        row("1 pixel", sides, 1, {0, 0, 1, 1});
        row("a triangle", {entity("3DFACE", {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 1, 0})}, 128, {28, 3, 72, 123},
            {{0.472, 0.516, 204}, {0.528, 0.484, background}});
        row("a line along x", {entity("LINE", {0, 0, 0, 1, 0, 0})}, 128, {1, 27, 126, 74}, {{0.26, 0.361, 245}});
        row("a line along y", {entity("LINE", {0, 0, 0, 0, 1, 0})}, 128, {63, 1, 2, 126}, {{0.5, 0.26, 203}});
        row("a line along z", {entity("LINE", {0, 0, 0, 0, 0, 1})}, 128, {1, 27, 126, 74}, {{0.26, 0.639, 245}});
        row("a line before the box", sides + QByteArrayList{entity("LINE", {0.5, 0.2, -0.1, 0.5, 0.8, -0.1})}, 128,
            middle, {{0.25, 0.62, 234}});
        row("a line without length", {entity("LINE", {1, 2, 3, 1, 2, 3})}, 128, {63, 63, 2, 2});
        row("a lone point", {entity("POINT", {5e8, 5e8, 7})}, 128, {56, 56, 16, 16}, {{0.5, 0.5, 245}});
        row("a lone point on 1 pixel", points(1), 1, {0, 0, 1, 1}, {{0, 0, 245}});
        row("four points", points(4), 128, {60, 0, 8, 128}, {{0.5, 0.34, 245}, {0.5, 0.5, background}});
        row("many points", points(101), 128, {63, 1, 2, 126}, {{0.5, 0.5, 203}});
    }

    void pictures_show_the_drawing()
    {
        QFETCH(QByteArrayList, entities);
        QFETCH(int, size);
        write_file("drawing.dxf", dxf(entities));
        QCOMPARE(run(QString("-s %1 drawing.dxf picture.png").arg(size)), "0 ");
        const QImage image(folder().filePath("picture.png"));
        QCOMPARE(image.size(), QSize(size, size));
        QRect extents;
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x)
                if (std::abs(qGray(image.pixel(x, y)) - background) > 7)
                    extents |= QRect(x, y, 1, 1);
        QTEST(extents, "extents");
        QFETCH(Spots, spots);
        for (const Spot& spot : spots)
            QCOMPARE(qGray(image.pixel(int(spot.x * size), int(spot.y * size))), spot.grey);
    }

    void refusals_tell_why_and_leave_all_as_it_was_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<QByteArray>("told");
        QTest::addColumn<QString>("by");
        const auto row = [](const char* name, const char* arguments, const QByteArray& told, const char* by = "exec") {
            QTest::newRow(name) << arguments << told << by;
        };
        for (const char* wrong :
             {"", "-s 9 box.dxf", "-s 9 box.dxf old.png old.png", "-x 9 box.dxf old.png", "-s 0 box.dxf old.png",
              "-s -1 box.dxf old.png", "-s 1025 box.dxf old.png", "-s abc box.dxf old.png", "-s 9px box.dxf old.png"})
            row(*wrong == 0 ? "no arguments" : wrong, wrong,
                "usage: tolmera-thumbnailer -s SIZE INPUT OUTPUT, SIZE from 1 to 1024 pixels");
        row("a missing file", "-s 9 missing.dxf old.png", "the file cannot be read");
        row("a folder", "-s 9 folder old.png", "the file cannot be read");
        row("no entities", "-s 9 empty.dxf old.png", "the file holds no points, lines or faces",
            "exec env --ignore-signal=CHLD");
        row("a large file", "-s 9 large.dxf old.png", "the file is too large: it holds more than 256 MiB");
        row("no finite extents", "-s 9 infinite.dxf old.png", "the drawing has no finite extents");
        row("a face seen from its edge", "-s 9 edge_on.dxf old.png", "nothing of the drawing can be seen");
        const QByteArray too_large = "the drawing is too large: it ";
        row("a long time", "-s 1024 slow.dxf old.png", too_large + "cannot be drawn within 8 seconds");
#ifndef __SANITIZE_ADDRESS__
        row("little memory", "-s 1024 box.dxf old.png", too_large + "does not fit into memory",
            "ulimit -S -d 60000; exec");
#endif
        row("a signal", "-s 1024 slow.dxf old.png", "drawing was ended by a signal: CPU time limit exceeded",
            "ulimit -S -t 1; exec");

        const QByteArray unwritten = "the picture cannot be written: ";
        row("no room", "-s 9 box.dxf old.png", unwritten + "File too large", "ulimit -f 0; exec");
        row("no room for a new file", "-s 9 box.dxf new.png", unwritten + "File too large", "ulimit -f 0; exec");
        row("no such folder", "-s 9 box.dxf missing/new.png", unwritten + "No such file or directory");
        row("the drawing as output", "-s 9 box.dxf box.dxf", unwritten + "it is the drawing");
        for (const char* output :
             {"-s 9 box.dxf folder", "-s 9 box.dxf link", "-s 9 box.dxf no_link", "-s 9 box.dxf pipe"})
            row(output, output, unwritten + "it is not a regular file");
    }

    void refusals_tell_why_and_leave_all_as_it_was()
    {
        write_file("box.dxf", dxf(box(0, 1)));
        write_file("empty.dxf", dxf({}));
        write_file("infinite.dxf", dxf(box(0, INFINITY)));
        write_file("edge_on.dxf", dxf({entity("3DFACE", {0, 0, 0, 0, 0, 1, -1, -1, 2, -1, -1, 1})}));
        write_file("slow.dxf", slow_drawing());
        QVERIFY(QFile::resize(write_file("large.dxf", ""), (256 << 20) + 1));
        write_file("old.png", "old");
        write_file("folder/file", "");
        QVERIFY(QFile::link("old.png", folder().filePath("link")));
        QVERIFY(QFile::link("nothing", folder().filePath("no_link")));
        QCOMPARE(::mkfifo(QFile::encodeName(folder().filePath("pipe")), 0600), 0);
        const auto state = [] {
            QStringList files;
            for (const QFileInfo& file : QDir(folder().path()).entryInfoList(QDir::AllEntries | QDir::System))
                files += file.fileName() + file.symLinkTarget() + QString::number(file.size());
            return files.join(' ').toUtf8() + content("old.png");
        };
        const QByteArray before = state();

        QFETCH(QString, arguments);
        QFETCH(QString, by);
        QFETCH(QByteArray, told);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(run(arguments, by), "1 tolmera-thumbnailer: " + told + "\n");
        QVERIFY2(timer.elapsed() < 9000, "8 seconds, and some for the shell");
        QCOMPARE(state(), before);
    }

    /// The thumbnail service of Xfce makes the file and reads from what it opened before.
    void pictures_are_written_in_place()
    {
        write_file("drawing.dxf", dxf(box(0, 1)));
        QFile old(write_file("old.png", QByteArray(100000, 'x')));
        QVERIFY(old.setPermissions(QFile::ReadOwner | QFile::WriteOwner) && old.open(QIODevice::ReadOnly));
        const auto permissions = old.permissions();
        QCOMPARE(run("-s 64 drawing.dxf old.png", "exec env --block-signal"), "0 ");
        QCOMPARE(run("-s 64 drawing.dxf new.png"), "0 ");
        QCOMPARE(old.readAll(), content("new.png"));
        QCOMPARE(QFile::permissions(old.fileName()), permissions);
        QCOMPARE(QFile::permissions(folder().filePath("new.png")), permissions | QFile::ReadGroup | QFile::ReadOther);
    }

    void the_process_that_draws_is_bounded_and_ends_with_the_program()
    {
        QProcess process;
        process.start(THUMBNAILER,
                      {"-s", "1024", write_file("slow.dxf", slow_drawing()), folder().filePath("new.png")});
        QVERIFY(process.waitForStarted());
        const QString children = QString("/proc/%1/task/%1/children").arg(process.processId());
        QTRY_VERIFY(!content(children).isEmpty());
        const QString child = "/proc/" + content(children).trimmed();
#ifndef __SANITIZE_ADDRESS__
        QTRY_VERIFY(content(child + "/limits").contains(QByteArray::number(1280 << 20)));
#endif
        process.kill();
        QVERIFY(process.waitForFinished());
        QTRY_VERIFY(content(child + "/cmdline").isEmpty());
    }
};
QTEST_GUILESS_MAIN(TestPreview)
#include "preview.moc"
