// The view's OpenGL state, projection, drawing pass, orientations and mouse handling.

#include "QGLEditor.h"

#include "GLObject.h"

#include <GL/glu.h>
#include <QApplication>
#include <QColorDialog>
#include <QMouseEvent>
#include <QPointer>
#include <QWheelEvent>

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>

namespace
{

struct Angles {
    GLdouble x, y, z;
};

/// In degrees, by orientation mode.
constexpr std::array<Angles, 6> orientation_angles{{
    {0, 0, 0},   // FRONT
    {0, 180, 0}, // BACK
    {0, 90, 0},  // LEFT
    {0, -90, 0}, // RIGHT
    {90, 0, 0},  // TOP
    {-90, 0, 0}, // BOTTOM
}};

constexpr unsigned int bufMaxSize = 512;

/// The size of a hit record if the name stack holds one name: the number of names, the minimal and the maximal depth,
/// the name.
constexpr unsigned int entries_per_hit = 4;

/// The name in the hit record with the smallest depth, minimal or maximal; the first one if several are equal.
GLuint front_name(const GLuint* buffer, unsigned long count)
{
    const auto depth = [](const GLuint* hit) { return std::min(hit[1], hit[2]); };
    const GLuint* front = buffer;
    for (unsigned long i = 1; i < count; ++i) {
        const GLuint* hit = buffer + entries_per_hit * i;
        if (depth(hit) < depth(front))
            front = hit;
    }
    return front[3];
}

/// Two opposite directional lights on the z axis of eye space, so that a face is lit alike from both sides.
void set_up_lights(double limit)
{
    // Static: the first view of the process sets the positions for all. The distance of directional lights does not
    // matter, but OpenGL normalises their positions: the square of the distance must fit into a float, even if the
    // limit is 0, infinite or NaN.
    static const auto distance = static_cast<GLfloat>(std::fmin(std::fmax(10.0 * limit, 1e-19), 1e19));
    static const GLfloat position0[] = {0.0F, 0.0F, -distance, 0.0F};
    static const GLfloat position1[] = {0.0F, 0.0F, distance, 0.0F};
    const GLfloat ambient[] = {0.0F, 0.0F, 0.0F, 1.0F};
    const GLfloat diffuse[] = {1.0F, 1.0F, 1.0F, 1.0F};
    glLightfv(GL_LIGHT0, GL_AMBIENT, ambient);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, diffuse);
    glLightfv(GL_LIGHT0, GL_POSITION, position0);
    glLightfv(GL_LIGHT1, GL_AMBIENT, ambient);
    glLightfv(GL_LIGHT1, GL_DIFFUSE, diffuse);
    glLightfv(GL_LIGHT1, GL_POSITION, position1);

    const GLfloat lmodelAmbient[] = {0.2F, 0.2F, 0.2F, 1.0F};
    const GLfloat localView[] = {0.0F};
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, lmodelAmbient);
    glLightModelfv(GL_LIGHT_MODEL_LOCAL_VIEWER, localView);
}

} // namespace

QGLEditor::QGLEditor(QWidget* parent) : QGLWidget(parent, nullptr, Qt::WindowFlags())
{
    setFormat(QGLFormat(QGL::DoubleBuffer | QGL::DepthBuffer));
}

QGLEditor::~QGLEditor()
{
    give_back_cursors();
    clear_drawing_objects();
}

DRVect3d QGLEditor::drawing_rotation(DRVect3d some_vect)
{
    rotationX = some_vect.x();
    rotationY = some_vect.y();
    rotationZ = some_vect.z();
    return drawing_rotation();
}

DRVect3d QGLEditor::drawing_translation(DRVect3d some_vect)
{
    translationX = some_vect.x();
    translationY = some_vect.y();
    translationZ = some_vect.z();
    return drawing_translation();
}

GLObject* QGLEditor::get_drawing_object(unsigned long some_number) const
{
    return some_number < drw_globjects.size() ? drw_globjects[some_number] : nullptr;
}

void QGLEditor::clear_drawing_objects()
{
    for (const GLObject* object : drw_globjects)
        delete object;
    drw_globjects.clear();
}

QGLEditor::Orientation_Mode QGLEditor::orientation(Orientation_Mode some_orientation)
{
    const auto index = static_cast<std::size_t>(some_orientation);
    if (index < orientation_angles.size()) {
        const Angles& angles = orientation_angles[index];
        rotationX = angles.x;
        rotationY = angles.y;
        rotationZ = angles.z;
    }
    return drw_orientation = some_orientation;
}

void QGLEditor::set_source_drawing_view()
{
    orientation(FRONT);
    drawing_translation(DRVect3d());
    drw_scaling = drw_src_scaling;
}

QString QGLEditor::version_of_OpenGL()
{
    makeCurrent();
    const GLubyte* version = glGetString(GL_VERSION);
    const char* text = version != nullptr ? reinterpret_cast<const char*>(version) : "unknown";
    return QString("v.%1, ").arg(text);
}

void QGLEditor::initializeGL()
{
    qglClearColor(Qt::darkGray);
    glDisable(GL_CULL_FACE);
    set_up_lights(drw_limit);
    // The smaller z is in front but x points to the right, so the picture is a mirror image: a face whose normal points
    // to the eye appears clockwise.
    glFrontFace(GL_CW);
    for (const GLenum capability : {GL_LIGHTING, GL_LIGHT0, GL_LIGHT1, GL_AUTO_NORMAL, GL_NORMALIZE, GL_DEPTH_TEST})
        glEnable(capability);
    glDepthFunc(GL_LESS);
}

void QGLEditor::resizeGL(int wwidth, int wheight)
{
    glViewport(0, 0, wwidth, wheight);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glDepthMask(GL_TRUE);
    glEnable(GL_DEPTH_TEST);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    perspective_transformation(wwidth, wheight);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

void QGLEditor::perspective_transformation(int cur_wwidth, int cur_wheight)
{
    const double aspect = static_cast<double>(std::max(cur_wwidth, 1)) / std::max(cur_wheight, 1);
    double left = -1.0;
    double right = 1.0;
    double bottom = -1.0;
    double top = 1.0;
    // Near is +limit and far -limit, so that GL_LESS keeps the surface with the smaller z.
    const double near = drw_limit;
    const double far = -drw_limit;
    if (aspect < 1) {
        bottom = -1 / aspect;
        top = 1 / aspect;
    } else {
        left = -aspect;
        right = aspect;
    }
    glOrtho(left, right, bottom, top, near, far);
}

void QGLEditor::paintGL()
{
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    draw();
}

void QGLEditor::draw()
{
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glTranslated(translationX, translationY, translationZ);
    glScaled(drw_scaling, drw_scaling, drw_scaling);
    glRotated(rotationX, 1, 0, 0);
    glRotated(rotationY, 0, 1, 0);
    glRotated(rotationZ, 0, 0, 1);
    for (GLObject* object : drw_globjects)
        object->draw();
}

void QGLEditor::mousePressEvent(QMouseEvent* event)
{
    lastPos = event->position().toPoint();
    if (event->buttons() == event->button())
        give_back_cursors(); // left by a press whose release went to another window
    if (event->buttons().testFlags(Qt::LeftButton | Qt::RightButton))
        push_cursor(Qt::SizeAllCursor);
    else if (event->buttons().testAnyFlags(Qt::LeftButton | Qt::RightButton))
        push_cursor(Qt::PointingHandCursor);
}

void QGLEditor::mouseReleaseEvent(QMouseEvent* /*event*/)
{
    QApplication::restoreOverrideCursor();
    my_cursors = std::max(my_cursors - 1, 0);
}

void QGLEditor::push_cursor(Qt::CursorShape shape)
{
    QApplication::setOverrideCursor(shape);
    ++my_cursors;
}

void QGLEditor::give_back_cursors()
{
    for (; my_cursors > 0; --my_cursors)
        QApplication::restoreOverrideCursor();
}

void QGLEditor::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint moved = event->position().toPoint() - lastPos;
    const double dx = static_cast<double>(moved.x()) / std::max(width(), 1);
    const double dy = static_cast<double>(moved.y()) / std::max(height(), 1);
    bool changed = true;
    if (event->buttons().testFlags(Qt::LeftButton | Qt::RightButton)) {
        translationX += dx;
        translationY -= dy;
    } else if (event->buttons().testFlag(Qt::LeftButton)) {
        rotationX += 180 * dy;
        rotationY += 180 * dx;
    } else if (event->buttons().testFlag(Qt::RightButton)) {
        rotationX += 180 * dy;
        rotationZ += 180 * dx;
    } else {
        changed = false;
    }
    if (changed)
        updateGL();
    lastPos = event->position().toPoint();
}

void QGLEditor::wheelEvent(QWheelEvent* event)
{
    const QPoint turned = event->angleDelta(); // in x while Alt is held
    const double numDegrees = -(turned.x() + turned.y()) / 8.0;
    const double numSteps = numDegrees / 15.0;
    drw_scaling = std::pow(1.125, numSteps) * drw_scaling;
    update();
    event->accept(); // wheel events start out ignored, and Qt passes ignored events on to the parents
}

void QGLEditor::mouseDoubleClickEvent(QMouseEvent* event)
{
    const QPointer<QGLEditor> view = this; // null if it is deleted while the dialog is open
    if (event->buttons().testFlag(Qt::LeftButton)) {
        select_at(event->position().toPoint());
    } else if (event->buttons().testFlag(Qt::RightButton)) {
        const QColor newBgColor = QColorDialog::getColor(Qt::white, nullptr);
        if (view != nullptr && newBgColor.isValid()) {
            makeCurrent();
            qglClearColor(newBgColor);
        }
    }
    if (view != nullptr)
        update();
}

unsigned long QGLEditor::entityIdAtPosition(const QPoint& pos, unsigned int MaxSize, GLuint* buffer)
{
    makeCurrent();
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    glSelectBuffer(static_cast<GLsizei>(MaxSize), buffer);
    glRenderMode(GL_SELECT);
    glInitNames();
    glPushName(0);

    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    // The viewport is in screen pixels, `pos` in widget pixels.
    const qreal pixels = devicePixelRatio();
    gluPickMatrix(pos.x() * pixels, viewport[3] - pos.y() * pixels, 3.0 * pixels, 3.0 * pixels, viewport);
    perspective_transformation(width(), height());
    draw();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    return static_cast<GLuint>(glRenderMode(GL_RENDER));
}

void QGLEditor::select_at(const QPoint& pos)
{
    GLuint sel_buffer[bufMaxSize] = {};
    const unsigned long sel_entity_quantity = entityIdAtPosition(pos, bufMaxSize, sel_buffer);
    for (GLObject* object : drw_globjects)
        object->del_mark(selected);
    my_last_selected_entity_id = 0;
    if (sel_entity_quantity == 0)
        return;

    // OpenGL reports an overflow as -1; the buffer is then full.
    const unsigned long loc_sel_entity_quantity =
        std::min<unsigned long>(sel_entity_quantity, bufMaxSize / entries_per_hit);
    my_last_selected_entity_id = front_name(sel_buffer, loc_sel_entity_quantity);

    // Ids are consecutive in list order.
    GLObject* first = get_drawing_object(0);
    GLObject* hit = first != nullptr ? get_drawing_object(my_last_selected_entity_id - first->local_id()) : nullptr;
    if (hit != nullptr && hit->local_id() == my_last_selected_entity_id)
        hit->set_mark(selected);
}
