// What a view shows: its projection and matrices, its lights, and pixels of points, lines and faces.

#include "helper.h"

namespace
{

QMatrix4x4 matrix(GLenum name)
{
    GLfloat values[16] = {};
    glGetFloatv(name, values);
    return QMatrix4x4(values).transposed();
}

/// A light's position, ambient and diffuse colour.
QString light(GLenum name)
{
    GLfloat v[12] = {};
    glGetLightfv(name, GL_POSITION, v);
    glGetLightfv(name, GL_AMBIENT, v + 4);
    glGetLightfv(name, GL_DIFFUSE, v + 8);
    QString told;
    for (const GLfloat value : v) told += QString::number(value) + " ";
    return told;
}

const QColor grey(128, 128, 128), white(245, 245, 245), magenta(255, 0, 255);

} // namespace

class TestView : public QObject
{
    Q_OBJECT

private slots:
    // First, for the lights take their distance from the first view that the process initialises.
    void lights_are_those_of_the_first_view()
    {
        for (const double limit : {10.0, 1000.0}) {
            View view;
            view.drawing_limit(limit);
            view.show_at(100, 100);
            QCOMPARE(light(GL_LIGHT0), QString("0 0 -100 0 0 0 0 1 1 1 1 1 "));
            QCOMPARE(light(GL_LIGHT1), QString("0 0 100 0 0 0 0 1 1 1 1 1 "));
            for (const GLenum on : {GL_LIGHTING, GL_LIGHT0, GL_LIGHT1, GL_AUTO_NORMAL, GL_NORMALIZE, GL_DEPTH_TEST})
                QVERIFY(glIsEnabled(on));
            for (const GLenum off : {GL_CULL_FACE, GL_COLOR_MATERIAL, GL_LIGHT_MODEL_TWO_SIDE, GL_BLEND})
                QVERIFY(!glIsEnabled(off));
            GLint front = 0, depth = 0;
            glGetIntegerv(GL_FRONT_FACE, &front);
            glGetIntegerv(GL_DEPTH_FUNC, &depth);
            QVERIFY(front == GL_CW && depth == GL_LESS);
        }
    }

    void projection()
    {
        const struct {
            int width, height;
            double limit;
            QVector3D scales; // 1 / limit for z, for near is +limit
        } rows[] = {{800, 600, 25, {0.75F, 1, 0.04F}}, {600, 800, 25, {1, 0.75F, 0.04F}}, {500, 500, 2, {1, 1, 0.5F}},
            {800, 600, 0, {1, 1, 1}}, {0, 0, 2, {1, 1, 0.5F}}, {4, 0, 2, {0.25F, 1, 0.5F}}};
        View view;
        view.show_at(100, 100);
        for (const auto& row : rows) {
            view.drawing_limit(row.limit);
            view.resizeGL(row.width, row.height);
            QMatrix4x4 expected;
            expected.scale(row.scales);
            QCOMPARE(matrix(GL_PROJECTION_MATRIX), expected);
            GLint viewport[4] = {};
            glGetIntegerv(GL_VIEWPORT, viewport);
            QVERIFY(viewport[2] == row.width && viewport[3] == row.height);
        }
    }

    void model_is_turned_scaled_and_moved()
    {
        View view;
        view.show_at(100, 100);
        view.drawing_rotation({10, 20, 30});
        view.drawing_translation({0.5, -0.25, 0.125});
        view.drawing_scaling(2);
        view.picture();
        QMatrix4x4 expected;
        expected.translate(0.5F, -0.25F, 0.125F);
        expected.scale(2);
        expected.rotate(10, 1, 0, 0);
        expected.rotate(20, 0, 1, 0);
        expected.rotate(30, 0, 0, 1);
        QVERIFY(qFuzzyCompare(matrix(GL_MODELVIEW_MATRIX), expected));

        QCOMPARE(view.orientation(static_cast<QGLEditor::Orientation_Mode>(6)), 6);
        QVERIFY(view.drawing_rotation() == DRVect3d(10, 20, 30));
        view.orientation(QGLEditor::TOP);
        QVERIFY(view.drawing_translation() == DRVect3d(0.5, -0.25, 0.125) && view.drawing_scaling() == 2);
        view.drawing_source_scaling(3);
        view.set_source_drawing_view();
        QVERIFY(view.drawing_rotation() == DRVect3d() && view.drawing_translation() == DRVect3d());
        QVERIFY(view.drawing_scaling() == 3 && view.orientation() == QGLEditor::FRONT);
    }

    void orientations_show_different_sides()
    {
        View view;
        view.show_at(200, 200);
        view.add(DraftEntity::Point, {0.3, 0.5, 0.7})->thickness(9);
        const QPoint places[] = {{130, 50}, {70, 50}, {170, 50}, {30, 50}, {130, 170}, {130, 30}};
        for (int mode = QGLEditor::FRONT; mode <= QGLEditor::BOTTOM; ++mode) {
            view.orientation(static_cast<QGLEditor::Orientation_Mode>(mode));
            for (int i = 0; i < 6; ++i) QCOMPARE(view.picture().pixelColor(places[i]), i == mode ? white : grey);
        }
    }

    void faces_are_lit_and_the_smaller_depth_is_in_front()
    {
        View view;
        view.show_at(200, 200);
        GLObject* square = view.add(
            DraftEntity::Face, {-0.495, -0.495, 0.25, 0.505, -0.495, 0.25, 0.505, 0.505, 0.25, -0.495, 0.505, 0.25});
        QCOMPARE(view.picture().pixelColor(100, 100), grey);
        QCOMPARE(view.picture().pixelColor(50, 100), white); // an edge of the wireframe
        square->rendering(GLObject::SOLID);
        QVERIFY(view.picture().pixelColor(100, 100).lightness() > 250);
        for (const double angle : {60.0, -60.0, 120.0}) { // lit alike, whichever way the normal points
            view.drawing_rotation({angle, 0, 0});
            QVERIFY(qAbs(view.picture().pixelColor(100, 100).lightness() - 133) < 4);
        }
        view.drawing_rotation({0, 0, 0});
        view.add(DraftEntity::Line, {-1, 0.005, 0.2, 1, 0.005, 0.2})->set_mark(selected);
        QCOMPARE(view.picture().pixelColor(100, 99), magenta);
        view.drawing_rotation({0, 180, 0});
        QVERIFY(view.picture().pixelColor(100, 99).lightness() > 250);
        QCOMPARE(view.picture().pixelColor(20, 99), magenta);
    }

    void tells_the_version_of_OpenGL()
    {
        View view;
        view.show_at(100, 100);
        const QString version = reinterpret_cast<const char*>(glGetString(GL_VERSION));
        QCOMPARE(view.version_of_OpenGL(), "v." + version + ", ");
        QOpenGLContext::currentContext()->doneCurrent();
        QCOMPARE(view.version_of_OpenGL(), QString("v.unknown, "));
    }
};

TOLMERA_TEST(TestView)
#include "view.moc"
