// Opens each drawing named on the command line in the main window, uses all that a view offers, and tells what came of
// it: "opened POINTS LINES FACES" or "refused". script/hostile names the drawings.

#include <QAction>
#include <QApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMessageBox>
#include <QMouseEvent>
#include <QWheelEvent>

#include <cstdio>

#include "GUI/File/MyGlMDIChild.h"
#include "GUI/MyMainWindow.h"

namespace
{

/// Answers every message box as soon as it shows.
class BoxCloser : public QObject
{
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* box = event->type() == QEvent::Show ? qobject_cast<QMessageBox*>(watched) : nullptr;
        if (box != nullptr)
            QMetaObject::invokeMethod(box, "accept", Qt::QueuedConnection);
        return false;
    }
};

void send_mouse(QWidget& view, QEvent::Type type, const QPoint& place, Qt::MouseButtons buttons)
{
    QMouseEvent event(type, place, Qt::LeftButton, buttons, Qt::NoModifier);
    QApplication::sendEvent(&view, &event);
}

void pick_and_turn(QWidget& view)
{
    for (int x = 0; x < view.width(); x += 50)
        for (int y = 0; y < view.height(); y += 50)
            send_mouse(view, QEvent::MouseButtonDblClick, {x, y}, Qt::LeftButton);
    send_mouse(view, QEvent::MouseButtonPress, {10, 10}, Qt::LeftButton);
    send_mouse(view, QEvent::MouseMove, {60, 40}, Qt::LeftButton);
    send_mouse(view, QEvent::MouseButtonRelease, {60, 40}, Qt::NoButton);
    for (const int delta : {120, -120}) {
        QWheelEvent event(QPointF(20, 20), view.mapToGlobal(QPoint(20, 20)), {}, {0, delta}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&view, &event);
    }
}

/// Every command of the view, and the information box.
void use(MyMainWindow& window, QWidget& view)
{
    for (const char* text : {"&Point rendering", "&Solid rendering", "&Wireframe rendering", "&Front", "&Back", "&Left",
                             "&Right", "&Top", "&Bottom", "S&ource view", "&Information..."})
        for (QAction* action : window.findChildren<QAction*>())
            if (action->text() == text) {
                action->trigger();
                QApplication::processEvents();
                pick_and_turn(view);
            }
}

} // namespace

int main(int argc, char** argv)
{
    Q_INIT_RESOURCE(Tolmera);
    const QApplication app(argc, argv);
    BoxCloser closer;
    qApp->installEventFilter(&closer);

    MyMainWindow window;
    window.show();
    for (const QString& name : QApplication::arguments().mid(1)) {
        if (!window.open_dxf(name)) {
            std::puts("refused");
            continue;
        }
        QApplication::processEvents();
        QMdiSubWindow* frame = window.findChild<QMdiArea*>()->activeSubWindow();
        auto* drawing = frame != nullptr ? qobject_cast<MyGlMDIChild*>(frame->widget()) : nullptr;
        if (drawing == nullptr)
            return 1;
        use(window, *drawing);
        std::printf("opened %lu %lu %lu\n", drawing->points(), drawing->lines(), drawing->faces());
        frame->close();
    }
    return 0;
}
