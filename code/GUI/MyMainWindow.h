// MyMainWindow: the main window with its commands, its drawing windows and the information boxes.
// Loading and showing a drawing is left to MyGlMDIChild.
#pragma once

#include "GL/GLObject.h"
#include "GL/QGLEditor.h"

#include <QMainWindow>
#include <QString>

class MyGlMDIChild;
class QAction;
class QMdiArea;
class QMdiSubWindow;
class QMenu;
class QSignalMapper;
class QToolBar;

/// The multiple-document main window. Its menus, toolbars, actions and drawing windows are its Qt descendants.
class MyMainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// Builds the window and restores its position and size; the caller shows it.
    MyMainWindow();
    ~MyMainWindow() override;

    /// Opens the named DXF file in a new drawing window, without a dialog. Warns and returns false if it cannot be
    /// read; also returns false for an empty name.
    bool open_dxf(QString fileName);

protected:
    void closeEvent(QCloseEvent* event) override;

    QString ogl_version;          // of the first drawing opened through the Open command; empty before
    QString current_dxf_file_dir; // of the last drawing that was loaded; empty before

private slots:
    void open_dxf();
    void aboutdrw();
    void about();
    void ireferences();
    void about_dxf();
    void updateMenus();
    void updateWindowMenu();
    MyGlMDIChild* createMyGlMDIChild();
    void switchLayoutDirection();
    void setActiveSubWindow(QWidget* window);
    void setFrontView() { orient(QGLEditor::FRONT); }
    void setBackView() { orient(QGLEditor::BACK); }
    void setLeftView() { orient(QGLEditor::LEFT); }
    void setRightView() { orient(QGLEditor::RIGHT); }
    void setTopView() { orient(QGLEditor::TOP); }
    void setBottomView() { orient(QGLEditor::BOTTOM); }
    void setSrcView();
    void setPointView() { render(GLObject::POINT); }
    void setWireframeView() { render(GLObject::WIREFRAME); }
    void setSolidView() { render(GLObject::SOLID); }

private:
    void createActions();
    void createMenus();
    void createToolBars();
    void createStatusBar();
    void readSettings();
    void writeSettings();
    MyGlMDIChild* activeMyGlMDIChild() const;

    static MyGlMDIChild* drawing_in(const QMdiSubWindow* frame);
    void discard(MyGlMDIChild* child);
    void orient(QGLEditor::Orientation_Mode mode);
    void render(GLObject::DRendering mode);

    QMdiArea* mdiArea;
    QSignalMapper* windowMapper;

    QMenu* fileMenu;
    QMenu* viewMenu;
    QMenu* windowMenu;
    QMenu* helpMenu;

    QToolBar* fileToolBar;
    QToolBar* viewToolBar;
    QToolBar* renderingToolBar;

    QAction* openDxfAct;
    QAction* aboutDrwAct;
    QAction* exitAct;
    QAction* VFrontAct;
    QAction* VBackAct;
    QAction* VLeftAct;
    QAction* VRightAct;
    QAction* VTopAct;
    QAction* VBottomAct;
    QAction* VPointAct;
    QAction* VWireframeAct;
    QAction* VSolidAct;
    QAction* VSrcAct;
    QAction* closeAct;
    QAction* closeAllAct;
    QAction* tileAct;
    QAction* cascadeAct;
    QAction* nextAct;
    QAction* previousAct;
    QAction* separatorAct;
    QAction* aboutAct;
    QAction* referencesAct;
    QAction* aboutdxfAct;
};
