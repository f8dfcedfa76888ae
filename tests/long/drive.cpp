// Drives the main window as a user does, through all that a drawing offers:
//   drive visit FILE...          tells of each file "opened POINTS LINES FACES" or "refused"
//   drive soak DRAWINGS FILE...  opens so many drawings in turn, and fails where the process goes on growing or leaks

#include <QtWidgets>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <stdexcept>

#include <unistd.h>
#include <xcb/res.h>
#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

#include "GUI/File/MyGlMDIChild.h"
#include "GUI/MyMainWindow.h"

namespace
{

void settle()
{
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QApplication::processEvents();
}

/// The frame of the drawing; null where it is refused.
QMdiSubWindow* open(MyMainWindow& window, const QString& file)
{
    const bool opened = window.open_dxf(file);
    settle();
    return opened ? window.findChild<QMdiArea*>()->activeSubWindow() : nullptr;
}

/// Chooses all that the menus offer for the active drawing.
void use_menus(MyMainWindow& window)
{
    for (const char* command : {"&Point rendering", "&Solid rendering", "&Wireframe rendering", "&Front", "&Back",
                                "&Left", "&Right", "&Top", "&Bottom", "S&ource view", "&Information..."}) {
        for (QAction* action : window.findChildren<QAction*>())
            if (action->text() == command)
                action->trigger();
        settle();
    }
    for (QMenu* menu : window.findChildren<QMenu*>())
        QMetaObject::invokeMethod(menu, "aboutToShow");
}

void send(QWidget& view, QEvent::Type type, const QPoint& place, Qt::MouseButton button)
{
    QMouseEvent event(type, place, button, type == QEvent::MouseButtonRelease ? Qt::NoButton : button, Qt::NoModifier);
    QApplication::sendEvent(&view, &event);
}

void double_click(QWidget& view, const QPoint& place, Qt::MouseButton button)
{
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease, QEvent::MouseButtonDblClick,
                                    QEvent::MouseButtonRelease})
        send(view, type, place, button);
}

/// Picks all over a drawing, turns it, zooms it, and accepts its background colour.
void use_mouse(QWidget& view)
{
    for (int x = 0; x < view.width(); x += 100)
        for (int y = 0; y < view.height(); y += 100)
            double_click(view, {x, y}, Qt::LeftButton);
    send(view, QEvent::MouseButtonPress, {10, 10}, Qt::LeftButton);
    send(view, QEvent::MouseMove, {60, 40}, Qt::LeftButton);
    send(view, QEvent::MouseButtonRelease, {60, 40}, Qt::LeftButton);
    for (const int delta : {120, -120}) {
        QWheelEvent event({20, 20}, view.mapToGlobal(QPoint(20, 20)), {}, {0, delta}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(&view, &event);
    }
    double_click(view, {10, 10}, Qt::RightButton);
    settle();
}

void visit(const QStringList& files)
{
    MyMainWindow window;
    window.show();
    for (const QString& file : files) {
        QMdiSubWindow* frame = open(window, file);
        if (frame == nullptr) {
            std::puts("refused");
            continue;
        }
        use_menus(window);
        use_mouse(*frame->widget());
        const auto& drawing = dynamic_cast<MyGlMDIChild&>(*frame->widget());
        std::printf("opened %lu %lu %lu\n", drawing.points(), drawing.lines(), drawing.faces());
        frame->close();
    }
}

/// What the X server holds for the program that made the window: windows, pixmaps, cursors and so on.
long x_resources(WId window)
{
    static xcb_connection_t* const server = xcb_connect(nullptr, nullptr);
    const auto question = xcb_res_query_client_resources(server, static_cast<uint32_t>(window));
    const std::unique_ptr<xcb_res_query_client_resources_reply_t, decltype(&std::free)> reply(
        xcb_res_query_client_resources_reply(server, question, nullptr), std::free);
    if (!reply)
        throw std::runtime_error("the X server does not tell its resources");
    long total = 0;
    for (auto type = xcb_res_query_client_resources_types_iterator(reply.get()); type.rem > 0; xcb_res_type_next(&type))
        total += type.data->count;
    return total;
}

/// What a process can leak: KB of resident memory, open files, X resources, widgets.
std::array<long, 4> holdings(const MyMainWindow& window)
{
    settle();
    if (QApplication::overrideCursor() != nullptr)
        throw std::runtime_error("an override cursor is left");
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return {pages * ::sysconf(_SC_PAGESIZE) / 1024, std::distance(files, {}), x_resources(window.winId()),
            QApplication::allWidgets().size()};
}

/// Mesa never gives back some memory of a pick in a large drawing, and of a view that was picked in. So the mouse is
/// used in the first file's drawing, which has to be small and stays open while the others come and go.
void soak(int drawings, const QStringList& files)
{
    auto window = std::make_unique<MyMainWindow>();
    window->show();
    QMdiSubWindow* lasting = open(*window, files.at(0));
    std::array<long, 4> most{}; // in the first half
    std::array<long, 4> held = holdings(*window);
    for (int number = 1; number <= drawings; ++number) {
        QMdiSubWindow* frame = open(*window, files.at(number % files.size()));
        use_menus(*window);
        frame->close();
        use_mouse(*lasting->widget());
        if (10 * number % drawings != 0)
            continue;
        held = holdings(*window);
        std::printf("%5d drawings: %7ld KB, %3ld files, %5ld X resources, %4ld widgets\n", number, held[0], held[1],
                    held[2], held[3]);
        for (std::size_t i = 0; 2 * number <= drawings && i < held.size(); ++i)
            most[i] = std::max(most[i], held[i]);
    }
    window.reset();
    settle();
#ifdef __SANITIZE_ADDRESS__
    __lsan_do_leak_check(); // while the drivers are still loaded and have names
#endif
    most[0] += std::max(most[0] / 20, 4096L);
    if (!std::equal(held.begin(), held.end(), most.begin(), std::less_equal<>()))
        throw std::runtime_error("the session goes on growing, or has fewer than two drawings");
}

} // namespace

int main(int argc, char** argv)
try {
    Q_INIT_RESOURCE(Tolmera);
    const QApplication app(argc, argv);
    QTimer box_closer;
    box_closer.callOnTimeout([] {
        if (auto* box = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
            box->accept();
    });
    box_closer.start(5);
    const QStringList arguments = QApplication::arguments();
    if (arguments.value(1) == "visit")
        visit(arguments.mid(2));
    else
        soak(arguments.value(2).toInt(), arguments.mid(3));
} catch (const std::exception& problem) {
    std::fprintf(stderr, "%s\n", problem.what());
    return EXIT_FAILURE;
}
