// What the reader finds in a file: against examples, and against the reading steps written out plainly.

#include "helper.h"

#include <clocale>
#include <sys/stat.h>

namespace
{

/// An entity as the plain steps read it.
struct Plain {
    DraftEntity::EntityType type;
    std::string handle, layer;
    double coordinates[12];
};

double number(const std::string& line)
{
    static const locale_t c = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtod_l(line.c_str(), nullptr, c);
}

bool has(const std::string& line, const std::string& word) { return line.find(word) != std::string::npos; }

bool denotes(const std::string& line, const std::string& code)
{
    return line.find_first_not_of("012358 \r\n\t") == std::string::npos &&
           (has(line, ' ' + code) || has(line, '\t' + code) || (has(line, code) && number(line) == number(code)));
}

std::string without_end(std::string line)
{
    line.pop_back();
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return line;
}

/// Line by line and test by test, with no thought for speed.
std::vector<Plain> read_plainly(const QByteArray& bytes)
{
    const char* const codes[] = {"10", "20", "30", "11", "21", "31", "12", "22", "32", "13", "23", "33"};
    const std::pair<const char*, unsigned int> starts[] = {{"POINT", 7}, {"LINE", 63}, {"3DFACE", 4095}};
    std::vector<Plain> found;
    bool in_section = false, open = false;
    unsigned int needed = 0, seen = 0;
    std::string previous, line;
    for (const char c : bytes) {
        line += c;
        if (c != '\n') continue;
        if (!in_section) {
            in_section = has(line, "ENTITIES") && denotes(previous, "2");
        } else {
            if (has(line, "ENDSEC") && denotes(previous, "0")) return found;
            const bool may_start = !open && denotes(previous, "0");
            for (int type = 0; may_start && type < 3; ++type)
                if (has(line, starts[type].first)) {
                    found.push_back({static_cast<DraftEntity::EntityType>(type), "", "", {}});
                    open = true;
                    needed = starts[type].second;
                    seen = 0;
                }
            if (open && denotes(previous, "5")) found.back().handle = without_end(line);
            if (open && denotes(previous, "8")) found.back().layer = without_end(line);
            for (int i = 0; open && i < 12; ++i)
                if (denotes(previous, codes[i])) {
                    found.back().coordinates[i] = number(line);
                    seen |= 1U << i;
                }
            const bool ends = denotes(line, "0") && !denotes(previous, "8") && !denotes(previous, "5");
            open = open && seen != needed && !ends;
        }
        previous = line;
        line.clear();
    }
    return found;
}

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
        QByteArray("0.0|1.5|-2e3|1,5|0x1A|inf|-nan(12)|+3|  7.25|1e999|-0|5e-324|1.5 2|.5|0|-.5e1x|1e|\t\f1.2|31|A1|"
                   "0.3000000000000000000000000001|9007199254740993|WALLS|ENDSEC|ENTITIES|1.7976931348623159e308")
            .split('|');
    const QByteArray end = random.bounded(2) != 0 ? "\n" : "\r\n";
    QByteArray file = "0" + end + "SECTION" + end + (random.bounded(20) != 0 ? "  2" : "26") + end + "ENTITIES" + end;
    for (int i = random.bounded(60); i > 0; --i) {
        file += "  0" + end + any(types) + end;
        for (int axis = 1; axis < 4 && random.bounded(3) != 0; ++axis)
            for (int point = 0; point < 4; ++point)
                file += " " + QByteArray::number(10 * axis + point) + end + any(values) + end;
        for (int k = random.bounded(4); k > 0; --k)
            file += any(codes) + end + any(random.bounded(2) != 0 ? values : codes) + end;
    }
    for (int i = random.bounded(4); i > 0; --i) file[random.bounded(file.size())] = "0158 \n\rA\0"[random.bounded(9)];
    if (random.bounded(50) == 0) // a line longer than what is read at once
        file.insert(random.bounded(file.size()), QByteArray(200000, "0 x"[random.bounded(3)]));
    return file;
}

struct Entities {
    explicit Entities(const QString& path) : status(DXFL_Processing(path.toStdString(), list).get_file_status()) {}
    ~Entities() { qDeleteAll(list); }
    std::list<DraftEntity*> list;
    int status;
};

} // namespace

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
            for (const DraftEntity* read : Entities(write_file("a.dxf", QByteArray(text).replace("|", end))).list) {
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

    void agrees_with_the_plain_steps()
    {
        QRandomGenerator random(2718);
        int quantity = 0;
        for (const char* locale : {"C", "de_DE.UTF-8"}) {
            QVERIFY2(std::setlocale(LC_NUMERIC, locale) != nullptr, locale);
            for (int file = 0; file < 2000; ++file) {
                const QByteArray bytes = random_file(random);
                const Entities entities(write_file("random.dxf", bytes));
                const std::vector<Plain> expected = read_plainly(bytes);
                QCOMPARE(entities.list.size(), expected.size());
                auto plain = expected.begin();
                for (const DraftEntity* read : entities.list) {
                    QVERIFY(read->get_type() == plain->type && read->get_str_id() == plain->handle);
                    QCOMPARE(read->get_layer_str_id(), plain->layer);
                    double point[3];
                    for (unsigned int i = 0; read->get_coordinates(point[0], point[1], point[2], i); ++i)
                        QVERIFY2(std::memcmp(point, plain->coordinates + 3 * i, sizeof point) == 0, bytes.constData());
                    ++plain;
                    ++quantity;
                }
            }
        }
        QVERIFY(quantity > 10000);
    }

    void tells_what_it_cannot_read()
    {
        const QString fifo = folder().filePath("fifo"), loop = folder().filePath("loop");
        QCOMPARE(mkfifo(QFile::encodeName(fifo), 0600), 0);
        QVERIFY(QFile::link(loop, loop));
        const std::pair<QString, int> rows[] = {{folder().filePath("missing"), -1}, {loop, -1},
            {QString(5000, 'x'), -1}, {folder().path(), 1}, {fifo, 2}, {"/dev/zero", 2},
            {write_file("empty.dxf", ""), 0}};
        for (const auto& [path, status] : rows) {
            const Entities entities(path);
            QVERIFY2(entities.status == status && entities.list.empty(), qPrintable(path));
        }
    }
};

QTEST_APPLESS_MAIN(TestReader)
#include "reader.moc"
