// The program from its first argument to its exit code; main() is the program's own, under another name.

#include "helper.h"

#include "GUI/MyMainWindow.h"

int tolmera_main(int argc, char** argv);

namespace
{

/// What came up in a run: boxes (with "|late" where there was no splash screen), drawings, a wrong state at the end.
QStringList seen;

/// What a user does: reads and closes boxes, looks at the main window, quits.
void attend()
{
    auto* timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, [] {
        MyMainWindow* main = nullptr;
        bool splash = false;
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->isVisible() && widget->inherits("MyMainWindow")) main = static_cast<MyMainWindow*>(widget);
            splash |= widget->isVisible() && widget->inherits("QSplashScreen");
        }
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            seen += box->windowTitle() + "|" + box->text() + (splash && main == nullptr ? "" : "|late");
            box->button(QMessageBox::Ok)->click();
        } else if (main != nullptr && !splash) {
            for (const QMdiSubWindow* window : main->findChild<QMdiArea*>()->subWindowList())
                seen += window->isVisible() ? window->windowTitle() : "hidden";
            if (QApplication::overrideCursor() != nullptr) seen += "waiting";
            main->close();
        }
    });
    timer->start(50);
}

Q_COREAPP_STARTUP_FUNCTION(attend)

} // namespace

class TestStartup : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder().path())); }

    void opens()
    {
        const QByteArray bytes = dxf({"POINT 1.0 2.0 3.0"});
        const QString good = write_file("house.plan.dxf", bytes), missing = folder().filePath("no such.dxf");
        const QString directory = folder().filePath("folder.dxf"), warning = "Tolmera : Warning |<br />";
        const QString wrong = warning + "The correct *.dxf file should be selected in command line.<br /><hr />";
        QVERIFY(QDir().mkdir(directory));
        const std::pair<QStringList, QStringList> rows[] = {
            {{}, {}},
            {{good, missing}, {"house.plan.dxf"}},
            {{write_file("Дом.dxf", bytes)}, {"Дом.dxf"}},
            {{"-style", "fusion", good}, {"house.plan.dxf"}},
            {{missing}, {warning + "Error reading of file:<br />" + missing + "<br /><hr />"}},
            {{write_file("model.DXF", bytes)}, {wrong}},
            {{write_file("empty.dxf", "")}, {wrong}},
            {{directory}, {"Warning |<br />Error reading of &#8220;" + directory + "&#8221; file.<br /><hr />",
                              warning + "Error reading of file:<br />&#8220;" + directory + "&#8221;<br /><hr />"}},
        };
        for (const auto& [arguments, expected] : rows) {
            QByteArrayList words{"tolmera"};
            for (const QString& argument : arguments) words += argument.toUtf8();
            std::vector<char*> argv;
            for (QByteArray& word : words) argv.push_back(word.data());
            argv.push_back(nullptr);
            seen.clear();
            qInstallMessageHandler(nullptr); // each run begins as a process does
            QCOMPARE(tolmera_main(static_cast<int>(words.size()), argv.data()), 0);
            QCOMPARE(seen, expected);
        }
    }

    void the_program_opens_and_quits()
    {
        qputenv("ASAN_OPTIONS", "detect_leaks=0"); // the program unloads its drivers, whose leaks then have no name
        QProcess program;
        program.start(PROGRAM, {write_file("a.dxf", dxf({"POINT 1.0 2.0 3.0"}))});
        const QString quit = "search --onlyvisible --name ^Tolmera$ windowactivate key ctrl+q";
        for (int i = 0; i < 100 && !program.waitForFinished(200); ++i) QProcess::execute("xdotool", quit.split(' '));
        QVERIFY(program.state() == QProcess::NotRunning);
        QVERIFY(program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0);
    }
};

QTEST_APPLESS_MAIN(TestStartup)
#include "startup.moc"
