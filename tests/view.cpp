// A view: what it sends to OpenGL, what it shows, and the mouse on it. Runs at single and at twice the display's scale.

#include "helper.h"

#include "GL/GLObject.h"
#include "GUI/File/MyGlMDIChild.h"

#include <memory>
#include <vector>

namespace
{

/// A view of the drawing in a section of texts.txt, with its protected operations in the open.
class View : public MyGlMDIChild
{
public:
    explicit View(const QString& entities, int number = 0) : MyGlMDIChild(nullptr)
    {
        loadFile(write_file("view.dxf", dxf(entities.toLatin1().split('\n'))));
        setWindowFlag(Qt::FramelessWindowHint);
        setGeometry(30 + 300 * number, 30, 200, 250);
        show();
        (void)QTest::qWaitForWindowExposed(this);
        makeCurrent();
    }

    using QGLEditor::resizeGL;
    int repaints = 0;

protected:
    void paintGL() override
    {
        ++repaints;
        QGLEditor::paintGL();
    }
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
        const View first("POINT 25.0 0.0 0.0");
        View view("POINT 7.0 0.0 0.0", 1);
        play([&](const QString& step) { // a size and a limit
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
        for (const int name :
             {GL_LIGHT0, GL_LIGHT1, GL_AUTO_NORMAL, GL_NORMALIZE, GL_DEPTH_TEST, GL_DEPTH_WRITEMASK, GL_DOUBLEBUFFER,
              GL_CULL_FACE, GL_LIGHT_MODEL_LOCAL_VIEWER, GL_FRONT_FACE, GL_DEPTH_FUNC, GL_MATRIX_MODE})
            glGetIntegerv(name, &state.emplace_back());
        QCOMPARE(state, (std::vector<int>{1, 1, 1, 1, 1, 1, 1, 0, 0, GL_CW, GL_LESS, GL_MODELVIEW}));
        GLfloat values[28] = {};
        glGetFloatv(GL_LIGHT_MODEL_AMBIENT, values);
        for (int i = 0; i < 6; ++i) // GL_AMBIENT, GL_DIFFUSE and GL_POSITION of each light
            glGetLightfv(GL_LIGHT0 + i / 3, GL_AMBIENT + i % 3 + i % 3 / 2, values + 4 + 4 * i);
        QCOMPARE(told(values, 28), QString("0.2 0.2 0.2 1 0 0 0 1 1 1 1 1 0 0 -250 0 0 0 0 1 1 1 1 1 0 0 250 0"));
        const QString version = reinterpret_cast<const char*>(glGetString(GL_VERSION));
        QCOMPARE(view.version_of_OpenGL(), "v." + version + ", ");
    }

    void draws_objects()
    {
        const View view(section("objects"));
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(0, 100, 0, 100, 0, -100);
        glViewport(0, 0, 100, 100);
        play([&](const QString& step) { // the number of an object, a rendering, a mark, and a name
            const QStringList words = step.split(' ');
            GLObject& object = *view.get_drawing_object(words[0].toULong());
            object.thickness(3);
            object.rendering(static_cast<GLObject::DRendering>(words[1].toInt()));
            object.clear_mark();
            object.set_mark(words[2].toUInt());
            GLfloat values[200] = {};
            glPointSize(7);
            glLineWidth(7);
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
        });
    }

    /// Runs in a process of its own for each limit, too, for the first view of a process sets the lights.
    void shows_what_is_lit_and_in_front()
    {
        const View first("POINT " + qgetenv("LIMIT"), 1);
        const double limit = first.drawing_limit();
        GLfloat position[4] = {};
        glGetLightfv(GL_LIGHT1, GL_POSITION, position);
        QVERIFY(limit < 1e-15 || !(limit <= 1e15) || position[2] == static_cast<float>(10 * limit));
        View view(section("lit"));
        view.get_drawing_object(1)->rendering(GLObject::SOLID);
        view.get_drawing_object(2)->set_mark(selected);
        const auto act = [&](const QString& step) { // an angle about the x axis, one about the y axis, how far upwards
            const QStringList words = step.split(' ');
            view.drawing_rotation({words[0].toDouble(), words[1].toDouble(), 0});
            view.drawing_translation({0, words[2].toDouble(), 0});
            view.update();
        };
        play(act, [&] {
            for (const QPoint pos : {QPoint(100, 124), QPoint(100, 120), QPoint(20, 124), QPoint(120, 50)})
                note(pos, shown(view, pos));
        });
    }

    void follows_the_mouse()
    {
        QString entities = section("picked");
        for (int i = 100; i < 250; ++i) // more than a pick takes, each nearer than the one before
            entities += QString("\nPOINT 0.5025 -0.5025 -0.%1").arg(i);
        std::unique_ptr<View> views[] = {std::make_unique<View>(entities), std::make_unique<View>("POINT 1.0", 1)};
        views[0]->get_drawing_object(1)->set_mark(5);
        views[0]->get_drawing_object(2)->rendering(GLObject::SOLID);
        View* view = nullptr;
        QPoint pos;
        QString color;
        bool is_counting = true;
        const User user([&](QWidget* window) {
            auto* dialog = qobject_cast<QColorDialog*>(window);
            note("preset", dialog->currentColor().name());
            is_counting = false; // the dialog uncovers views when it goes
            dialog->setCurrentColor(color);
            views[1]->makeCurrent(); // as its repaint would
            static_cast<QDialog*>(dialog)->done(color == "none" ? QDialog::Rejected : QDialog::Accepted);
        });
        QApplication::setOverrideCursor(Qt::WaitCursor);
        play(
            [&](const QString& step) { // a view, an event, its position or delta, a button, the buttons held, a color
                const QStringList words = step.split(' ');
                const auto type = QMetaEnum::fromType<QEvent::Type>().keyToValue(words[1].toLatin1());
                const auto buttons = [&](int word) {
                    return QMetaEnum::fromType<Qt::MouseButtons>().keysToValue(words.value(word).toLatin1());
                };
                view = views[words[0].toInt()].get();
                views[1]->makeCurrent();
                view->repaints = 0;
                is_counting = true;
                pos = {words[2].toInt(), words[3].toInt()};
                color = words.value(6);
                QWheelEvent wheel(pos, pos, {}, pos, {}, {}, Qt::NoScrollPhase, false);
                QMouseEvent mouse(static_cast<QEvent::Type>(type), pos, pos, static_cast<Qt::MouseButton>(buttons(4)),
                                  Qt::MouseButtons(buttons(5)), {});
                QEvent& event = type == QEvent::Wheel ? static_cast<QEvent&>(wheel) : mouse;
                event.ignore();
                QCoreApplication::sendEvent(view, &event);
                QString marked;
                for (unsigned long i = 0; i < view->quantity_of_drawing_objects(); ++i)
                    if (const unsigned int mark = view->get_drawing_object(i)->mark())
                        marked += QString("%1:%2 ").arg(i).arg(mark);
                note(view->drawing_rotation(), "|", view->drawing_translation(), "|", view->drawing_scaling(), "|",
                     cursor());
                note("picked", view->last_selected_entity_id(), "marked", marked + "repainted",
                     is_counting ? view->repaints : 0, event.isAccepted());
            },
            [&] {
                note("repainted", is_counting ? view->repaints : 0, shown(*view, pos));
                view->makeCurrent();
                note_state("model", GL_MODELVIEW_MATRIX, 16);
            });
        views[1].reset();
        QCOMPARE(cursor(), QString("PointingHandCursor")); // the other view's
        views[0].reset();
        QCOMPARE(cursor(), QString("-"));
    }

    /// Runs where there is no OpenGL, too.
    void lets_choose_a_background_that_nobody_sees()
    {
        View view("POINT 1.0");
        const User user([](QWidget* dialog) { qobject_cast<QDialog*>(dialog)->accept(); });
        QTest::mouseDClick(&view, Qt::RightButton);
        QCOMPARE(view.isValid(), qgetenv("QT_XCB_GL_INTEGRATION") != "none");
    }
};

QTEST_MAIN(TestView)
#include "view.moc"
