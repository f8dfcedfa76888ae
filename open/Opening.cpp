// Runs the conversion with a progress dialog, then the viewer with a message box. Both are killed with this process.

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

constexpr int longest_name = 230; // of a copy's name, in bytes, without " (fitted).dxf"

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

        my_box.setWindowTitle(my_title);
        my_box.setIcon(QMessageBox::Information);
        my_box.setTextFormat(Qt::PlainText);
        my_box.setWindowModality(Qt::NonModal);
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
            if (status == QProcess::NormalExit && code == EXIT_SUCCESS)
                show_copy();
            else
                show_as_it_is(my_messages.isEmpty() ? "tolmera-explode has failed." : my_messages.takeLast());
        });
        my_dialog.setValue(0); // starts the minimum duration
        my_explode.start(program("tolmera-explode").c_str(), {"--auto-fit", "--progress", input, path(my_copy)});
        if (!my_explode.waitForStarted())
            show_as_it_is("tolmera-explode is not installed.");
    }

    /// Shows the file itself, through a link if the viewer refuses its name. `reason`: why it was not converted.
    void show_as_it_is(const QString& reason = "")
    {
        const bool is_empty = reason.contains("holds nothing to show.");
        if (!reason.isEmpty() && !reason.endsWith("holds nothing to show.")) // the viewer says that itself
            my_messages += (is_empty ? "" : "It could not be converted, and much of it may be missing. ") + reason;
        const bool is_linked = !is_name_for_viewer(my_file) && make_link(path(my_copy));
        show(is_linked ? path(my_copy) : my_file.c_str());
    }

private:
    QString path(const QString& name) const { return my_folder + '/' + name + ".dxf"; }

    bool make_link(const QString& link) const
    {
        std::error_code error;
        if (my_folder.isEmpty() || !std::filesystem::exists(my_file, error))
            return false;
        std::filesystem::create_symlink(std::filesystem::absolute(my_file), link.toStdString(), error);
        return !error;
    }

    void read_lines()
    {
        while (my_explode.canReadLine()) {
            const QString line = QString(my_explode.readLine()).trimmed();
            const QString text = line.section(": ", 1);
            if (line.startsWith("tolmera-explode: "))
                my_messages += text;
            else if (line.startsWith("progress: ") && my_dialog.isVisible())
                my_dialog.setValue(text.toInt());
        }
    }

    /// Shows the converted copy. If it was moved or scaled, its name says so, because the viewer shows it as its title.
    void show_copy()
    {
        const qsizetype lines = my_messages.size();
        my_messages.removeIf([](const QString& line) { return line.startsWith("fitted: "); });
        const QString fitted = my_copy + " (fitted)";
        show(my_messages.size() < lines && QFile::rename(path(my_copy), path(fitted)) ? path(fitted) : path(my_copy));
    }

    void show(const QString& drawing)
    {
        my_dialog.reset();
        QObject::connect(&my_viewer, &QProcess::finished, [](int code, QProcess::ExitStatus status) {
            QApplication::exit(status == QProcess::NormalExit ? code : EXIT_FAILURE);
        });
        my_viewer.start(program("tolmera").c_str(), {drawing});
        if (!my_viewer.waitForStarted()) {
            my_messages = QStringList("The viewer tolmera is not installed.");
            QObject::connect(&my_box, &QDialog::finished, [] { QApplication::exit(EXIT_FAILURE); });
        }
        my_messages.replaceInStrings("left out: ", "Cannot be shown with points, lines and faces: ");
        my_box.setText(my_title + "\n\n" + my_messages.join("\n\n"));
        if (!my_messages.isEmpty())
            my_timer.start(100);
    }

    /// Shows the message box once the viewer's window is up. Nothing reports that, but from then on the viewer mostly
    /// sleeps (state S).
    void show_message()
    {
        QFile facts(QString("/proc/%1/stat").arg(my_viewer.processId()));
        const bool is_busy = facts.open(QIODevice::ReadOnly) && !facts.readAll().contains(") S ");
        my_sleeps = is_busy ? 0 : my_sleeps + 1;
        if (my_sleeps == 5) {
            my_timer.stop();
            my_box.show();
        }
    }

    std::string my_file;
    QString my_folder;
    QString my_title;        // the name of the file
    QString my_copy;         // the name of the copy, without .dxf
    QStringList my_messages; // for the box
    QProgressDialog my_dialog;
    QMessageBox my_box;
    QTimer my_timer;
    int my_sleeps = 0; // consecutive times that the viewer was asleep
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
    // Qt removes the startup notification ID from the environment of this process; the viewer needs it.
    const QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QApplication app(argc, argv);
    QApplication::setApplicationName("tolmera"); // StartupWMClass in the desktop entry
    QApplication::setApplicationDisplayName("Tolmera");
    QApplication::setDesktopFileName("tolmera");
    QApplication::setWindowIcon(QIcon(":/mainicon.png"));
    QApplication::setQuitOnLastWindowClosed(false);

    Opening opening(file, folder, environment);
    if (look == Look::Correct)
        opening.show_as_it_is();
    else if (folder.empty())
        opening.show_as_it_is("A temporary folder could not be made.");
    else
        opening.explode();
    return QApplication::exec();
}
