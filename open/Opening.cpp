// A conversion with its progress, then the viewer and a message beside it. The processes end with this one.

#include "Opening.h"

#include "Programs.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QProgressDialog>
#include <QRegularExpression>
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

/// Makes a link to `file`, any bytes, at `link`.
bool make_link(const std::string& file, const QString& link)
{
    std::error_code error;
    std::filesystem::create_symlink(std::filesystem::absolute(file, error), QFile::encodeName(link).toStdString(),
                                    error);
    return !error;
}

/// A sentence about a line of tolmera-explode.
QString sentence(const QString& line)
{
    const QString left_out = "left out: ";
    if (line.startsWith(left_out))
        return "Not shown, for points, lines and faces cannot show it: " + line.mid(left_out.size()) + ".";
    return line;
}

class Opening
{
public:
    Opening(const std::string& file, const std::string& folder, const QProcessEnvironment& environment)
        : my_file(file), my_folder(QFile::decodeName(folder.c_str()))
    {
        const QFileInfo facts(QFile::decodeName(file.c_str()));
        my_title = my_dialog.fontMetrics().elidedText(facts.fileName(), Qt::ElideMiddle, 400);
        my_base = facts.completeBaseName();
        while (QFile::encodeName(my_base).size() > longest_name)
            my_base.chop(1);
        for (QProcess* process : {&my_explode, &my_viewer})
            process->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        my_viewer.setProcessEnvironment(environment);
        my_viewer.setProcessChannelMode(QProcess::ForwardedChannels);
        prepare_windows();
        connect_processes();
    }

    void explode()
    {
        if (my_folder.isEmpty())
            return show_as_it_is("No temporary folder can be made.");
        QString input = QFileInfo(QFile::decodeName(my_file.c_str())).absoluteFilePath();
        if (!QFile::exists(input)) { // its name is not UTF-8
            input = my_folder + "/drawing";
            make_link(my_file, input);
        }
        my_explode.start(QString::fromStdString(program("tolmera-explode")),
                         {"--auto-fit", "--progress", input, in_folder(my_base)});
    }

    /// Shows the file itself, under a name that the viewer takes. Tells why, where there is a reason.
    void show_as_it_is(const QString& reason)
    {
        if (!reason.isEmpty())
            my_told = QStringList{"It is not converted, so that most of it may be missing: " + reason};
        const QString link = in_folder(my_base);
        const bool is_linked = !is_name_for_viewer(my_file) && make_link(my_file, link);
        show(is_linked ? link : QFile::decodeName(my_file.c_str()));
    }

private:
    void prepare_windows()
    {
        auto* const label = new QLabel("Opening " + my_title);
        label->setTextFormat(Qt::PlainText);
        my_dialog.setLabel(label);
        my_dialog.setMinimumDuration(1000);
        my_dialog.setAutoReset(false);
        my_dialog.setValue(0); // from now on the duration counts
        QObject::connect(&my_dialog, &QProgressDialog::canceled, &my_explode, &QProcess::kill);

        my_message.setWindowTitle(my_title);
        my_message.setIcon(QMessageBox::Information);
        my_message.setTextFormat(Qt::PlainText);
        my_message.setWindowModality(Qt::NonModal);
        my_waiting.setInterval(100);
        QObject::connect(&my_waiting, &QTimer::timeout, [this] { show_message(); });
    }

    void connect_processes()
    {
        my_explode.setReadChannel(QProcess::StandardError);
        QObject::connect(&my_explode, &QProcess::readyReadStandardError, [this] { read_messages(); });
        QObject::connect(&my_explode, &QProcess::finished, [this](int code, QProcess::ExitStatus status) {
            if (my_dialog.wasCanceled())
                return QApplication::exit(EXIT_SUCCESS);
            my_dialog.reset();
            read_messages();
            if (status == QProcess::NormalExit && code == EXIT_SUCCESS)
                show_copy();
            else
                show_as_it_is(my_told.isEmpty() ? "tolmera-explode has failed." : my_told.last());
        });
        QObject::connect(&my_explode, &QProcess::errorOccurred, [this](QProcess::ProcessError error) {
            if (error != QProcess::FailedToStart)
                return;
            my_dialog.reset();
            show_as_it_is("tolmera-explode is not installed.");
        });
        QObject::connect(&my_viewer, &QProcess::finished, [](int code, QProcess::ExitStatus status) {
            QApplication::exit(status == QProcess::NormalExit ? code : EXIT_FAILURE);
        });
        QObject::connect(&my_viewer, &QProcess::errorOccurred, [this](QProcess::ProcessError error) {
            if (error != QProcess::FailedToStart)
                return;
            my_message.setText("The viewer tolmera is not installed.");
            my_message.exec();
            QApplication::exit(EXIT_FAILURE);
        });
    }

    QString in_folder(const QString& base) const { return my_folder + '/' + base + ".dxf"; }

    void read_messages()
    {
        const QString progress = "progress: ";
        const QString told = "tolmera-explode: ";
        while (my_explode.canReadLine()) {
            const QString line = QString::fromUtf8(my_explode.readLine()).trimmed();
            if (line.startsWith(progress) && my_dialog.isVisible())
                my_dialog.setValue(line.mid(progress.size()).toInt());
            if (line.startsWith(told))
                my_told += sentence(line.mid(told.size()));
        }
    }

    void show_copy()
    {
        QString copy = in_folder(my_base);
        const QString fitted = in_folder(my_base + " (fitted)");
        const QStringList fits = my_told.filter(QRegularExpression("^fitted: "));
        if (!fits.isEmpty() && QFile::rename(copy, fitted))
            copy = fitted; // the viewer shows it as its title
        for (const QString& fit : fits)
            my_told.removeAll(fit);
        show(copy);
    }

    void show(const QString& drawing)
    {
        my_viewer.start(QString::fromStdString(program("tolmera")), {drawing});
        if (!my_told.isEmpty())
            my_waiting.start();
    }

    /// Shows what there is to tell beside the viewer's window, not before it. Nothing tells when that is up, but then
    /// the process waits for events.
    void show_message()
    {
        constexpr int long_enough = 5; // tenths of a second
        QFile facts(QString("/proc/%1/stat").arg(my_viewer.processId()));
        const bool is_waiting = facts.open(QIODevice::ReadOnly) && facts.readAll().contains(") S ");
        my_waits = is_waiting ? my_waits + 1 : 0;
        if (my_waits < long_enough)
            return;
        my_waiting.stop();
        my_message.setText(my_title + "\n\n" + my_told.join("\n\n"));
        my_message.show();
    }

    std::string my_file;
    QString my_folder;
    QString my_title;    // the file's name, for windows
    QString my_base;     // the name of what is shown, without .dxf
    QStringList my_told; // sentences
    QProgressDialog my_dialog;
    QMessageBox my_message;
    QTimer my_waiting;
    int my_waits = 0; // how often in a row the viewer has been found waiting
    QProcess my_explode;
    QProcess my_viewer;
};

} // namespace

bool is_name_for_viewer(const std::string& file)
{
    const QByteArray name(file.data(), static_cast<int>(file.size()));
    return name.endsWith(".dxf") && QFile::encodeName(QFile::decodeName(name)) == name;
}

int show(int argc, char** argv, const std::string& file, const std::string& folder, Look look)
{
    // Before Qt takes from it what tells the desktop that the program has started; that is left to the viewer.
    const QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QApplication app(argc, argv);
    QApplication::setApplicationName("tolmera");
    QApplication::setApplicationDisplayName("Tolmera");
    QApplication::setDesktopFileName("tolmera");
    QApplication::setWindowIcon(QIcon(":/mainicon.png"));
    QApplication::setQuitOnLastWindowClosed(false);

    Opening opening(file, folder, environment);
    if (look == Look::AsMeant)
        opening.show_as_it_is("");
    else
        opening.explode();
    return QApplication::exec();
}
