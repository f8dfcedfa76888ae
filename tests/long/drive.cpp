// Drives the main window as a user does, through all that a drawing offers:
//   drive visit FILE...          tells of each file "opened POINTS LINES FACES" or "refused"
//   drive soak DRAWINGS FILE...  opens so many drawings in turn, and fails where the process goes on growing or leaks

#include "../helper.h"

#include "GUI/File/MyGlMDIChild.h"
#include "GUI/MyMainWindow.h"

#include <array>
#include <cstdio>
#include <memory>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace
{

/// The active drawing; null where the file is refused.
MyGlMDIChild* open(MyMainWindow& window, const QString& file)
{
    const bool opened = window.open_dxf(file);
    QTest::qWait(0);
    return opened ? qobject_cast<MyGlMDIChild*>(window.findChild<QMdiArea*>()->activeSubWindow()->widget()) : nullptr;
}

void use_menus(const MyMainWindow& window)
{
    for (const char* command : {"Point rendering", "Solid rendering", "Wireframe rendering", "Front", "Back", "Left",
                                "Right", "Top", "Bottom", "Source view", "Information"}) {
        choose(window, command);
        QTest::qWait(0);
    }
}

/// Picks all over a drawing, turns it, zooms it, and accepts its background color.
void use_mouse(QWidget& view)
{
    for (int x = 0; x < view.width(); x += 100)
        for (int y = 0; y < view.height(); y += 100)
            QTest::mouseDClick(&view, Qt::LeftButton, {}, {x, y});
    QTest::mousePress(&view, Qt::LeftButton, {}, {10, 10});
    QTest::mouseMove(&view, {60, 40});
    QTest::mouseRelease(&view, Qt::LeftButton, {}, {60, 40});
    QWheelEvent wheel({20, 20}, view.mapToGlobal(QPoint(20, 20)), {}, {0, 120}, {}, {}, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&view, &wheel);
    QTest::mouseDClick(&view, Qt::RightButton, {}, {10, 10});
    QTest::qWait(0);
}

void visit(const QStringList& files)
{
    MyMainWindow window;
    window.show();
    for (const QString& file : files) {
        MyGlMDIChild* drawing = open(window, file);
        if (drawing == nullptr) {
            std::puts("refused");
            continue;
        }
        use_menus(window);
        use_mouse(*drawing);
        std::printf("opened %lu %lu %lu\n", drawing->points(), drawing->lines(), drawing->faces());
        drawing->parentWidget()->close();
    }
}

/// Mesa never gives back some memory of a pick in a large drawing, and of a view that was picked in. So the mouse is
/// used in the first file's drawing, which has to be small and stays open while the others come and go.
bool soak(int drawings, const QStringList& files)
{
    auto window = std::make_unique<MyMainWindow>();
    window->show();
    MyGlMDIChild* lasting = open(*window, files.at(0));
    std::array<qint64, 3> most{}, held{}; // in the first half, and last
    for (int number = 1; number <= drawings; ++number) {
        MyGlMDIChild* drawing = open(*window, files.at(number % files.size()));
        use_menus(*window);
        drawing->parentWidget()->close();
        use_mouse(*lasting);
        if (10 * number % drawings != 0)
            continue;
        QFile memory("/proc/self/statm");
        memory.open(QIODevice::ReadOnly);
        held = {memory.readAll().split(' ').at(1).toLongLong() * 4, QDir("/proc/self/fd").entryList().size(),
                QApplication::allWidgets().size()};
        std::printf("%5d drawings: %7lld KB, %3lld files, %4lld widgets\n", number, held[0], held[1], held[2]);
        for (std::size_t i = 0; 2 * number <= drawings && i < held.size(); ++i)
            most[i] = qMax(most[i], held[i]);
    }
    window.reset();
    QTest::qWait(0);
#ifdef __SANITIZE_ADDRESS__
    __lsan_do_leak_check(); // while the drivers are still loaded and have names
#endif
    const bool is_steady = held[0] <= most[0] + qMax(most[0] / 20, 4096) && held[1] <= most[1] && held[2] <= most[2];
    std::puts(is_steady ? "It holds no more at the end than halfway." : "The session goes on growing.");
    return is_steady && QApplication::overrideCursor() == nullptr;
}

} // namespace

int main(int argc, char** argv)
{
    const QApplication app(argc, argv);
    const User user([](QWidget* dialog) { qobject_cast<QDialog*>(dialog)->accept(); });
    const QStringList arguments = QApplication::arguments();
    if (arguments.value(1) == "soak")
        return soak(arguments.value(2).toInt(), arguments.mid(3)) ? EXIT_SUCCESS : EXIT_FAILURE;
    visit(arguments.mid(2));
}
