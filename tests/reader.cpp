// What the reader finds in a file, its extents and normals: against examples, and against the rules in their plainest
// form.

#include "long/promises.h"
#include "helper.h"

#include <clocale>
#include <sys/stat.h>

namespace
{

int allocations = 0;

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
    for (int i = random.bounded(60); i > 0; --i) {
        file += "  0" + end + any(types) + end;
        for (int axis = 1; axis < 4 && random.bounded(3) != 0; ++axis)
            for (int point = 0; point < 4; ++point)
                file += " " + QByteArray::number(10 * axis + point) + end + value() + end;
        for (int k = random.bounded(4); k > 0; --k)
            file += any(codes) + end + any(random.bounded(2) != 0 ? values : codes) + end;
    }
    for (int i = random.bounded(4); i > 0; --i) file[random.bounded(file.size())] = "0158 \n\rA\0"[random.bounded(9)];
    if (random.bounded(50) == 0) // a line longer than what is read at once
        file.insert(random.bounded(file.size()), QByteArray(200000, "0 x"[random.bounded(3)]));
    return file;
}

} // namespace

void* operator new(std::size_t size)
{
    ++allocations;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept { return std::malloc(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }

class TestReader : public QObject
{
    Q_OBJECT

private slots:
    void examples()
    {
        const QByteArray text =
            "0|POINT|0|SECTION|2|ENTITIES|0|POINT|8|0|10|1.5|20|2.5|30|3.5|0|LINE|5|A1|10|1.5|20|0|30|7.5|"
            "0|LINE|5|31|330|1F|10|1.5|20|2.5|30|3.5|11|4.5|21|5.5|31|6.5|0|POINT LINE|10|2.5|0|ENDSEC|0|POINT|";
        for (const char* end : {"\n", "\r\n"}) {
            QString told;
            OwnedEntities entities;
            const QString path = write_file("a.dxf", QByteArray(text).replace("|", end));
            const DXFL_Processing reader(path.toStdString(), entities.list);
            for (const DraftEntity* read : entities.list) {
                told += QString("; %1 '%2' '%3'")
                            .arg(read->get_type())
                            .arg(read->get_str_id().c_str(), read->get_layer_str_id().c_str());
                DRVect3d point;
                for (unsigned int i = 0; read->get_point(point, i); ++i)
                    told += QString(" %1,%2,%3").arg(point.x()).arg(point.y()).arg(point.z());
            }
            QCOMPARE(told, QString("; 0 '' '0' 1.5,2.5,3.5; 1 'A1' '' 1.5,0,0 0,0,0; 1 '31' '' 1.5,2.5,3.5 "
                                   "4.5,5.5,330; 0 '' '' 0,0,0; 1 '' '' 2.5,0,0 0,0,0"));
        }
    }

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
        QVERIFY(quantity > 10000);
    }

    void extents_of_nothing_and_of_no_number()
    {
        std::list<DraftEntity*> entities;
        const DXFL_Processing reader("", entities);
        DRVect3d min(1, 2, 3), max;
        double limit = 4;
        QVERIFY(!reader.get_boundary(entities, min, max, limit) && min == DRVect3d(1, 2, 3) && limit == 4);
        const auto line = entity(DraftEntity::Line, {NAN, NAN, 0, NAN, -3, 0});
        entities.push_back(line.get());
        const int before = allocations;
        QVERIFY(reader.get_boundary(entities, min, max, limit) && std::isnan(min.x()) && std::isnan(max.x()));
        QCOMPARE(allocations, before);
        QVERIFY(min.y() == -3 && max.y() == -3 && limit == 3);
    }

    void normals_are_of_three_points()
    {
        QVERIFY(entity(DraftEntity::Face, {0, 0, 0, 2, 1, 0, 1, 3, 0, 5, 5, 5})->get_normal() == DRVect3d(0, 0, 1));
        QVERIFY(entity(DraftEntity::Face, {1, 2, 3, 2, 3, 4, 3, 4, 5, 9, 0, 0})->get_normal() == DRVect3d());
    }

    void tells_what_it_cannot_read()
    {
        const QString fifo = folder().filePath("fifo"), loop = folder().filePath("loop");
        QCOMPARE(mkfifo(QFile::encodeName(fifo), 0600), 0);
        QVERIFY(QFile::link(loop, loop));
        const std::pair<QString, int> rows[] = {{folder().filePath("missing"), -1}, {loop, -1},
            {QString(5000, 'x'), -1}, {folder().path(), 1}, {fifo, 0}, {"/dev/null", 0}, {"/dev/zero", 2},
            {write_file("empty.dxf", ""), 0}};
        for (const auto& [path, status] : rows) {
            OwnedEntities entities;
            const DXFL_Processing reader(path.toStdString(), entities.list);
            QVERIFY2(reader.get_file_status() == status && entities.list.empty(), qPrintable(path));
        }
    }
};

QTEST_APPLESS_MAIN(TestReader)
#include "reader.moc"
