// A view: what the screen shows, and the mouse on it. Runs at twice the display's scale, too.

#include "view.h"
#include "helper.h"

#include "GL/GLObject.h"

#include <memory>

namespace
{

std::unique_ptr<View> view_of(const QStringList& entities, int x = 30)
{
    return std::make_unique<View>(write_file("view.dxf", dxf(entities)), QRect(x, 30, 200, 250));
}

QString xyz(const DRVect3d& vector)
{
    return text_of(vector.x(), vector.y(), vector.z());
}

} // namespace

class TestView : public QObject
{
    Q_OBJECT

private slots:
    /// Runs in a process of its own for each LIMIT, too, for the first view of a process sets the lights.
    void shows_what_is_lit_and_in_front()
    {
        const auto first = view_of({"POINT " + qgetenv("LIMIT")}, 330);
        GLfloat position[4] = {};
        glGetLightfv(GL_LIGHT1, GL_POSITION, position);
        const double z = 10 * first->drawing_limit();
        QVERIFY(!(z > 1e-19 && z < 1e19) || position[2] == static_cast<float>(z));
        const auto view = view_of(section("lit"));
        view->get_drawing_object(1)->rendering(GLObject::SOLID);
        view->get_drawing_object(2)->set_mark(selected);
        const auto act = [&](const QString& step) { // turn X Y up Z
            const QStringList words = step.split(' ');
            view->drawing_rotation({words[1].toDouble(), words[2].toDouble(), 0});
            view->drawing_translation({0, words[4].toDouble(), 0});
            view->update();
        };
        play(act, [&] {
            return State{{"crossing", shown(*view, {100, 124})},
                         {"face", shown(*view, {100, 120})},
                         {"line", shown(*view, {20, 124})},
                         {"above", shown(*view, {120, 50})}};
        });
    }

    void follows_the_mouse()
    {
        QStringList entities = section("picked");
        for (int i = 100; i < 250; ++i) // more than a pick takes, each nearer than the one before
            entities += QString("POINT 0.5025 -0.5025 -0.%1").arg(i);
        auto view = view_of(entities);
        const auto other = view_of({"POINT 4.0"}, 330); // its context is current whenever the view is told something
        view->get_drawing_object(1)->set_mark(5);
        view->get_drawing_object(2)->rendering(GLObject::SOLID);
        QPoint pos;
        Qt::MouseButtons held;
        int paints = 0, paints_at_once = 0;
        QString color;
        const User user([&](QWidget* window) {
            auto* dialog = qobject_cast<QColorDialog*>(window);
            note("dialog", dialog->currentColor().name());
            dialog->setCurrentColor(color);
            other->makeCurrent();
            color.isEmpty() ? dialog->reject() : static_cast<QDialog*>(dialog)->accept();
        });
        QApplication::setOverrideCursor(Qt::WaitCursor);
        const auto act = [&](const QString& step) { // press, release or doubleclick BUTTON X Y; another VERB to X Y
            const QStringList words = step.split(' ');
            pos = {words[2].toInt(), words[3].toInt()};
            color = words.value(5);
            const auto verb = QStringList{"press", "release", "doubleclick", "move"}.indexOf(words[0]);
            const auto button =
                static_cast<Qt::MouseButton>(QStringList{"to", "Left", "Right", "-", "Middle"}.indexOf(words[1]));
            held = verb == 0 ? held | button : held & ~button;
            QMouseEvent mouse(static_cast<QEvent::Type>(QEvent::MouseButtonPress + verb), pos, pos, button,
                              verb == 2 ? button : held, {});
            QWheelEvent wheel({}, {}, {}, pos, {}, {}, Qt::NoScrollPhase, false);
            other->makeCurrent();
            paints = view->paints;
            if (words[0] == "resize")
                view->resize(pos.x(), pos.y());
            else
                QCoreApplication::sendEvent(view.get(), words[0] == "wheel" ? static_cast<QEvent*>(&wheel) : &mouse);
            paints_at_once = view->paints - paints;
        };
        play(act, [&]() -> State {
            QStringList marks;
            for (unsigned long i = 0; i < view->quantity_of_drawing_objects(); ++i)
                if (const unsigned int mark = view->get_drawing_object(i)->mark())
                    marks += QString("%1:%2").arg(1024 + i).arg(mark);
            return {{"rotation", xyz(view->drawing_rotation())},
                    {"translation", xyz(view->drawing_translation())},
                    {"scale", text_of(view->drawing_scaling())},
                    {"painted", paints_at_once > 0      ? "at once"
                                : view->paints > paints ? "later"
                                                        : "-"},
                    {"cursor", cursor()},
                    {"picked", text_of(view->last_selected_entity_id())},
                    {"marks", marks.join(' ')},
                    {"under", shown(*view, pos)}};
        });
        view.reset();
        QVERIFY2(QTest::currentTestFailed() || cursor() == "-", "The view leaves its cursor behind.");
    }

    void cleanup()
    {
        while (QApplication::overrideCursor() != nullptr)
            QApplication::restoreOverrideCursor();
    }
};

QTEST_MAIN(TestView)
#include "view.moc"
