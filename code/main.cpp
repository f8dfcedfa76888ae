// Start-up: splash screen, main window, the drawing named on the command line, event loop. Ends with a message if there
// is no memory, display or OpenGL.

#include "GUI/Boxes.h"
#include "GUI/MyMainWindow.h"

#include <QApplication>
#include <QCursor>
#include <QFileInfo>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QPixmap>
#include <QSplashScreen>

#include <cstdlib>
#include <memory>
#include <new>
#include <string_view>
#include <unistd.h>

namespace
{

/// Exits at once: without memory no destructor can be relied on, and settings must not be left half written.
[[noreturn]] void end_without_memory()
{
    constexpr std::string_view text = "Tolmera: out of memory\n";
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
    ::_exit(EXIT_FAILURE);
}

QtMessageHandler default_handler = nullptr;

/// Exits after a fatal message, such as Qt's if no display can be reached. Qt itself would dump core.
void handle_message(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    default_handler(type, context, message);
    if (type == QtFatalMsg)
        ::_exit(EXIT_FAILURE);
}

/// Whether there is OpenGL; shows a message if not.
bool check_OpenGL()
{
    QOpenGLContext context;
    QOffscreenSurface surface;
    if (context.create()) {
        surface.setFormat(context.format());
        surface.create();
        if (context.makeCurrent(&surface))
            return true;
    }
    const char* const text = "Tolmera needs OpenGL, which this display does not offer.";
    qCritical("%s", text);
    warn(nullptr, "Tolmera", text);
    return false;
}

/// Whether the named file may be opened; warns if not.
bool check_file(MyMainWindow& mainWin, const QString& name)
{
    const QString title = mainWin.windowTitle() + " : Warning ";
    if (!QFileInfo(name).isReadable()) {
        warn(&mainWin, title, "<br />Error reading of file:<br />" + rich_name(name) + "<br /><hr />");
        return false;
    }
    if (QFileInfo(name).size() == 0 || QFileInfo(name).suffix() != "dxf") {
        warn(&mainWin, title, "<br />The correct *.dxf file should be selected in command line.<br /><hr />");
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    Q_INIT_RESOURCE(Tolmera);
    std::set_new_handler(end_without_memory);
    default_handler = qInstallMessageHandler(handle_message);

    QApplication app(argc, argv);
    if (!check_OpenGL())
        return EXIT_FAILURE;
    QApplication::setOverrideCursor(QCursor(Qt::WaitCursor));

    auto mysplash = std::make_unique<QSplashScreen>(QPixmap());
    mysplash->setPixmap(QPixmap(":/images/mysplash.png"));
    mysplash->show();
    const Qt::Alignment mysplash_msg_alignment = Qt::AlignCenter | Qt::AlignBottom;
    mysplash->showMessage(QObject::tr("Setting up the main window..."), static_cast<int>(mysplash_msg_alignment),
                          Qt::black);

    MyMainWindow mainWin;
    if (argc > 1) {
        const QString name(argv[1]);
        if (check_file(mainWin, name)) {
            mysplash->showMessage(QObject::tr("Loading dxf-file..."), static_cast<int>(mysplash_msg_alignment),
                                  Qt::black);
            mainWin.open_dxf(name);
        }
    }

    mainWin.show();
    mysplash->finish(&mainWin);
    mysplash.reset();
    QApplication::restoreOverrideCursor();
    // If the window was closed while the splash screen was shown, nothing else would end the event loop.
    if (!mainWin.isVisible())
        QMetaObject::invokeMethod(&app, "quit", Qt::QueuedConnection);
    return QApplication::exec();
}
