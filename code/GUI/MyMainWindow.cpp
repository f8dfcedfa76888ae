// The main window's commands: their actions, menus and toolbars, and what each one does to the drawing windows.

#include "MyMainWindow.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QFileDialog>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QScreen>
#include <QSettings>
#include <QSignalMapper>
#include <QStatusBar>
#include <QToolBar>

#include <algorithm>
#include <new>

#include <sys/mman.h>

#include "File/MyGlMDIChild.h"

namespace
{

constexpr std::size_t memory_for_context = std::size_t{512} * 1024 * 1024;
constexpr std::size_t memory_for_painting = std::size_t{128} * 1024 * 1024;

/// Throws std::bad_alloc unless this much memory is left. OpenGL drivers crash where they run out of it.
void require_memory(std::size_t size)
{
    void* probe = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (probe == MAP_FAILED)
        throw std::bad_alloc();
    ::munmap(probe, size);
}

/// Whether a stored value is a size that an X11 window can have.
bool is_size_of_window(const QVariant& value)
{
    constexpr int largest = 32767; // the X protocol's coordinates have 16 bits, one of them the sign
    const QSize size = value.toSize();
    return value.type() == QVariant::Size && size.width() > 0 && size.height() > 0 && size.width() <= largest &&
           size.height() <= largest;
}

/// Whether a stored value is a position at which some part of a window of this size is on a screen.
bool is_on_a_screen(const QVariant& value, const QSize& size)
{
    const QRect window(value.toPoint(), size);
    const auto shows = [&](const QScreen* screen) { return screen->geometry().intersects(window); };
    const QList<QScreen*> screens = QGuiApplication::screens();
    return value.type() == QVariant::Point && std::any_of(screens.begin(), screens.end(), shows);
}

} // namespace

MyMainWindow::MyMainWindow() : mdiArea(new QMdiArea), windowMapper(new QSignalMapper(this))
{
    mdiArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    mdiArea->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setCentralWidget(mdiArea);
    connect(mdiArea, SIGNAL(subWindowActivated(QMdiSubWindow*)), this, SLOT(updateMenus()));
    connect(windowMapper, SIGNAL(mapped(QWidget*)), this, SLOT(setActiveSubWindow(QWidget*)));

    createActions();
    createMenus();
    createToolBars();
    createStatusBar();
    updateMenus();
    readSettings();

    setWindowTitle(tr("Tolmera"));
    setUnifiedTitleAndToolBarOnMac(true);
    setWindowIcon(QIcon(":/images/mainicon.png"));
}

MyMainWindow::~MyMainWindow() = default;

void MyMainWindow::createActions()
{
    struct ActionFacts {
        QAction* MyMainWindow::*action;
        const char* icon;
        const char* text;
        QKeySequence::StandardKey shortcut;
        const char* tip;
        QObject* receiver;
        const char* slot;
    };
    const QKeySequence::StandardKey none = QKeySequence::UnknownKey;
    using Main = MyMainWindow;
    const ActionFacts actions[] = {
        {&Main::openDxfAct, "import", QT_TR_NOOP("&Open DXF-file..."), QKeySequence::Open,
         QT_TR_NOOP("Open an existing DXF-file"), this, SLOT(open_dxf())},
        {&Main::exitAct, "close", QT_TR_NOOP("E&xit"), QKeySequence::Quit, QT_TR_NOOP("Exit the application"), qApp,
         SLOT(closeAllWindows())},
        {&Main::VFrontAct, "front", QT_TR_NOOP("&Front"), none, QT_TR_NOOP("Set the Front view of actual drawing"),
         this, SLOT(setFrontView())},
        {&Main::VBackAct, "back", QT_TR_NOOP("&Back"), none, QT_TR_NOOP("Set the Back view of actual drawing"), this,
         SLOT(setBackView())},
        {&Main::VLeftAct, "left", QT_TR_NOOP("&Left"), none, QT_TR_NOOP("Set the Left view of actual drawing"), this,
         SLOT(setLeftView())},
        {&Main::VRightAct, "right", QT_TR_NOOP("&Right"), none, QT_TR_NOOP("Set the Right view of actual drawing"),
         this, SLOT(setRightView())},
        {&Main::VTopAct, "top", QT_TR_NOOP("&Top"), none, QT_TR_NOOP("Set the Top view of actual drawing"), this,
         SLOT(setTopView())},
        {&Main::VBottomAct, "bottom", QT_TR_NOOP("&Bottom"), none, QT_TR_NOOP("Set the Bottom view of actual drawing"),
         this, SLOT(setBottomView())},
        {&Main::VPointAct, "point", QT_TR_NOOP("&Point rendering"), none,
         QT_TR_NOOP("Set the Point rendering of actual drawing"), this, SLOT(setPointView())},
        {&Main::VWireframeAct, "wireframe", QT_TR_NOOP("&Wireframe rendering"), none,
         QT_TR_NOOP("Set the Wireframe rendering of actual drawing"), this, SLOT(setWireframeView())},
        {&Main::VSolidAct, "solid", QT_TR_NOOP("&Solid rendering"), none,
         QT_TR_NOOP("Set the Solid rendering of actual drawing"), this, SLOT(setSolidView())},
        {&Main::VSrcAct, "srcview", QT_TR_NOOP("S&ource view"), none, QT_TR_NOOP("Set the Source view of drawing"),
         this, SLOT(setSrcView())},
        {&Main::closeAct, nullptr, QT_TR_NOOP("Cl&ose"), none, QT_TR_NOOP("Close the active window"), mdiArea,
         SLOT(closeActiveSubWindow())},
        {&Main::closeAllAct, nullptr, QT_TR_NOOP("Close &All"), none, QT_TR_NOOP("Close all the windows"), mdiArea,
         SLOT(closeAllSubWindows())},
        {&Main::tileAct, nullptr, QT_TR_NOOP("&Tile"), none, QT_TR_NOOP("Tile the windows"), mdiArea,
         SLOT(tileSubWindows())},
        {&Main::cascadeAct, nullptr, QT_TR_NOOP("&Cascade"), none, QT_TR_NOOP("Cascade the windows"), mdiArea,
         SLOT(cascadeSubWindows())},
        {&Main::nextAct, nullptr, QT_TR_NOOP("Ne&xt"), QKeySequence::NextChild,
         QT_TR_NOOP("Move the focus to the next window"), mdiArea, SLOT(activateNextSubWindow())},
        {&Main::previousAct, nullptr, QT_TR_NOOP("Pre&vious"), QKeySequence::PreviousChild,
         QT_TR_NOOP("Move the focus to the previous window"), mdiArea, SLOT(activatePreviousSubWindow())},
        {&Main::separatorAct, nullptr, nullptr, none, nullptr, nullptr, nullptr},
        {&Main::aboutAct, "home", QT_TR_NOOP("&About..."), none, QT_TR_NOOP("Show the application's About box"), this,
         SLOT(about())},
        {&Main::referencesAct, "equipment", QT_TR_NOOP("&References..."), none,
         QT_TR_NOOP("Show the references' About box"), this, SLOT(ireferences())},
        {&Main::aboutdxfAct, "details", QT_TR_NOOP("&About DXF..."), none, QT_TR_NOOP("Show the DXF's About box"), this,
         SLOT(about_dxf())},
        {&Main::aboutDrwAct, "info", QT_TR_NOOP("&Information..."), none, QT_TR_NOOP("Show the drawing's About box"),
         this, SLOT(aboutdrw())},
    };

    for (const ActionFacts& facts : actions) {
        auto* action = new QAction(this);
        this->*facts.action = action;
        if (facts.text == nullptr) {
            action->setSeparator(true);
            continue;
        }
        action->setText(tr(facts.text));
        action->setStatusTip(tr(facts.tip));
        if (facts.icon != nullptr)
            action->setIcon(QIcon(QString(":/images/%1.png").arg(facts.icon)));
        if (facts.shortcut != none)
            action->setShortcuts(facts.shortcut);
        connect(action, SIGNAL(triggered()), facts.receiver, facts.slot);
    }
}

void MyMainWindow::createMenus()
{
    fileMenu = menuBar()->addMenu(tr("&File"));
    fileMenu->addAction(openDxfAct);
    fileMenu->addAction(aboutDrwAct);
    fileMenu->addSeparator();
    fileMenu->addAction(QIcon(":/images/arleftright.png"), tr("Switch layout direction"), this,
                        SLOT(switchLayoutDirection()));
    fileMenu->addSeparator();
    fileMenu->addAction(exitAct);

    viewMenu = menuBar()->addMenu(tr("&View"));
    viewMenu->addActions({VFrontAct, VBackAct, VLeftAct, VRightAct, VTopAct, VBottomAct});
    viewMenu->addSeparator();
    viewMenu->addActions({VPointAct, VWireframeAct, VSolidAct});
    viewMenu->addSeparator();
    viewMenu->addAction(VSrcAct);

    windowMenu = menuBar()->addMenu(tr("&Window"));
    updateWindowMenu();
    connect(windowMenu, SIGNAL(aboutToShow()), this, SLOT(updateWindowMenu()));

    menuBar()->addSeparator();

    helpMenu = menuBar()->addMenu(tr("&Help"));
    helpMenu->addActions({aboutAct, referencesAct, aboutdxfAct});
}

void MyMainWindow::createToolBars()
{
    fileToolBar = addToolBar(tr("File"));
    fileToolBar->addActions({openDxfAct, aboutDrwAct});

    renderingToolBar = addToolBar(tr("Rendering"));
    renderingToolBar->addActions({VPointAct, VWireframeAct, VSolidAct});

    viewToolBar = addToolBar(tr("View"));
    viewToolBar->addActions({VFrontAct, VBackAct, VLeftAct, VRightAct, VTopAct, VBottomAct});
    viewToolBar->addSeparator();
    viewToolBar->addAction(VSrcAct);
}

void MyMainWindow::createStatusBar()
{
    statusBar()->showMessage(tr("Ready"));
}

void MyMainWindow::updateMenus()
{
    const MyGlMDIChild* child = activeMyGlMDIChild();
    const bool hasMyGlMDIChild = child != nullptr;
    for (QAction* action : {closeAct, closeAllAct, tileAct, cascadeAct, nextAct, previousAct, VFrontAct, VBackAct,
                            VLeftAct, VRightAct, VTopAct, VBottomAct, VSrcAct, aboutDrwAct})
        action->setEnabled(hasMyGlMDIChild);
    separatorAct->setVisible(hasMyGlMDIChild);

    // All objects of a view share one mode, so the first stands for the drawing.
    const GLObject* first = hasMyGlMDIChild ? child->get_drawing_object(0) : nullptr;
    const auto allowed = [&](GLObject::DRendering mode) {
        return hasMyGlMDIChild && (first == nullptr || first->rendering() != mode);
    };
    VPointAct->setEnabled(allowed(GLObject::POINT));
    VWireframeAct->setEnabled(allowed(GLObject::WIREFRAME));
    VSolidAct->setEnabled(allowed(GLObject::SOLID));
}

void MyMainWindow::updateWindowMenu()
{
    windowMenu->clear();
    windowMenu->addActions({closeAct, closeAllAct});
    windowMenu->addSeparator();
    windowMenu->addActions({tileAct, cascadeAct});
    windowMenu->addSeparator();
    windowMenu->addActions({nextAct, previousAct, separatorAct});

    const QList<QMdiSubWindow*> windows = mdiArea->subWindowList(QMdiArea::CreationOrder);
    separatorAct->setVisible(!windows.isEmpty());
    for (int i = 0; i < windows.size(); ++i) {
        const MyGlMDIChild* child = drawing_in(windows.at(i));
        if (child == nullptr)
            continue;
        const QString text = (i < 9 ? tr("&%1 %2") : tr("%1 %2")).arg(i + 1).arg(child->tell_file_name());
        QAction* action = windowMenu->addAction(text);
        action->setCheckable(true);
        action->setChecked(child == activeMyGlMDIChild());
        connect(action, SIGNAL(triggered()), windowMapper, SLOT(map()));
        windowMapper->setMapping(action, windows.at(i));
    }
}

void MyMainWindow::setActiveSubWindow(QWidget* window)
{
    if (window != nullptr)
        mdiArea->setActiveSubWindow(qobject_cast<QMdiSubWindow*>(window));
}

MyGlMDIChild* MyMainWindow::drawing_in(const QMdiSubWindow* frame)
{
    return frame != nullptr ? qobject_cast<MyGlMDIChild*>(frame->widget()) : nullptr;
}

MyGlMDIChild* MyMainWindow::activeMyGlMDIChild() const
{
    return drawing_in(mdiArea->activeSubWindow());
}

MyGlMDIChild* MyMainWindow::createMyGlMDIChild()
{
    require_memory(memory_for_context);
    auto* child = new MyGlMDIChild(this);
    if (!child->isValid())
        qWarning("Tolmera: this display offers no OpenGL; drawings cannot be shown on it.");
    mdiArea->addSubWindow(child);
    return child;
}

/// Closes a drawing window that was never shown, and deletes it together with the frame that the area made for it.
void MyMainWindow::discard(MyGlMDIChild* child)
{
    child->close();
    delete child->parentWidget();
}

void MyMainWindow::open_dxf()
{
    const QString fileName = QFileDialog::getOpenFileName(
        this, windowTitle() + " : " + "Open File", current_dxf_file_dir, tr("Drawings ( *.dxf );;All files ( *.* )"));
    if (fileName.isEmpty())
        return;

    QApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
    statusBar()->showMessage(tr("Loading DXF file..."));
    MyGlMDIChild* child = createMyGlMDIChild();
    if (child->loadFile(fileName)) {
        statusBar()->showMessage(tr("File loaded"), 2000);
        require_memory(memory_for_painting);
        child->show();
        if (ogl_version.isEmpty())
            ogl_version = child->version_of_OpenGL();
        current_dxf_file_dir = child->tell_file_path();
    } else {
        discard(child);
        QApplication::restoreOverrideCursor();
        warn("<br />Error reading of file: &#8220;" + fileName + "&#8221;.<br /><hr />");
    }
    QApplication::restoreOverrideCursor();
}

bool MyMainWindow::open_dxf(QString fileName)
{
    if (fileName.isEmpty())
        return false;

    MyGlMDIChild* child = createMyGlMDIChild();
    const bool ret_val = child->loadFile(fileName);
    if (ret_val) {
        require_memory(memory_for_painting);
        child->show();
        current_dxf_file_dir = child->tell_file_path();
    } else {
        discard(child);
        warn("<br />Error reading of file:<br />&#8220;" + fileName + "&#8221;<br /><hr />");
    }
    return ret_val;
}

void MyMainWindow::warn(const QString& text)
{
    QMessageBox::warning(this, windowTitle() + " : Warning ", text, QMessageBox::Ok, QMessageBox::NoButton);
}

void MyMainWindow::orient(QGLEditor::Orientation_Mode mode)
{
    if (MyGlMDIChild* child = activeMyGlMDIChild()) {
        child->orientation(mode);
        child->update();
    }
}

void MyMainWindow::setFrontView()
{
    orient(QGLEditor::FRONT);
}

void MyMainWindow::setBackView()
{
    orient(QGLEditor::BACK);
}

void MyMainWindow::setLeftView()
{
    orient(QGLEditor::LEFT);
}

void MyMainWindow::setRightView()
{
    orient(QGLEditor::RIGHT);
}

void MyMainWindow::setTopView()
{
    orient(QGLEditor::TOP);
}

void MyMainWindow::setBottomView()
{
    orient(QGLEditor::BOTTOM);
}

void MyMainWindow::setSrcView()
{
    if (MyGlMDIChild* child = activeMyGlMDIChild()) {
        child->set_source_drawing_view();
        child->update();
    }
}

void MyMainWindow::render(GLObject::DRendering mode)
{
    MyGlMDIChild* child = activeMyGlMDIChild();
    if (child == nullptr)
        return;
    for (unsigned long i = 0; i < child->quantity_of_drawing_objects(); ++i)
        child->get_drawing_object(i)->rendering(mode);
    child->update();
    updateMenus();
}

void MyMainWindow::setPointView()
{
    render(GLObject::POINT);
}

void MyMainWindow::setWireframeView()
{
    render(GLObject::WIREFRAME);
}

void MyMainWindow::setSolidView()
{
    render(GLObject::SOLID);
}

void MyMainWindow::switchLayoutDirection()
{
    QApplication::setLayoutDirection(layoutDirection() == Qt::LeftToRight ? Qt::RightToLeft : Qt::LeftToRight);
}

void MyMainWindow::readSettings()
{
    const QSettings settings("Lastrove", "Tolmera");
    const QVariant stored_size = settings.value("size");
    const QSize size = is_size_of_window(stored_size) ? stored_size.toSize() : QSize(400, 400);
    const QVariant stored_pos = settings.value("pos");
    const QPoint pos = is_on_a_screen(stored_pos, size) ? stored_pos.toPoint() : QPoint(200, 200);
    move(pos);
    resize(size);
}

void MyMainWindow::writeSettings()
{
    QSettings settings("Lastrove", "Tolmera");
    settings.setValue("pos", pos());
    settings.setValue("size", size());
}

void MyMainWindow::closeEvent(QCloseEvent* event)
{
    mdiArea->closeAllSubWindows();
    if (mdiArea->currentSubWindow() != nullptr) {
        event->ignore();
    } else {
        writeSettings();
        event->accept();
    }
}
