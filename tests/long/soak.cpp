// A long session in a short time: opens, uses and closes drawings in the main window, tells what the process holds
// meanwhile, and fails where it goes on growing. script/soak builds and runs it.

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMouseEvent>

#include <algorithm>
#include <cstdio>
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

/// What a process can leak, at one moment.
struct Holdings {
    long memory_kb;  // resident
    int descriptors; // open files
    int x_resources; // windows, pixmaps, cursors and so on of all clients of the X server
    int widgets;     // of Qt
    int override_cursors;
};

void settle()
{
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QApplication::processEvents();
}

long resident_kb()
{
    QFile file("/proc/self/statm");
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("/proc/self/statm");
    return file.readAll().split(' ').at(1).toLong() * (::sysconf(_SC_PAGESIZE) / 1024);
}

/// Asks the X server, through a connection of its own.
class XResources
{
public:
    XResources() : connection(xcb_connect(nullptr, nullptr)) {}
    ~XResources() { xcb_disconnect(connection); }
    XResources(const XResources&) = delete;
    XResources& operator=(const XResources&) = delete;

    int count() const
    {
        const Reply<xcb_res_query_clients_reply_t> clients(
            xcb_res_query_clients_reply(connection, xcb_res_query_clients(connection), nullptr), std::free);
        if (!clients)
            throw std::runtime_error("the X server's resource extension");
        int total = 0;
        for (auto client = xcb_res_query_clients_clients_iterator(clients.get()); client.rem > 0;
             xcb_res_client_next(&client))
            total += count_of(client.data->resource_base);
        return total;
    }

private:
    template <typename T> using Reply = std::unique_ptr<T, decltype(&std::free)>;

    int count_of(uint32_t client) const
    {
        const Reply<xcb_res_query_client_resources_reply_t> kinds(
            xcb_res_query_client_resources_reply(connection, xcb_res_query_client_resources(connection, client),
                                                 nullptr),
            std::free);
        int total = 0;
        if (kinds) // else the client has gone meanwhile
            for (auto kind = xcb_res_query_client_resources_types_iterator(kinds.get()); kind.rem > 0;
                 xcb_res_type_next(&kind))
                total += static_cast<int>(kind.data->count);
        return total;
    }

    xcb_connection_t* connection;
};

/// Takes back the override cursors that it counts; there should be none.
int take_override_cursors()
{
    int count = 0;
    for (; QApplication::overrideCursor() != nullptr; ++count)
        QApplication::restoreOverrideCursor();
    return count;
}

Holdings holdings(const XResources& x_resources)
{
    settle();
    return {resident_kb(), static_cast<int>(QDir("/proc/self/fd").entryList(QDir::AllEntries | QDir::System).size()),
            x_resources.count(), static_cast<int>(QApplication::allWidgets().size()), take_override_cursors()};
}

void tell(int drawings, const Holdings& held)
{
    std::printf("%5d drawings: %7ld KB, %3d files, %5d X resources, %4d widgets, %d override cursors\n", drawings,
                held.memory_kb, held.descriptors, held.x_resources, held.widgets, held.override_cursors);
    std::fflush(stdout);
}

/// A main window with a drawing that stays open, in which all picks are made, and others that come and go.
class Session
{
public:
    explicit Session(const QStringList& the_files) : files(the_files)
    {
        window.show();
        lasting = open(0);
    }

    /// Opens a drawing, uses it and closes it; every seventh one stays until close_others.
    void use_drawing(int number, int uses)
    {
        open(number);
        for (int i = 0; i < uses; ++i) {
            trigger({"&Point rendering", "&Wireframe rendering", "&Solid rendering"}, i);
            trigger({"&Front", "&Back", "&Left", "&Right", "&Top", "&Bottom", "S&ource view"}, i);
            rebuild_window_menu();
            settle();
        }
        if (number % 7 != 0)
            trigger({"Cl&ose"}, 0);
        settle();

        area()->setActiveSubWindow(lasting);
        for (int i = 0; i < uses; ++i)
            pick(i);
        settle();
    }

    void close_others()
    {
        for (QMdiSubWindow* frame : area()->subWindowList())
            if (frame != lasting)
                frame->close();
        settle();
    }

private:
    QMdiArea* area() { return window.findChild<QMdiArea*>(); }

    QMdiSubWindow* open(int number)
    {
        window.open_dxf(files.at(number % files.size()));
        settle();
        if (area()->activeSubWindow() == nullptr)
            throw std::runtime_error("no drawing came up");
        return area()->activeSubWindow();
    }

    void trigger(const QStringList& texts, int number)
    {
        const QString& text = texts.at(number % texts.size());
        for (QAction* action : window.findChildren<QAction*>())
            if (action->text() == text)
                action->trigger();
    }

    /// A left double-click, with its presses and releases, at a place of the lasting drawing.
    void pick(int number)
    {
        QWidget* view = lasting->widget();
        const QPoint place(number * 37 % std::max(view->width(), 1), number * 53 % std::max(view->height(), 1));
        for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                                        QEvent::MouseButtonDblClick, QEvent::MouseButtonRelease}) {
            const bool is_release = type == QEvent::MouseButtonRelease;
            QMouseEvent event(type, place, Qt::LeftButton, is_release ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(view, &event);
        }
    }

    void rebuild_window_menu()
    {
        for (QMenu* menu : window.findChildren<QMenu*>())
            if (menu->title() == "&Window")
                QMetaObject::invokeMethod(menu, "aboutToShow");
    }

    MyMainWindow window;
    QStringList files;
    QMdiSubWindow* lasting = nullptr;
};

/// Whether the end holds no more than the fullest moment of the first half, apart from a little memory.
bool settled(const Holdings& early, const Holdings& late)
{
    const long allowed_kb = std::max(early.memory_kb / 20, 4096L);
    return late.memory_kb <= early.memory_kb + allowed_kb && late.descriptors <= early.descriptors &&
           late.x_resources <= early.x_resources && late.widgets <= early.widgets && late.override_cursors == 0;
}

/// Under AddressSanitizer: reports what nothing points to, while the drivers are still loaded and have names.
void look_for_leaks()
{
    settle();
#ifdef __SANITIZE_ADDRESS__
    __lsan_do_leak_check();
#endif
}

} // namespace

/// soak DRAWINGS USES FILE...: DRAWINGS to open in turn from the FILEs, each one used USES times.
int main(int argc, char** argv)
{
    Q_INIT_RESOURCE(Tolmera);
    const QApplication app(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() < 4) {
        std::fputs("usage: soak DRAWINGS USES FILE...\n", stderr);
        return 2;
    }
    const int drawings = arguments.at(1).toInt();
    const int uses = arguments.at(2).toInt();

    try {
        const XResources x_resources;
        auto session = std::make_unique<Session>(arguments.mid(3));
        const int step = std::max(drawings / 10, 1);
        Holdings early{};
        Holdings late{};
        for (int number = 1; number <= drawings; ++number) {
            session->use_drawing(number, uses);
            if (number % step != 0)
                continue;
            session->close_others();
            late = holdings(x_resources);
            tell(number, late);
            if (number <= 5 * step && late.memory_kb > early.memory_kb)
                early = late;
        }
        session.reset();
        look_for_leaks();
        if (!settled(early, late)) {
            std::fputs("The session does not settle.\n", stderr);
            return 1;
        }
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        return 2;
    }
    return 0;
}
