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
        QTimer::singleShot(20000, this, [] { QApplication::exit(99); });
        startTimer(20);
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (object->inherits("MyMainWindow") && event->type() == QEvent::Show)
            my_main = static_cast<MyMainWindow*>(object);
        if (!object->inherits("QSplashScreen"))
            return false;
        if (event->type() == QEvent::Show)
            connect(my_splash = static_cast<QSplashScreen*>(object), &QSplashScreen::messageChanged, this,
                    &Watch::message);
        if (event->type() == QEvent::Close)
            note("course", "gone", my_main != nullptr && (leaving != "early" || my_main->close()) ? cursor() : "early");
        return false;
    }

protected:
    void timerEvent(QTimerEvent* /*event*/) override
    {
        if (my_main == nullptr || my_splash != nullptr || !my_main->isVisible())
            return;
        for (const QMdiSubWindow* window : my_main->findChild<QMdiArea*>()->subWindowList())
            note("drawing", window->windowTitle(), window->isVisible());
        note("course", "waiting", cursor());
        if (leaving == "exit")
            QApplication::exit(3);
        my_main->close();
    }

private:
    void message(const QString& text)
    {
        QSplashScreen expected(QPixmap(":/images/mysplash.png"));
        expected.showMessage(text, Qt::AlignCenter | Qt::AlignBottom, Qt::black);
        note("course", text, my_splash->grab().toImage() == expected.grab().toImage() ? cursor() : "drawn otherwise");
    }

    User my_user;
    QPointer<QSplashScreen> my_splash;
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
