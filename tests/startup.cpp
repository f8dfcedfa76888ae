// The program from its first argument to the waiting main window. program.sh tests how the process ends.

#include "helper.h"

int tolmera_main(int argc, char** argv);

namespace
{

/// Notes what the user sees, in order, and closes the main window.
class Watch : public User
{
public:
    Watch()
    {
        setParent(qApp);
        qApp->installEventFilter(this);
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        auto* splash = qobject_cast<QSplashScreen*>(object);
        if (event->type() == QEvent::Show && splash != nullptr) {
            note("splash", splash->pixmap().size());
            connect(splash, &QSplashScreen::messageChanged,
                    [](const QString& text) { note("course", text, cursor()); });
        } else if (event->type() == QEvent::Show && object->inherits("QMainWindow")) {
            my_main = static_cast<QMainWindow*>(object);
        } else if (event->type() == QEvent::Close && splash != nullptr) {
            note("course", "gone", my_main != nullptr ? cursor() : "early");
            QTimer::singleShot(0, this, [this] {
                for (const QMdiSubWindow* frame : my_main->findChildren<QMdiSubWindow*>())
                    note("drawing", frame->windowTitle(), frame->isVisible() ? "visible" : "hidden");
                note("course", "waiting", cursor());
                my_main->close();
            });
        }
        return false;
    }

private:
    QMainWindow* my_main = nullptr;
};

void watch()
{
    new Watch;
}

Q_COREAPP_STARTUP_FUNCTION(watch)

} // namespace

class TestStartup : public QObject
{
    Q_OBJECT

private slots:
    void opens_the_first_argument()
    {
        for (const char* name : {"Дом.plan.dxf", "model.DXF", "folder.dxf/none"})
            write_file(name, dxf({"POINT 1.0 2.0 3.0"}));
        write_file("empty.dxf", "");
        State run;
        const auto act = [&](const QString& step) { // the command line
            QByteArrayList words = step.toUtf8().split(' ');
            std::vector<char*> argv;
            for (QByteArray& word : words)
                argv.push_back(word.data());
            qInstallMessageHandler(nullptr); // as in a new process
            tolmera_main(static_cast<int>(words.size()), argv.data());
            run = std::exchange(events(), {});
        };
        play(act, [&] { return run; });
    }
};

QTEST_APPLESS_MAIN(TestStartup)
#include "startup.moc"
