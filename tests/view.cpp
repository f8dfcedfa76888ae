// A view: what it sends to OpenGL, what it shows, and the mouse on it. Runs at single and at twice the display's scale.

#include "helper.h"

#include "Drawing/DraftEntity.h"
#include "GL/GLObject.h"
#include "GL/QGLEditor.h"

namespace
{

/// A view of entities that it owns, with its protected operations in the open.
class View : public QGLEditor
{
public:
    explicit View(double limit, int number = 0) : QGLEditor(nullptr)
    {
        drawing_limit(limit);
        setWindowFlag(Qt::FramelessWindowHint);
        setGeometry(30 + 300 * number, 30, 200, 250);
        show();
        if (!QTest::qWaitForWindowExposed(this))
            qFatal("the view does not show");
        makeCurrent();
    }

    GLObject& add(int type, const std::vector<double>& coordinates)
    {
        auto& entity = my_entities.emplace_back(new DraftEntity(static_cast<DraftEntity::EntityType>(type)));
        for (unsigned int i = 0; i < coordinates.size(); ++i)
            entity->set_coordinate(coordinates[i], static_cast<DraftEntity::Coordinate>(i % 3), i / 3);
        entity->compute_normal();
        auto* object = new GLObject(entity.get());
        object->local_id(1023 + my_entities.size());
        add_drawing_object(object);
        return *object;
    }

    using QGLEditor::resizeGL;
    int repaints = 0;

protected:
    void paintGL() override
    {
        ++repaints;
        QGLEditor::paintGL();
    }

private:
    std::vector<std::unique_ptr<DraftEntity>> my_entities;
};

/// Values of OpenGL's, rounded to thousandths.
QString told(const GLfloat* values, int quantity)
{
    QStringList words;
    for (int i = 0; i < quantity; ++i)
        words += QString::number(std::round(values[i] * 1000.0) / 1000);
    return words.join(' ');
}

void note_state(const char* name, GLenum state, int quantity)
{
    GLfloat values[16] = {};
    glGetFloatv(state, values);
    note(name, told(values, quantity));
}

} // namespace

class TestView : public QObject
{
    Q_OBJECT

private slots:
    void sets_up_its_context()
    {
        const View first(25);
        View view(7, 1);
        play([&](const QString& step) { // the size and the limit
            const QStringList words = step.split(' ');
            view.drawing_limit(words[2].toDouble());
            glMatrixMode(GL_MODELVIEW);
            glRotatef(30, 1, 0, 0);
            view.resizeGL(words[0].toInt(), words[1].toInt());
            note_state("viewport", GL_VIEWPORT, 4);
            note_state("projection", GL_PROJECTION_MATRIX, 16);
            note_state("model", GL_MODELVIEW_MATRIX, 16);
        });
        std::vector<int> state;
        for (const GLenum name : {GL_LIGHTING, GL_LIGHT0, GL_LIGHT1, GL_AUTO_NORMAL, GL_NORMALIZE, GL_DEPTH_TEST,
                                  GL_DEPTH_WRITEMASK, GL_CULL_FACE, GL_LIGHT_MODEL_LOCAL_VIEWER,
                                  GL_LIGHT_MODEL_TWO_SIDE, GL_FRONT_FACE, GL_DEPTH_FUNC, GL_MATRIX_MODE})
            glGetIntegerv(name, &state.emplace_back());
        QCOMPARE(state, (std::vector<int>{1, 1, 1, 1, 1, 1, 1, 0, 0, 0, GL_CW, GL_LESS, GL_MODELVIEW}));
        GLfloat values[28] = {};
        glGetFloatv(GL_LIGHT_MODEL_AMBIENT, values);
        for (const int light : {0, 1})
            for (const int name : {0, 1, 3}) // GL_AMBIENT, GL_DIFFUSE and GL_POSITION
                glGetLightfv(GL_LIGHT0 + light, GL_AMBIENT + name, values + 4 + 12 * light + 4 * (name - name / 3));
        QCOMPARE(told(values, 28), QString("0.2 0.2 0.2 1 0 0 0 1 1 1 1 1 0 0 -250 0 0 0 0 1 1 1 1 1 0 0 250 0"));
        QVERIFY(view.format().doubleBuffer());
        const QString version = reinterpret_cast<const char*>(glGetString(GL_VERSION));
        QCOMPARE(view.version_of_OpenGL(), "v." + version + ", ");
        view.doneCurrent();
        QCOMPARE(view.version_of_OpenGL(), QString("v.unknown, "));
    }

    void is_lit_whatever_the_first_limit()
    {
        if (!qEnvironmentVariableIsSet("LIMIT"))
            return play([](const QString& limit) { note(run_alone("LIMIT", limit)); });
        const double limit = qgetenv("LIMIT").toDouble();
        const View first(limit);
        GLfloat position[4] = {};
        glGetLightfv(GL_LIGHT1, GL_POSITION, position);
        QVERIFY(limit < 1e-15 || !(limit <= 1e15) || position[2] == static_cast<float>(10 * limit));
        View view(1, 1);
        view.add(2, {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0}).rendering(GLObject::SOLID);
        view.update();
        QTRY_COMPARE(shown(view, {100, 100}), QColor(Qt::white));
    }

    void keeps_what_it_is_given()
    {
        View view(1);
        const auto tell = [&] {
            note(view.drawing_rotation(), "|", view.drawing_translation(), "|", view.drawing_scaling(),
                 view.drawing_source_scaling(), view.drawing_limit(), view.orientation());
        };
        play([&](const QString& /*step*/) {
            tell();
            note(view.drawing_rotation({10, 20, 30}), view.drawing_translation({0.5, -0.25, 0.125}),
                 view.drawing_scaling(2), view.drawing_source_scaling(3), view.drawing_limit(4));
            view.updateGL();
            note_state("model", GL_MODELVIEW_MATRIX, 16);
            for (const int mode : {6, 4}) {
                note(view.orientation(static_cast<QGLEditor::Orientation_Mode>(mode)));
                tell();
            }
            view.set_source_drawing_view();
            tell();
            GLObject& object = view.add(0, {});
            note(object.local_id(), object.rendering(), object.mark(), object.thickness(), object.basic_color(),
                 object.select_color(), view.get_drawing_object(0) == &object, view.get_drawing_object(1) == nullptr);
            note(object.local_id(9), object.rendering(GLObject::SOLID), object.thickness(2),
                 object.basic_color({1, 2, 3}), object.select_color({4, 5, 6}), object.basic_color());
            note(object.set_mark(6), object.set_mark(3), object.del_mark(2 + 8), object.mark(),
                 object.check_mark(4 + 1), object.check_mark(2 + 1), object.check_mark(0), object.check_any_mark(2 + 1),
                 object.check_any_mark(2 + 8));
            object.clear_mark();
            std::vector<GLObject*> objects;
            view.swap_drawing_objects(objects);
            note(object.mark(), objects.size(), view.quantity_of_drawing_objects());
            view.swap_drawing_objects(objects);
            view.clear_drawing_objects();
            note(view.quantity_of_drawing_objects());
        });
    }

    void draws_objects()
    {
        View view(1);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(0, 100, 0, 100, 0, -100);
        glViewport(0, 0, 100, 100);
        play([&](const QString& step) { // an entity's type, a rendering, a mark, and a name
            const QStringList words = step.split(' ');
            GLObject& object = view.add(words[0].toInt(), {1, 2, 3, 4, 2, 3, 4, 5, 3, 1, 5, 6});
            object.thickness(3);
            object.rendering(static_cast<GLObject::DRendering>(words[1].toInt()));
            object.set_mark(words[2].toUInt());
            glPushAttrib(GL_ALL_ATTRIB_BITS);
            glPointSize(7);
            glLineWidth(7);
            GLfloat values[200] = {};
            glFeedbackBuffer(200, GL_3D_COLOR, values);
            glRenderMode(GL_FEEDBACK);
            object.draw();
            note("sends", told(values, glRenderMode(GL_RENDER)));
            glGetMaterialfv(GL_FRONT, GL_DIFFUSE, values);
            glGetMaterialfv(GL_BACK, GL_DIFFUSE, values + 4);
            glGetFloatv(GL_LIGHTING, values + 8);
            glGetFloatv(GL_POINT_SIZE, values + 9);
            glGetFloatv(GL_LINE_WIDTH, values + 10);
            note("leaves", told(values, 11));
            note_state("normal", GL_CURRENT_NORMAL, 3);
            glPopAttrib();
        });
    }

    void shows_what_is_lit_and_in_front()
    {
        View view(1);
        view.add(2, {-0.5, -0.5, 0.25, 0.5, -0.5, 0.25, 0.5, 0.5, 0.25, -0.5, 0.5, 0.25}).rendering(GLObject::SOLID);
        view.add(1, {-0.9, 0.0075, 0.2, 0.9, 0.0075, 0.2}).set_mark(selected);
        play(
            [&](const QString& step) { // an angle about the x axis, one about the y axis, and how far upwards
                const QStringList words = step.split(' ');
                view.drawing_rotation({words[0].toDouble(), words[1].toDouble(), 0});
                view.drawing_translation({0, words[2].toDouble(), 0});
                view.update();
            },
            [&] {
                for (const QPoint pos : {QPoint(100, 124), QPoint(100, 120), QPoint(20, 124), QPoint(120, 50)})
                    note(pos, shown(view, pos).name());
            });
    }

    void follows_the_mouse()
    {
        std::unique_ptr<View> views[] = {std::make_unique<View>(1, 0), std::make_unique<View>(1, 1)};
        View& first = *views[0];
        first.add(1, {-1, -0.0025, 0.5, 1, -0.0025, 0.5});             // far
        first.add(1, {0.0025, -1, -0.5, 0.0025, 1, -0.5}).set_mark(5); // near
        first.add(2, {0.5, 0.5, -0.9, 0.9, 0.5, 0.9, 0.9, 0.9, 0.9, 0.5, 0.9, -0.9}).rendering(GLObject::SOLID);
        first.add(0, {-0.4975, -0.5025, 0}); // two in one place
        first.add(0, {-0.4975, -0.5025, 0});
        first.add(0, {-0.4975, 0.4975, -0.5}); // and a line that begins before it
        first.add(1, {-0.4975, 0.4975, 0.9, -0.4975, 0.4975, -0.9});
        for (int i = 0; i < 200; ++i) // more than a pick takes, each nearer than the one before
            first.add(0, {0.5025, -0.5025, -0.001 * i});
        View* view = nullptr;
        QPoint pos;
        QApplication::setOverrideCursor(Qt::WaitCursor);
        play(
            [&](const QString& step) { // a view, an event, its position or delta, a button, and the buttons held
                const QStringList words = step.split(' ');
                const auto type = QMetaEnum::fromType<QEvent::Type>().keyToValue(words[1].toLatin1());
                const QMetaEnum buttons = QMetaEnum::fromType<Qt::MouseButtons>();
                view = views[words[0].toInt()].get();
                views[1]->makeCurrent();
                view->repaints = 0;
                pos = {words[2].toInt(), words[3].toInt()};
                if (type == QEvent::Wheel) {
                    QWheelEvent event(pos, pos, {}, pos, {}, {}, Qt::NoScrollPhase, false);
                    event.ignore();
                    QCoreApplication::sendEvent(view, &event);
                    note("accepted", event.isAccepted());
                } else {
                    QMouseEvent event(static_cast<QEvent::Type>(type), pos,
                                      static_cast<Qt::MouseButton>(buttons.keyToValue(words[4].toLatin1())),
                                      static_cast<Qt::MouseButtons>(buttons.keysToValue(words[5].toLatin1())), {});
                    QCoreApplication::sendEvent(view, &event);
                }
                note(view->drawing_rotation(), "|", view->drawing_translation(), "|", view->drawing_scaling(),
                     cursor());
                QString marked;
                for (unsigned long i = 0; i < view->quantity_of_drawing_objects(); ++i)
                    if (view->get_drawing_object(i)->mark() != 0)
                        marked += QString("%1:%2 ").arg(i).arg(view->get_drawing_object(i)->mark());
                note("picked", view->last_selected_entity_id(), "marked", marked);
                note("repainted", view->repaints);
            },
            [&] { note("repainted", view->repaints, shown(*view, pos).name()); });
        views[1].reset();
        QCOMPARE(cursor(), QString("PointingHandCursor")); // the other view's
        views[0].reset();
        QCOMPARE(cursor(), QString("-"));
    }

    void lets_choose_the_background()
    {
        View view(1, 0), another(1, 1);
        QString choice;
        const User user([&](QWidget* window) {
            auto* dialog = qobject_cast<QColorDialog*>(window);
            note("preset", dialog->currentColor().name());
            dialog->setCurrentColor(choice);
            another.makeCurrent(); // as its repaint would
            static_cast<QDialog*>(dialog)->done(choice == "none" ? QDialog::Rejected : QDialog::Accepted);
        });
        const auto choose = [&](const QString& color) {
            choice = color;
            QMouseEvent event(QEvent::MouseButtonDblClick, {5, 5}, Qt::RightButton, Qt::RightButton, {});
            QCoreApplication::sendEvent(&view, &event);
        };
        if (qgetenv("QT_XCB_GL_INTEGRATION") == "none") // there is nothing to look at, and nothing crashes
            return choose("blue");
        play(choose, [&] { note(shown(view, {50, 50}).name(), shown(another, {50, 50}).name()); });
        QCOMPARE(run_alone("QT_XCB_GL_INTEGRATION", "none"), 0);
    }
};

QTEST_MAIN(TestView)
#include "view.moc"
