// What the reader finds in a file: held against the rules in their plainest form; and what entities keep.

#include "helper.h"
#include "long/promises.h"

#include <clocale>
#include <sys/stat.h>

namespace
{

/// A file that is almost a drawing.
QByteArray random_file(QRandomGenerator& random)
{
    const auto any = [&random](const QByteArrayList& words) { return words[random.bounded(words.size())]; };
    static const QByteArrayList types = QByteArray("POINT|LINE|3DFACE|POLYLINE|POINT LINE|TEXT").split('|');
    static const QByteArrayList codes =
        QByteArray("0|  0| 10|10|\t20| 010|100| 50|2 0|  5|  8| 8 5|330|31| 26|0 0|\r10| 2|000|88| 0 5||\xff| 10 20|"
                   "00000000008|0000000000000000010| \t0|5\r5")
            .split('|');
    static const QByteArrayList values =
        QByteArray("0.0|1.5|-12.345678|-7|123456789.012345|1234567890.1234567|.|-|5.|-2e3|1,5|0x1A|inf|-nan(12)|+3|  "
                   "7.25|1e999|-0|5e-324|1.5 2|.5|0|-.5e1x|1e|\t\f1.2|31|A1|"
                   "0.3000000000000000000000000001|9007199254740993|WALLS|ENDSEC|ENTITIES|1.7976931348623159e308")
            .split('|');
    const auto value = [&] {
        const int digits = random.bounded(2, 19);
        return random.bounded(4) != 0 ? any(values)
                                      : QByteArray::number(random.generate64() >> 1)
                                            .left(digits)
                                            .insert(random.bounded(digits), random.bounded(9) != 0 ? "." : "-");
    };
    const QByteArray end = random.bounded(2) != 0 ? "\n" : "\r\n";
    QByteArray file = "0" + end + "SECTION" + end + (random.bounded(20) != 0 ? "  2" : "26") + end + "ENTITIES" + end;
    for (int i = random.bounded(random.bounded(300) != 0 ? 50 : 2000); i > 0; --i) { // some are read in many blocks
        file += "  0" + end + any(types) + end;
        for (int axis = 1; axis < 4 && random.bounded(3) != 0; ++axis)
            for (int point = 0; point < 4; ++point)
                file += " " + QByteArray::number(10 * axis + point) + end + value() + end;
        for (int k = random.bounded(4); k > 0; --k)
            file += any(codes) + end + any(random.bounded(2) != 0 ? values : codes) + end;
    }
    for (int i = random.bounded(4); i > 0; --i)
        file[random.bounded(file.size())] = "0158 \n\rA\0"[random.bounded(9)];
    if (random.bounded(50) == 0) // a line longer than what is read at once
        file.insert(random.bounded(file.size()), QByteArray(200000, "0 x"[random.bounded(3)]));
    return file;
}

} // namespace

class TestReader : public QObject
{
    Q_OBJECT

private slots:
    void agrees_with_the_plain_rules()
    {
        QRandomGenerator random(2718);
        std::size_t quantity = 0;
        for (int file = 0; file < 3000; ++file) {
            const QByteArray bytes = random_file(random);
            const QString path = write_file("random.dxf", bytes);
            OwnedEntities entities;
            QVERIFY(std::setlocale(LC_NUMERIC, file % 2 != 0 ? "C" : "de_DE.UTF-8") != nullptr);
            const DXFL_Processing reader(path.toStdString(), entities.list);
            std::setlocale(LC_NUMERIC, "C");
            check_drawing(reader, entities, bytes.toStdString());
            quantity += entities.list.size();
        }
        QVERIFY2(quantity > 10000, "the files hold too few entities");
    }

    void tells_whether_a_file_was_read()
    {
        QVERIFY(mkfifo(QFile::encodeName(folder() + "/fifo"), 0600) == 0);
        QVERIFY(QFile::link(folder() + "/loop", folder() + "/loop"));
        write_file("empty", "");
        write_file("point", dxf({"POINT"}));
        play([](const QString& path) {
            OwnedEntities entities;
            entities.list.push_back(new DraftEntity(DraftEntity::Line));
            const DXFL_Processing reader(path.toStdString(), entities.list);
            note(reader.get_file_status(), entities.list.size(), entities.list.front()->get_type());
            note(QDir("/proc/self/fd").entryList({"?"}, QDir::AllEntries | QDir::System).size(), "open files");
        });
    }

    void entities_keep_points_of_their_type()
    {
        play([](const QString& step) {
            DraftEntity entity(static_cast<DraftEntity::EntityType>(step.section(' ', 0, 0).toInt()));
            for (unsigned int i = 0; i < 20; i += 3) { // every third of four coordinates, of which the last is no axis
                const auto axis = static_cast<DraftEntity::Coordinate>(i % 4);
                double value = -1, x = -1, y = -1, z = -1;
                DRVect3d point(-1, -1, -1);
                note(entity.set_coordinate(i + 1, axis, i / 4), entity.get_coordinate(value, axis, i / 4),
                     entity.get_coordinates(x, y, z, i / 4), entity.get_point(point, i / 4));
                note(i, value, "|", x, y, z, "|", point);
            }
            entity.compute_normal();
            note(entity.points(), entity.get_normal());
        });
    }

    void vectors()
    {
        play([](const QString& /*step*/) {
            const DRVect3d a(1, 2, 3), b(4, 6, 9);
            DRVect3d c;
            note("=", c = a, "+", a + b, "-", b - a, "^", a ^ b, "+=", c += b, c, "-=", c -= a, c, "length",
                 b.length());
            note("unit", c.normalize({0, -3, 4}), c.normalize({0, 0, 1e-9}), c.normalize({}), c.normalize({NAN, 0, 0}));
            note("normal", c.getNormal({1, 0, 0}, {0, 2, 0}, {0, 0, 3}), c.getNormal(a, a, b), "set", c.x(7), c.y(8),
                 c.z(9), c);
            for (const DRVect3d& other : {DRVect3d(0, 8, 9), DRVect3d(7, 0, 9), DRVect3d(7, 8, 0), DRVect3d(7, 8, 9)})
                note(c == other, c != other);
        });
    }
};

QTEST_GUILESS_MAIN(TestReader)
#include "reader.moc"
