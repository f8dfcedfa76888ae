// What the reader finds in a file: random files, held against the rules in their plainest form; and what cannot be
// read.

#include "helper.h"
#include "plain_reader.h"

#include <clocale>
#include <sys/stat.h>

namespace
{

/// The words of a section, with control characters as a URL has them.
QByteArrayList words(const char* name)
{
    const QByteArray text = section(name).join(' ').toUtf8().replace('_', "%20").replace(' ', "%00");
    return QByteArray::fromPercentEncoding(text).split('\0');
}

/// A file that is almost a drawing.
QByteArray random_file(QRandomGenerator& random)
{
    static const QByteArrayList types = words("types"), codes = words("codes"), values = words("values");
    const auto any = [&random](const QByteArrayList& list) { return list[random.bounded(int(list.size()))]; };
    QByteArrayList lines{"0", "SECTION", any({"2", "2", "26"}), "ENTITIES"};
    for (int i = random.bounded(any({"50", "50", "50", "900"}).toInt()); i > 0; --i) { // some are read in many blocks
        lines << "  0" << any(types);
        for (int axis = 1; axis < 4 && random.bounded(3) != 0; ++axis)
            for (int point = 0; point < 4; ++point)
                lines << " " + QByteArray::number(10 * axis + point) << any(values);
        for (int k = random.bounded(4); k > 0; --k)
            lines << any(codes) << any(random.bounded(2) != 0 ? values : codes);
    }
    QByteArray file = lines.join(any({"\n", "\r\n"})) + "\n";
    for (int i = random.bounded(4); i > 0; --i)
        file[random.bounded(int(file.size()))] = "0158 \n\rA\0"[random.bounded(9)];
    if (random.bounded(50) == 0) // a line longer than what is read at once
        file.insert(random.bounded(int(file.size())), QByteArray(200000, ' '));
    return file;
}

} // namespace

class TestReader : public QObject
{
    Q_OBJECT

private slots:
    void agrees_with_the_plain_rules()
    {
        for (quint32 seed = 0; seed < 3000; ++seed) {
            QRandomGenerator random(seed);
            const QByteArray bytes = random_file(random);
            const QString path = write_file("random.dxf", bytes);
            OwnedEntities entities;
            QVERIFY(std::setlocale(LC_NUMERIC, seed % 2 != 0 ? "C" : "de_DE.UTF-8") != nullptr);
            const DXFL_Processing reader(path.toStdString(), entities.list);
            std::setlocale(LC_NUMERIC, "C");
            const std::string fault = plain::fault(entities, bytes.toStdString());
            if (!fault.empty())
                QFile::copy(path, "fault.dxf");
            QVERIFY2(fault.empty(), qPrintable(QString("seed %1, kept as fault.dxf: ").arg(seed) + fault.c_str()));
        }
    }

    void tells_whether_a_file_was_read()
    {
        for (const char* name : {"fifo", "held"})
            QCOMPARE(mkfifo(QFile::encodeName(folder().filePath(name)), 0600), 0);
        QCOMPARE(mknod(QFile::encodeName(folder().filePath("socket")), S_IFSOCK | 0600, 0), 0);
        QFile writer(folder().filePath("held"));
        QVERIFY(writer.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
        write_file("empty", "");
        write_file("point", dxf({"POINT"}));
        State state;
        const auto open_files = [] { return QDir("/proc/self/fd").entryList(QDir::AllEntries | QDir::System).size(); };
        const auto act = [&](const QString& path) {
            const auto before = open_files();
            OwnedEntities entities;
            entities.list.push_back(new DraftEntity(DraftEntity::Line)); // one that was there before
            const DXFL_Processing reader(path.toStdString(), entities.list);
            state["status"] = text_of(reader.get_file_status());
            state["entities"] = text_of(entities.list.size());
            state["leaked"] = text_of(open_files() - before);
        };
        play(act, [&] { return state; });
    }
};

QTEST_GUILESS_MAIN(TestReader)
#include "reader.moc"
