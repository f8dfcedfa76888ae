// Start-up: splash screen, main window, the drawing named on the command line, event loop.

#include "GUI/MyMainWindow.h"

#include <QApplication>
#include <QCursor>
#include <QFileInfo>
#include <QMessageBox>
#include <QPixmap>
#include <QSplashScreen>

#include <memory>

namespace
{

void warn(MyMainWindow& mainWin, const QString& text)
{
    QMessageBox::warning(&mainWin, mainWin.windowTitle() + " : Warning ", text, QMessageBox::Ok, QMessageBox::NoButton);
}

/// Whether the named file may be opened; warns where it may not.
bool check_file(MyMainWindow& mainWin, const QString& name)
{
    if (!QFileInfo(name).isReadable()) {
        warn(mainWin, "<br />Error reading of file:<br />" + name + "<br /><hr />");
        return false;
    }
    if (QFileInfo(name).size() == 0 || QFileInfo(name).suffix() != "dxf") {
        warn(mainWin, "<br />The correct *.dxf file should be selected in command line.<br /><hr />");
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    Q_INIT_RESOURCE(Tolmera);
    QApplication app(argc, argv);
    QApplication::setOverrideCursor(QCursor(Qt::WaitCursor));

    auto mysplash = std::make_unique<QSplashScreen>(QPixmap());
    mysplash->setPixmap(QPixmap(":/images/mysplash.png"));
    mysplash->show();
    const Qt::Alignment mysplash_msg_alignment = Qt::AlignCenter | Qt::AlignBottom;
    mysplash->showMessage(QObject::tr("Setting up the main window..."), mysplash_msg_alignment, Qt::black);

    MyMainWindow mainWin;
    if (argc > 1) {
        const QString name(argv[1]);
        if (check_file(mainWin, name)) {
            mysplash->showMessage(QObject::tr("Loading dxf-file..."), mysplash_msg_alignment, Qt::black);
            mainWin.open_dxf(name);
        }
    }

    mainWin.show();
    mysplash->finish(&mainWin);
    mysplash.reset();
    QApplication::restoreOverrideCursor();
    return QApplication::exec();
}
