// The program from its first argument to its exit code. main() is the program's own, under another name; where the
// process itself matters, program.sh runs the program.

#include "helper.h"

#include "GUI/MyMainWindow.h"

int tolmera_main(int argc, char** argv);

namespace
{

QString leaving; // when or how the user ends the program

/// Notes what comes up before the user, in order.
class Watch : public QObject
{
public:
    Watch() : QObject(qApp)
    {
        qApp->installEventFilter(this);
        startTimer(20);
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (object->inherits("MyMainWindow") && event->type() == QEvent::Show)
            my_main = static_cast<MyMainWindow*>(object);
        auto* splash = qobject_cast<QSplashScreen*>(object);
        if (splash != nullptr && event->type() == QEvent::Show)
            connect(splash, &QSplashScreen::messageChanged,
                    [](const QString& text) { note("course", text, cursor()); });
        if (splash != nullptr && event->type() == QEvent::Close) {
            note("course", "gone", my_main != nullptr ? cursor() : "early");
            if (leaving == "early")
                my_main->close();
            my_splash_is_gone = true;
        }
        return false;
    }

protected:
    void timerEvent(QTimerEvent* /*event*/) override
    {
        if (!my_splash_is_gone || !my_main->isVisible())
            return;
        for (const QMdiSubWindow* window : my_main->findChild<QMdiArea*>()->subWindowList())
            note("drawing", window->windowTitle(), window->isVisible());
        note("course", "waiting", cursor());
        if (leaving == "exit")
            QApplication::exit(3);
        my_main->close();
    }

private:
    User my_user;
    bool my_splash_is_gone = false;
    QPointer<MyMainWindow> my_main;
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
        for (const char* name : {"house.plan.dxf", "Дом.dxf", "model.DXF", "folder.dxf/none"})
            write_file(name, dxf({"POINT 1.0 2.0 3.0"}));
        write_file("empty.dxf", "");
        State run;
        const auto act = [&](const QString& step) { // when the user leaves, and arguments
            QByteArrayList words = step.toUtf8().split(' ');
            leaving = words[0];
            std::vector<char*> argv;
            for (QByteArray& word : words)
                argv.push_back((word = QByteArray::fromPercentEncoding(word)).data());
            argv.push_back(nullptr);
            qInstallMessageHandler(nullptr); // each run begins as a process does
            note("exit", tolmera_main(static_cast<int>(words.size()), argv.data()));
            run = std::exchange(events(), {});
        };
        play(act, [&] { return run; });
    }
};

QTEST_APPLESS_MAIN(TestStartup)
#include "startup.moc"
