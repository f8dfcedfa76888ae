// A view: what it sends to OpenGL, what the screen shows, and the mouse on it. Runs at twice the display's scale, too.

#include "view.h"
#include "helper.h"

#include "GL/GLObject.h"

#include <GL/glu.h>

#include <cmath>
#include <memory>

namespace
{

std::unique_ptr<View> view_of(const QStringList& entities, int x = 30)
{
    return std::make_unique<View>(write_file("view.dxf", dxf(entities)), QRect(x, 30, 200, 250));
}

/// To a thousandth.
QString rounded(const std::vector<double>& values, const char* between = " ")
{
    QStringList texts;
    for (const double value : values)
        texts += QString::number(std::round(value * 1000) / 1000 + 0.0); // without a negative zero
    return texts.join(between);
}

QString xyz(const DRVect3d& vector)
{
    return rounded({vector.x(), vector.y(), vector.z()});
}

QString state_of(GLenum name, std::size_t count)
{
    std::vector<double> values(16);
    glGetDoublev(name, values.data());
    values.resize(count);
    return rounded(values);
}

/// The primitives in a feedback buffer, each corner as x,y,z, with the color where it changes.
QString primitives(const GLfloat* values, const GLfloat* end)
{
    QString text, last_color;
    while (values < end) {
        const auto token = static_cast<int>(*values++);
        const int corners = token == GL_POINT_TOKEN ? 1 : token == GL_POLYGON_TOKEN ? static_cast<int>(*values++) : 2;
        text += corners == 1 ? " point" : corners == 2 ? " line" : " polygon";
        for (int i = 0; i < corners; ++i, values += 7) {
            text += " " + rounded({values[0], values[1], 10 * values[2]}, ",");
            const QString color = QColor::fromRgbF(values[3], values[4], values[5]).name();
            text += color != last_color ? " " + color : "";
            last_color = color;
        }
    }
    return text.trimmed();
}

} // namespace

class TestView : public QObject
{
    Q_OBJECT

private slots:
    void draws_objects()
    {
        const auto view = view_of(section("objects"));
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(0, 20, 0, 20, 0, -20);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glScaled(2, 2, 2);
        glViewport(0, 0, 10, 10);
        const auto act = [&](const QString& step) { // ENTITY RENDERING mark MARK
            const QStringList words = step.split(' ');
            const QStringList names{"point", "line", "face", "slanted", "POINT", "WIREFRAME", "SOLID"};
            GLObject& object = *view->get_drawing_object(names.indexOf(words[0]));
            object.thickness(3);
            object.rendering(static_cast<GLObject::DRendering>(names.indexOf(words[1]) - 4));
            object.clear_mark();
            object.set_mark(words[3].toUInt());
            GLfloat values[200] = {};
            glPointSize(7);
            glLineWidth(7);
            glFeedbackBuffer(200, GL_3D_COLOR, values);
            glRenderMode(GL_FEEDBACK);
            object.draw();
            note("sends", primitives(values, values + glRenderMode(GL_RENDER)));
        };
        play(act, [] {
            GLfloat back[4] = {};
            glGetMaterialfv(GL_BACK, GL_DIFFUSE, back);
            return State{{"back", rounded({back[0], back[1], back[2]})},
                         {"lighting", state_of(GL_LIGHTING, 1)},
                         {"normal", state_of(GL_CURRENT_NORMAL, 3)},
                         {"size", state_of(GL_POINT_SIZE, 1)},
                         {"width", state_of(GL_LINE_WIDTH, 1)}};
        });
    }

    /// Runs in a process of its own for each LIMIT, too, for the first view of a process sets the lights.
    void shows_what_is_lit_and_in_front()
    {
        const auto first = view_of({"POINT " + qgetenv("LIMIT")}, 330);
        for (const double side : {-10, 10}) {
            GLfloat position[4] = {};
            glGetLightfv(side < 0 ? GL_LIGHT0 : GL_LIGHT1, GL_POSITION, position);
            const double distance = side * first->drawing_limit();
            QVERIFY(!(qAbs(distance) > 1e-19 && qAbs(distance) < 1e19) || position[2] == static_cast<float>(distance));
        }
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
        std::unique_ptr<View> views[] = {view_of(entities), view_of({"POINT 4.0"}, 330)};
        views[0]->get_drawing_object(1)->set_mark(5);
        views[0]->get_drawing_object(2)->rendering(GLObject::SOLID);
        View* view = nullptr;
        QPoint pos;
        QString color;
        int paints = 0;
        int paints_at_once = 0;
        int events_sent = 0;
        const User user([&](QWidget* window) {
            auto* dialog = qobject_cast<QColorDialog*>(window);
            note("dialog", dialog->currentColor().name());
            dialog->setCurrentColor(color);
            views[1]->makeCurrent(); // as its repaint would
            static_cast<QDialog*>(dialog)->done(color == "nothing" ? QDialog::Rejected : QDialog::Accepted);
        });
        QApplication::setOverrideCursor(Qt::WaitCursor);
        const QRegularExpression form("(other )?(\\S+) ?(\\S*) at (\\S+) (\\S+)(?: with (\\S+))?(?: choosing (\\S+))?");
        const auto act = [&](const QString& step) {
            QStringList words = form.match(step).capturedTexts();
            words.resize(8);
            view = views[words[1].isEmpty() ? 0 : 1].get();
            pos = {words[4].toInt(), words[5].toInt()};
            color = words[7];
            const auto buttons = [&](QString text) {
                text = text.isEmpty() ? "NoButton" : text.replace("+", "Button|") + "Button";
                return Qt::MouseButtons(QMetaEnum::fromType<Qt::MouseButtons>().keysToValue(text.toLatin1()));
            };
            const auto types = QMetaEnum::fromType<QEvent::Type>();
            const QByteArray verb = words[2].toLatin1();
            const auto type =
                static_cast<QEvent::Type>(qMax(types.keyToValue(verb), types.keyToValue("MouseButton" + verb)));
            const Qt::MouseButtons button = buttons(words[3]);
            QWheelEvent wheel({}, {}, {}, pos, {}, {}, Qt::NoScrollPhase, false);
            QMouseEvent mouse(type, pos, pos, static_cast<Qt::MouseButton>(button.toInt()),
                              buttons(words[6]) | (type == QEvent::MouseButtonRelease ? Qt::NoButton : button), {});
            QEvent& event = type == QEvent::Wheel ? static_cast<QEvent&>(wheel) : mouse;
            event.ignore();
            views[1]->makeCurrent();
            paints = view->paints;
            events_sent = type == QEvent::MouseMove ? 2 : 1; // both within a frame
            if (words[2] == "Resize")
                view->resize(pos.x(), pos.y());
            else
                for (int i = 0; i < events_sent; ++i)
                    QCoreApplication::sendEvent(view, &event);
            paints_at_once = view->paints - paints;
            if (event.isAccepted())
                note("accepted", "yes");
            QTest::qWait(20); // for a second paint
        };
        play(act, [&]() -> State {
            QString painted = view->paints == paints ? "-" : paints_at_once < events_sent ? "later" : "at once";
            if (!color.isEmpty()) // the dialog uncovers views when it goes
                painted = "?";
            else if (view->paints > paints + events_sent)
                painted += ", and again";
            QStringList marks;
            for (unsigned long i = 0; i < view->quantity_of_drawing_objects(); ++i)
                if (const unsigned int mark = view->get_drawing_object(i)->mark())
                    marks += QString("%1:%2").arg(1024 + i).arg(mark);
            view->makeCurrent();
            GLdouble model[16], projection[16], window[3];
            GLint viewport[4];
            glGetDoublev(GL_MODELVIEW_MATRIX, model);
            glGetDoublev(GL_PROJECTION_MATRIX, projection);
            glGetIntegerv(GL_VIEWPORT, viewport);
            gluProject(0.5, 0.2, 0.1, model, projection, viewport, window, window + 1, window + 2);
            const qreal pixels = view->devicePixelRatio();
            return {{"rotation", xyz(view->drawing_rotation())},
                    {"translation", xyz(view->drawing_translation())},
                    {"scale", rounded({view->drawing_scaling()})},
                    {"point", rounded({window[0] / pixels, view->height() - window[1] / pixels, window[2]})},
                    {"painted", painted},
                    {"cursor", cursor()},
                    {"picked", text_of(view->last_selected_entity_id())},
                    {"marks", marks.join(' ')},
                    {"under", shown(*view, pos)}};
        });
        views[1].reset();
        QVERIFY(QTest::currentTestFailed() || cursor() == "PointingHandCursor"); // the other view's
    }

    void cleanup()
    {
        while (QApplication::overrideCursor() != nullptr)
            QApplication::restoreOverrideCursor();
    }
};

QTEST_MAIN(TestView)
#include "view.moc"
