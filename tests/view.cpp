// A view: what the screen shows, and the mouse on it. Also run at twice the scale, lit for an infinite drawing.

#include "view.h"
#include "helper.h"

#include "GL/GLObject.h"

namespace
{

View view_of(const QStringList& entities, int x = 30)
{
    return View(write_file("view.dxf", dxf(entities)), QRect(x, 30, 200, 250));
}

} // namespace

class TestView : public QObject
{
    Q_OBJECT

private slots:
    void shows_what_is_lit_and_in_front()
    {
        const View first = view_of({"POINT " + qgetenv("LIMIT")}, 330); // sets the lights of all views
        View view = view_of(section("lit"));
        view.drawing_scaling(1e10);
        view.get_drawing_object(1)->rendering(GLObject::SOLID);
        view.get_drawing_object(2)->set_mark(selected);
        const auto act = [&](const QString& step) { // turn X Y up DISTANCE
            const QStringList words = step.split(' ');
            view.drawing_rotation({words[1].toDouble(), words[2].toDouble(), 0});
            view.drawing_translation({0, words[4].toDouble(), 0});
            view.update();
        };
        play(act, [&] {
            return State{{"crossing", shown(view, {100, 124})},
                         {"face", shown(view, {100, 120})},
                         {"line", shown(view, {20, 124})},
                         {"above", shown(view, {120, 50})}};
        });
    }

    void follows_the_mouse()
    {
        QStringList entities = section("picked");
        for (int i = 100; i < 250; ++i) // more than a pick takes, each nearer than the one before
            entities += QString("POINT 0.5025 -0.5025 -0.%1").arg(i);
        View view = view_of(entities);
        View other = view_of({"POINT 4.0"}, 330); // its context is current at each event
        view.get_drawing_object(1)->set_mark(5);
        view.get_drawing_object(2)->rendering(GLObject::SOLID);
        QPoint pos;
        Qt::MouseButtons held;
        int paints = 0;
        QString color;
        const User user([&](QDialog* dialog) {
            note("dialog", qobject_cast<QColorDialog*>(dialog)->currentColor().name());
            qobject_cast<QColorDialog*>(dialog)->setCurrentColor(color);
            other.makeCurrent();
            color.isEmpty() ? dialog->reject() : dialog->accept();
        });
        QApplication::setOverrideCursor(Qt::WaitCursor);
        const auto act = [&](const QString& step) { // press, release, doubleclick BUTTON X Y; another VERB to X Y
            const QStringList words = step.split(' ');
            const QPoint numbers(words[2].toInt(), words[3].toInt());
            color = words.value(5);
            const auto verb = QStringList{"press", "release", "doubleclick", "move"}.indexOf(words[0]); // as in Qt
            pos = verb < 0 ? pos : numbers;
            const auto button =
                static_cast<Qt::MouseButton>(QStringList{"to", "Left", "Right", "-", "Middle"}.indexOf(words[1]));
            held = verb == 0 ? held | button : held & ~button;
            QMouseEvent mouse(static_cast<QEvent::Type>(QEvent::MouseButtonPress + verb), pos, pos, button,
                              verb == 2 ? button : held, {});
            QWheelEvent wheel({}, {}, {}, numbers, {}, {}, Qt::NoScrollPhase, false);
            wheel.ignore(); // as wheel events arrive
            QEvent& event = words[0] == "wheel" ? static_cast<QEvent&>(wheel) : mouse;
            other.makeCurrent();
            paints = view.paints;
            if (words[0] == "resize")
                view.resize(numbers.x(), numbers.y());
            else
                QCoreApplication::sendEvent(&view, &event);
            if (!event.isAccepted())
                note("event", "ignored");
            QTest::qWait(20); // for a paint that nobody wants
        };
        play(act, [&]() -> State {
            QStringList marks;
            for (unsigned long i = 0; i < view.quantity_of_drawing_objects(); ++i)
                if (const unsigned int mark = view.get_drawing_object(i)->mark())
                    marks += QString("%1:%2").arg(i).arg(mark);
            const DRVect3d turned = view.drawing_rotation(), moved = view.drawing_translation();
            return {{"turned", text_of(turned.x(), turned.y(), turned.z())},
                    {"moved", text_of(moved.x(), moved.y(), moved.z())},
                    {"scale", text_of(view.drawing_scaling())},
                    {"painted", text_of(view.paints > paints)},
                    {"cursor", cursor()},
                    {"marks", marks.join(' ')},
                    {"under", shown(view, pos)}};
        });
    }

    void cleanup() { QVERIFY2(QTest::currentTestFailed() || cursor() == "-", "The view leaves its cursor behind."); }
};

QTEST_MAIN(TestView)
#include "view.moc"
