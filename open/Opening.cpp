// A conversion with its progress, then the viewer and a message beside it. The processes end with this one.

#include "Opening.h"

#include "Programs.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QProgressDialog>
#include <QStringList>
#include <QTimer>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include <sys/prctl.h>
#include <unistd.h>

namespace
{

constexpr int longest_name = 230; // bytes of a name, without " (fitted).dxf"

class Opening
{
public:
    Opening(const std::string& file, const std::string& folder, const QProcessEnvironment& environment)
        : my_file(file), my_folder(folder.c_str())
    {
        const QFileInfo facts(file.c_str());
        my_title = facts.fileName();
        my_copy = facts.completeBaseName();
        while (my_copy.toUtf8().size() > longest_name)
            my_copy.chop(1);
        for (QProcess* process : {&my_explode, &my_viewer})
            process->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });

        my_viewer.setProcessEnvironment(environment);
        my_viewer.setProcessChannelMode(QProcess::ForwardedChannels);

        auto* const label = new QLabel("Opening " + my_title);
        label->setTextFormat(Qt::PlainText);
        my_dialog.setLabel(label);
        my_dialog.setMinimumDuration(1000);
        my_dialog.setAutoReset(false);
        QObject::connect(&my_dialog, &QProgressDialog::canceled, &my_explode, &QProcess::kill);

        my_message.setWindowTitle(my_title);
        my_message.setIcon(QMessageBox::Information);
        my_message.setTextFormat(Qt::PlainText);
        my_message.setWindowModality(Qt::NonModal);
        QObject::connect(&my_timer, &QTimer::timeout, [this] { show_message(); });
    }

    void explode()
    {
        QString input = QFileInfo(my_file.c_str()).absoluteFilePath();
        if (!QFile::exists(input) && make_link(my_folder + "/drawing")) // its name is not UTF-8
            input = my_folder + "/drawing";
        my_explode.setReadChannel(QProcess::StandardError);
        QObject::connect(&my_explode, &QProcess::readyReadStandardError, [this] { read_lines(); });
        QObject::connect(&my_explode, &QProcess::finished, [this](int code, QProcess::ExitStatus status) {
            if (my_dialog.wasCanceled())
                return QApplication::exit(EXIT_SUCCESS);
            my_dialog.reset();
            if (status == QProcess::NormalExit && code == EXIT_SUCCESS)
                show_copy();
            else
                show_as_it_is(my_told.isEmpty() ? "tolmera-explode has failed." : my_told.takeLast());
        });
        my_dialog.setValue(0); // starts the second until it is shown
        my_explode.start(program("tolmera-explode").c_str(), {"--auto-fit", "--progress", input, path(my_copy)});
        if (!my_explode.waitForStarted())
            show_as_it_is("tolmera-explode is not installed.");
    }

    /// Shows the file itself, under a name that the viewer takes. `reason` says why it is not converted, or is empty.
    void show_as_it_is(QString reason = "")
    {
        if (reason.contains("holds nothing to show."))
            my_told = QStringList(reason.remove(" (see --all)"));
        else if (!reason.isEmpty())
            my_told = QStringList("It could not be converted, so much of it may be missing. " + reason);
        if (reason.endsWith("holds nothing to show.")) // the viewer will say that
            my_told.clear();
        const bool is_linked = !is_name_for_viewer(my_file) && make_link(path(my_copy));
        show(is_linked ? path(my_copy) : my_file.c_str());
    }

private:
    QString path(const QString& name) const { return my_folder + '/' + name + ".dxf"; }

    bool make_link(const QString& link) const
    {
        std::error_code error;
        std::filesystem::create_symlink(std::filesystem::absolute(my_file), link.toStdString(), error);
        return !error;
    }

    void read_lines()
    {
        while (my_explode.canReadLine()) {
            const QString line = QString(my_explode.readLine()).trimmed();
            const QString text = line.section(": ", 1);
            if (line.startsWith("tolmera-explode: "))
                my_told += text;
            else if (line.startsWith("progress: ") && my_dialog.isVisible())
                my_dialog.setValue(text.toInt());
        }
    }

    /// A copy that is moved or scaled says so in its name, which the viewer shows as its title.
    void show_copy()
    {
        const qsizetype lines = my_told.size();
        my_told.removeIf([](const QString& line) { return line.startsWith("fitted: "); });
        const QString fitted = my_copy + " (fitted)";
        show(my_told.size() < lines && QFile::rename(path(my_copy), path(fitted)) ? path(fitted) : path(my_copy));
    }

    void show(const QString& drawing)
    {
        my_dialog.reset();
        QObject::connect(&my_viewer, &QProcess::finished, [](int code, QProcess::ExitStatus status) {
            QApplication::exit(status == QProcess::NormalExit ? code : EXIT_FAILURE);
        });
        my_viewer.start(program("tolmera").c_str(), {drawing});
        if (!my_viewer.waitForStarted()) {
            my_told = QStringList("The viewer tolmera is not installed.");
            QObject::connect(&my_message, &QDialog::finished, [] { QApplication::exit(EXIT_FAILURE); });
        }
        my_told.replaceInStrings("left out: ", "Points, lines and faces cannot show: ");
        my_message.setText(my_title + "\n\n" + my_told.join("\n\n"));
        if (!my_told.isEmpty())
            my_timer.start(100);
    }

    /// Shows the message once the viewer's window is up. Nothing says when that is, but from then on the viewer mostly
    /// sleeps.
    void show_message()
    {
        QFile facts(QString("/proc/%1/stat").arg(my_viewer.processId()));
        const bool is_busy = facts.open(QIODevice::ReadOnly) && !facts.readAll().contains(") S ");
        my_sleeps = is_busy ? 0 : my_sleeps + 1;
        if (my_sleeps == 5) {
            my_timer.stop();
            my_message.show();
        }
    }

    std::string my_file;
    QString my_folder;
    QString my_title;    // the name of the file
    QString my_copy;     // that of what is shown, without .dxf
    QStringList my_told; // sentences
    QProgressDialog my_dialog;
    QMessageBox my_message;
    QTimer my_timer;
    int my_sleeps = 0; // how often in a row the viewer was found asleep
    QProcess my_explode;
    QProcess my_viewer;
};

} // namespace

bool is_name_for_viewer(const std::string& file)
{
    const QString name(file.c_str());
    return name.endsWith(".dxf") && name.toStdString() == file;
}

int show(int argc, char** argv, const std::string& file, const std::string& folder, Look look)
{
    // Qt takes from its own what tells the desktop that the program has started; that is left to the viewer.
    const QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QApplication app(argc, argv);
    QApplication::setApplicationName("tolmera");
    QApplication::setApplicationDisplayName("Tolmera");
    QApplication::setDesktopFileName("tolmera"); // and this is what the entry names as the windows' class
    QApplication::setWindowIcon(QIcon(":/mainicon.png"));
    QApplication::setQuitOnLastWindowClosed(false);

    Opening opening(file, folder, environment);
    if (look == Look::AsMeant)
        opening.show_as_it_is();
    else
        opening.explode();
    return QApplication::exec();
}
