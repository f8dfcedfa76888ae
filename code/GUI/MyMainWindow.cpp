// The main window's commands: actions, menus and toolbars, what each command does, and the information boxes.

#include "MyMainWindow.h"

#include "Boxes.h"
#include "File/MyGlMDIChild.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QFileDialog>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QOpenGLWidget>
#include <QPointer>
#include <QScreen>
#include <QSettings>
#include <QShortcut>
#include <QSignalMapper>
#include <QStatusBar>
#include <QToolBar>

namespace
{

/// Position and size of the window when none are stored.
constexpr QRect first_place(200, 200, 400, 400);

constexpr const char* home_page = "https://tolmera.example";

/// A link that shows its address.
QString link(const QString& address)
{
    return "<a href=\"" + address + "\">" + address + "</a>";
}

/// A row of a box's table.
QString row(const QString& label, const QString& value)
{
    return "<tr><td>" + label + "</td><td>&nbsp;:&nbsp;</td><td>" + value + "</td></tr>";
}

QString coordinates(const DRVect3d& point)
{
    const auto number = [](double value) { return QString::number(value, 'g', 6); };
    return number(point.x()) + ", " + number(point.y()) + ", " + number(point.z());
}

} // namespace

MyMainWindow::MyMainWindow()
{
    mdiArea = new QMdiArea;
    mdiArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    mdiArea->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setCentralWidget(mdiArea);
    connect(mdiArea, SIGNAL(subWindowActivated(QMdiSubWindow*)), this, SLOT(updateMenus()));
    windowMapper = new QSignalMapper(this);
    connect(windowMapper, &QSignalMapper::mappedObject, this,
            [this](QObject* window) { setActiveSubWindow(qobject_cast<QWidget*>(window)); });

    // A hidden OpenGL widget makes Qt create the window for OpenGL from the start. Otherwise Qt replaces the window
    // when the first drawing is shown, and Wayland may place it elsewhere.
    (new QOpenGLWidget(this))->hide();

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
    // clang-format off
    const ActionFacts actions[] = {
        {&Main::openDxfAct,    "import",    QT_TR_NOOP("&Open DXF-file..."),    QKeySequence::Open,          QT_TR_NOOP("Open an existing DXF-file"),                     this,    SLOT(open_dxf())},
        {&Main::exitAct,       "close",     QT_TR_NOOP("E&xit"),                QKeySequence::Quit,          QT_TR_NOOP("Exit the application"),                          qApp,    SLOT(closeAllWindows())},
        {&Main::VFrontAct,     "front",     QT_TR_NOOP("&Front"),               none,                        QT_TR_NOOP("Set the Front view of actual drawing"),          this,    SLOT(setFrontView())},
        {&Main::VBackAct,      "back",      QT_TR_NOOP("&Back"),                none,                        QT_TR_NOOP("Set the Back view of actual drawing"),           this,    SLOT(setBackView())},
        {&Main::VLeftAct,      "left",      QT_TR_NOOP("&Left"),                none,                        QT_TR_NOOP("Set the Left view of actual drawing"),           this,    SLOT(setLeftView())},
        {&Main::VRightAct,     "right",     QT_TR_NOOP("&Right"),               none,                        QT_TR_NOOP("Set the Right view of actual drawing"),          this,    SLOT(setRightView())},
        {&Main::VTopAct,       "top",       QT_TR_NOOP("&Top"),                 none,                        QT_TR_NOOP("Set the Top view of actual drawing"),            this,    SLOT(setTopView())},
        {&Main::VBottomAct,    "bottom",    QT_TR_NOOP("&Bottom"),              none,                        QT_TR_NOOP("Set the Bottom view of actual drawing"),         this,    SLOT(setBottomView())},
        {&Main::VPointAct,     "point",     QT_TR_NOOP("&Point rendering"),     none,                        QT_TR_NOOP("Set the Point rendering of actual drawing"),     this,    SLOT(setPointView())},
        {&Main::VWireframeAct, "wireframe", QT_TR_NOOP("&Wireframe rendering"), none,                        QT_TR_NOOP("Set the Wireframe rendering of actual drawing"), this,    SLOT(setWireframeView())},
        {&Main::VSolidAct,     "solid",     QT_TR_NOOP("&Solid rendering"),     none,                        QT_TR_NOOP("Set the Solid rendering of actual drawing"),     this,    SLOT(setSolidView())},
        {&Main::VSrcAct,       "srcview",   QT_TR_NOOP("S&ource view"),         none,                        QT_TR_NOOP("Set the Source view of drawing"),                this,    SLOT(setSrcView())},
        {&Main::closeAct,      nullptr,     QT_TR_NOOP("Cl&ose"),               none,                        QT_TR_NOOP("Close the active window"),                       mdiArea, SLOT(closeActiveSubWindow())},
        {&Main::closeAllAct,   nullptr,     QT_TR_NOOP("Close &All"),           none,                        QT_TR_NOOP("Close all the windows"),                         mdiArea, SLOT(closeAllSubWindows())},
        {&Main::tileAct,       nullptr,     QT_TR_NOOP("&Tile"),                none,                        QT_TR_NOOP("Tile the windows"),                              mdiArea, SLOT(tileSubWindows())},
        {&Main::cascadeAct,    nullptr,     QT_TR_NOOP("&Cascade"),             none,                        QT_TR_NOOP("Cascade the windows"),                           mdiArea, SLOT(cascadeSubWindows())},
        {&Main::nextAct,       nullptr,     QT_TR_NOOP("Ne&xt"),                QKeySequence::NextChild,     QT_TR_NOOP("Move the focus to the next window"),             mdiArea, SLOT(activateNextSubWindow())},
        {&Main::previousAct,   nullptr,     QT_TR_NOOP("Pre&vious"),            QKeySequence::PreviousChild, QT_TR_NOOP("Move the focus to the previous window"),         mdiArea, SLOT(activatePreviousSubWindow())},
        {&Main::separatorAct,  nullptr,     nullptr,                            none,                        nullptr,                                                     nullptr, nullptr},
        {&Main::aboutAct,      "home",      QT_TR_NOOP("&About..."),            none,                        QT_TR_NOOP("Show the application's About box"),              this,    SLOT(about())},
        {&Main::referencesAct, "equipment", QT_TR_NOOP("&References..."),       none,                        QT_TR_NOOP("Show the references' About box"),                this,    SLOT(ireferences())},
        {&Main::aboutdxfAct,   "details",   QT_TR_NOOP("&About DXF..."),        none,                        QT_TR_NOOP("Show the DXF's About box"),                      this,    SLOT(about_dxf())},
        {&Main::aboutDrwAct,   "info",      QT_TR_NOOP("&Information..."),      none,                        QT_TR_NOOP("Show the drawing's About box"),                  this,    SLOT(aboutdrw())},
    };
    // clang-format on

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

    // Shift+Tab arrives as Backtab, for which Qt finds no PreviousChild shortcut.
    auto* shift_tab = new QShortcut(QKeySequence("Ctrl+Shift+Tab"), this);
    connect(shift_tab, &QShortcut::activated, previousAct, &QAction::trigger);
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

    // All objects of a view have the same mode, so the first one is enough.
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
        // An entry disappears with its window, even while the menu is open.
        connect(windows.at(i), &QObject::destroyed, action, [action] { delete action; });
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
    auto* child = new MyGlMDIChild(this);
    mdiArea->addSubWindow(child);
    return child;
}

/// Closes a drawing window that was never shown, and deletes it with its frame. The frame is removed first: deleted
/// inside the area, it would make the area activate another drawing.
void MyMainWindow::discard(MyGlMDIChild* child)
{
    child->close();
    QWidget* frame = child->parentWidget();
    mdiArea->removeSubWindow(frame);
    delete frame;
}

void MyMainWindow::open_dxf()
{
    const QString fileName = QFileDialog::getOpenFileName(
        this, windowTitle() + " : " + "Open File", current_dxf_file_dir, tr("Drawings ( *.dxf );;All files ( *.* )"));
    if (fileName.isEmpty())
        return;

    QApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
    statusBar()->showMessage(tr("Loading DXF file..."));
    const QPointer<MyGlMDIChild> child = createMyGlMDIChild(); // null if it is deleted while a warning is open
    if (child->loadFile(fileName) && !child.isNull()) {
        statusBar()->showMessage(tr("File loaded"), 2000);
        child->show();
        if (ogl_version.isEmpty())
            ogl_version = child->version_of_OpenGL();
        current_dxf_file_dir = child->tell_file_path();
    } else if (!child.isNull()) {
        discard(child);
        QApplication::restoreOverrideCursor();
        warn(this, windowTitle() + " : Warning ",
             "<br />Error reading of file: &#8220;" + rich_name(fileName) + "&#8221;.<br /><hr />");
    }
    QApplication::restoreOverrideCursor();
}

bool MyMainWindow::open_dxf(QString fileName)
{
    if (fileName.isEmpty())
        return false;

    const QPointer<MyGlMDIChild> child = createMyGlMDIChild(); // null if it is deleted while a warning is open
    const bool ret_val = child->loadFile(fileName) && !child.isNull();
    if (ret_val) {
        child->show();
        current_dxf_file_dir = child->tell_file_path();
    } else if (!child.isNull()) {
        discard(child);
        warn(this, windowTitle() + " : Warning ",
             "<br />Error reading of file:<br />&#8220;" + rich_name(fileName) + "&#8221;<br /><hr />");
    }
    return ret_val;
}

void MyMainWindow::orient(QGLEditor::Orientation_Mode mode)
{
    if (MyGlMDIChild* child = activeMyGlMDIChild()) {
        child->orientation(mode);
        child->update();
    }
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

void MyMainWindow::switchLayoutDirection()
{
    QApplication::setLayoutDirection(layoutDirection() == Qt::LeftToRight ? Qt::RightToLeft : Qt::LeftToRight);
}

void MyMainWindow::readSettings()
{
    const QSettings settings("Lastrove", "Tolmera");
    const QVariant pos = settings.value("pos");
    const QSize size = settings.value("size").toSize();
    const QRect screens = QGuiApplication::primaryScreen()->virtualGeometry();
    // Damaged settings may hold any size and place.
    QRect place = first_place;
    if (!size.isEmpty())
        place.setSize(size.boundedTo(2 * screens.size()));
    if (pos.canConvert<QPoint>())
        place.moveTo(pos.toPoint());
    if (!screens.intersects(place))
        place.moveTo(first_place.topLeft());
    move(place.topLeft());
    resize(place.size());
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

void MyMainWindow::about()
{
    const QString name = rich_name(windowTitle());
    inform(this, "About " + windowTitle(),
           "<br /><b>" + name +
               "</b> v.2.1.<br /><br />Copyright &#169; 2026 Lastrove. All rights reserved.<br /><br />"
               "<table>" +
               row("Phone", "+1 555 0100") +
               row("E-mail", "<a href=\"mailto:tolmera@lastrove.example\">tolmera@lastrove.example</a>") +
               row("XMPP", "tolmera@chat.lastrove.example") + row("Matrix", "@tolmera:lastrove.example") +
               "</table><br /><br />"
               "Application &#8220;" +
               name +
               "&#8221; (<b>Tol</b>erant <b>m</b>odel <b>e</b>ntity <b>r</b>eading <b>a</b>pplication) "
               "makes processing and viewing of the main entities of 3D graphical data, stored at DXF-files."
               "<br /><br />"
               "Home page : " +
               link(home_page) + "<br /><br /><hr />");
}

void MyMainWindow::ireferences()
{
    inform(this, windowTitle() + " : References",
           "<br />Application &#8220;" + rich_name(windowTitle()) +
               "&#8221; is built with using of the following external software:<br /><br />- Qt v." + qVersion() +
               " ( is available under the Lesser General Public License, LGPL ), "
               "Copyright &#169; The Qt Company Ltd. and other contributors, " +
               link("https://www.qt.io") +
               ";<br /><br />"
               "- OpenGL ( is a registered trademark of SGI, " +
               link("https://www.sgi.com") + " ), " + ogl_version + link("https://www.opengl.org") +
               ";<br /><br />"
               "- Icon set ( freeware ), Copyright &#169; 2026 Lastrove, " +
               link(home_page) + ".<br /><hr />");
}

void MyMainWindow::about_dxf()
{
    inform(this, windowTitle() + " : About DXF",
           tr("<br /><b>Drawing eXchange Format</b> (DXF) is a CAD data file format<br />"
              "developed by <i>Autodesk</i> (<a href=\"https://www.autodesk.com\">https://www.autodesk.com</a>)<br />"
              "to let AutoCAD&#174; exchange data with other programs.<br />"
              "Many programs support DXF: <i>Adobe Illustrator</i>,<br />"
              "<i>Corel Draw</i>, <i>Caddie</i>, <i>LibreOffice</i>, <i>Solidworks</i> etc.<br /><br />"
              "The DXF&#8482; format is a tagged representation of all the<br />"
              "information that an AutoCAD&#174; drawing file contains.<br /><br />"
              "<i>Tagged data</i> means that every data element in the file is<br />"
              "preceded by an integer, which is called its <i>group code</i>.<br /><br />"
              "The value of a group code says which type of data element<br />"
              "follows, and what this element means for the given object<br />"
              "or record type.<br /><br />"
              "Nearly all information that a user puts into a drawing<br />"
              "can be represented in DXF.<br /><hr />"));
}

void MyMainWindow::aboutdrw()
{
    const MyGlMDIChild* drawing = activeMyGlMDIChild();
    if (drawing == nullptr)
        return;
    inform(this, windowTitle() + " : Information about Model",
           "&nbsp;<table>" + row("File name", rich_name(drawing->tell_file_name())) +
               row("Place", rich_name(drawing->tell_file_path())) +
               row("Size", QString::number(drawing->tell_file_size(), 10) + " bytes") + "</table><br /><table>" +
               row("Minimal point ( x, y, z )", coordinates(drawing->drawing_min_point())) +
               row("Maximal point ( x, y, z )", coordinates(drawing->drawing_max_point())) + "</table><br /><table>" +
               row("3D Points", QString::number(drawing->points(), 10)) +
               row("3D Lines", QString::number(drawing->lines(), 10)) +
               row("3D Faces", QString::number(drawing->faces(), 10)) + "</table><br /><hr />");
}
