// tolmera-open: which drawings it converts, what it says, and that it leaves nothing behind.

#include "commands.h"

#include "Opening.h"

namespace
{

/// Notes what the windows say, cancels a progress dialog once it shows progress, and closes the messages.
void watch()
{
    auto* const timer = new QTimer(qApp);
    timer->callOnTimeout([] {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (auto* dialog = qobject_cast<QProgressDialog*>(window); dialog != nullptr && dialog->value() > 0) {
                note("told", dialog->labelText(), dialog->value());
                dialog->findChild<QPushButton*>()->click();
            } else if (auto* box = qobject_cast<QMessageBox*>(window); box != nullptr && box->isVisible()) {
                note("told", box->textFormat() == Qt::PlainText ? box->text() : "rich text");
                box->close();
            }
        }
    });
    timer->start(300);
}
Q_COREAPP_STARTUP_FUNCTION(watch)

} // namespace

class TestOpen : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        qputenv("OPEN", OPEN);
        qputenv("EXPLODE", EXPLODE "/tolmera-explode");
        qputenv("PATH", QFile::encodeName(folder().path()) + "/bin:/usr/bin:/bin");
        run("set_up");
    }

    void converts_what_the_viewer_shows_wrongly() { play_commands(); }

    void takes_any_name() { play_commands(); }

    void says_what_happens()
    {
        play_commands([](const QString& step) {
            State seen = run(step);
            QByteArray program = "open";
            char* argv[] = {program.data(), nullptr};
            const std::string here = folder().path().toStdString();
            seen["exit"] = text_of(show(1, argv, here + "/a.dxf", here + "/tmp", Look::Wrong));
            return seen;
        });
    }

    void leaves_nothing_behind() { play_commands(); }
};

QTEST_APPLESS_MAIN(TestOpen)
#include "open.moc"
