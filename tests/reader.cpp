// The reader against the plain rules on random files; files that cannot be read.

#include "helper.h"
#include "plain_reader.h"

#include <clocale>
#include <sys/stat.h>

namespace
{

/// A file that is almost a drawing: runs of lines from the fuzz target's corpus, with some bytes changed.
QByteArray random_file(QRandomGenerator random)
{
    static const QByteArrayList corpus = [] {
        QByteArray text;
        for (const QFileInfo& info : QDir(CORPUS).entryInfoList(QDir::Files)) {
            QFile file(info.filePath());
            file.open(QIODevice::ReadOnly);
            text += file.readAll().replace("ENDSEC", "SEQEND"); // most files would end there
        }
        return text.split('\n');
    }();
    const auto below = [&random](qsizetype limit) { return random.bounded(int(limit)); };
    QByteArrayList lines{"0", "SECTION", below(9) != 0 ? "2" : "26", "ENTITIES"};
    for (int runs = below(below(8) != 0 ? 20 : 1000); runs > 0; --runs) // some are read in many blocks
        lines += corpus.mid(below(corpus.size()), below(40));
    lines.insert(below(lines.size()), "ENDSEC");
    QByteArray file = lines.join('\n');
    for (int changes = below(4); changes > 0; --changes)
        file[below(file.size())] = "0158 \n\rA\0"[below(9)];
    if (below(50) == 0) // a line longer than a block
        file.insert(below(file.size()), QByteArray(200000, ' '));
    return file;
}

} // namespace

class TestReader : public QObject
{
    Q_OBJECT

private slots:
    void agrees_with_the_plain_rules()
    {
        QCOMPARE(*std::localeconv()->decimal_point, ','); // which must not matter
        const auto open_files = [] { return QDir("/proc/self/fd").entryList(QDir::AllEntries | QDir::System).size(); };
        const auto before = open_files();
        for (quint32 seed = 0; seed < 2500; ++seed) {
            const QByteArray bytes = random_file(QRandomGenerator(seed));
            const QString path = write_file("random.dxf", bytes);
            const std::string fault = plain::fault(path.toStdString(), bytes.toStdString());
            if (!fault.empty()) {
                QFile::remove("fault.dxf");
                QFile::copy(path, "fault.dxf");
            }
            QVERIFY2(fault.empty(), qPrintable(QString("seed %1, kept as fault.dxf: ").arg(seed) + fault.c_str()));
        }
        QCOMPARE(open_files(), before);
    }

    void reports_whether_a_file_was_read()
    {
        QVERIFY(QDir::setCurrent(folder().path()) && mkfifo("fifo", 0600) == 0 && mkfifo("held", 0600) == 0);
        QFile writer("held");
        QVERIFY(writer.open(QIODevice::ReadWrite));
        write_file("point", dxf({"POINT"}));
        const auto status_and_count = [](const char* path) {
            OwnedEntities entities;
            const DXFL_Processing reader(path, entities.list);
            return text_of(reader.get_file_status(), entities.list.size());
        };
        QCOMPARE(status_and_count("missing"), "-1 0");
        QCOMPARE(status_and_count("."), "1 0");
        QCOMPARE(status_and_count("point"), "0 1");
        QCOMPARE(status_and_count("fifo"), "0 0");
        QCOMPARE(status_and_count("/dev/null"), "0 0");
        QCOMPARE(status_and_count("held"), "2 0");
        QCOMPARE(status_and_count("/dev/zero"), "2 0");
    }
};

QTEST_GUILESS_MAIN(TestReader)
#include "reader.moc"
