// The preview program as file managers run it: what its pictures show, what it refuses, and what it leaves behind.

#include "commands.h"

namespace
{

void write_drawing(const QString& name, const QStringList& entities)
{
    QStringList all;
    for (const QString& entity : entities) {
        const QStringList words = entity.split(' ');
        all += words[0] != "BOX" ? QStringList(entity)
                                 : section("BOX").replaceInStrings("l", words[1]).replaceInStrings("h", words[2]);
    }
    write_file(name, dxf(all));
}

/// Draws entities; looks at the picture.
State draw(const QString& entities)
{
    write_drawing("-a.dxf", entities.split(", "));
    State seen = run("$T -s 128 -a.dxf old.png");
    const QImage picture(folder().filePath("old.png"));
    const auto shade = [&](int x, int y) { return qGray(picture.pixel(x, y)); };
    QRect drawn; // the shade of the background is 80
    for (int i = 0; i < 128 * 128; ++i)
        if (shade(i % 128, i / 128) > 87)
            drawn |= QRect(i % 128, i / 128, 1, 1);
    seen["drawn"] = text_of(drawn).mid(5);
    seen["shades"] = text_of(shade(33, 79), shade(69, 49), shade(98, 89), shade(64, 64));
    return seen;
}

} // namespace

class TestPreview : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qputenv("T", "timeout 60 " THUMBNAILER);
        write_drawing("box.dxf", {"BOX 0.0 1.0"});
        write_drawing("slow.dxf", QStringList(2000, "BOX -1.0 1.0"));
        write_file("old.png", "old");
    }

    void shows_the_drawing() { play_commands(draw); }

    void refuses_or_writes_in_place()
    {
        play_commands([](const QString& command) {
            State seen = run(command);
            seen["files"] = run("stat -c %n=%s -- *")["says"];
            return seen;
        });
    }

    void is_bounded_in_memory()
    {
#ifdef __SANITIZE_ADDRESS__
        QSKIP("the sanitizer takes terabytes of addresses");
#endif
        play_commands();
    }
};

QTEST_GUILESS_MAIN(TestPreview)
#include "preview.moc"
