// QGLEditor: the OpenGL view of one drawing, with rotation, translation, zoom and picking by mouse.
// Drawing a single object is left to GLObject, loading a drawing to the drawing window.
#pragma once

#include "Drawing/DRVect3d.h"
#include "QGLWidget.h"

#include <QPoint>
#include <QString>

#include <vector>

class GLObject;

/// A view that has its own OpenGL context and owns the objects of one drawing. Model coordinates are rotated about the
/// model's origin, scaled uniformly and translated, in eye units; the shorter side of the widget spans -1 to 1. No
/// public function repaints: the caller calls update().
class QGLEditor : public QGLWidget
{
    Q_OBJECT

public:
    /// The sides that a drawing can be seen from; in FRONT, x points to the right and y upwards.
    enum Orientation_Mode : int { FRONT, BACK, LEFT, RIGHT, TOP, BOTTOM };

    explicit QGLEditor(QWidget* parent);
    ~QGLEditor() override;

    /// The extents of the drawing, in model coordinates. Painting does not use them.
    DRVect3d drawing_min_point() const { return drw_min_point; }
    DRVect3d drawing_min_point(DRVect3d some_vect) { return drw_min_point = some_vect; }
    DRVect3d drawing_max_point() const { return drw_max_point; }
    DRVect3d drawing_max_point(DRVect3d some_vect) { return drw_max_point = some_vect; }

    /// The largest absolute coordinate of the drawing: half the depth of the view volume, in eye units. Set it before
    /// the first show; a later change takes effect at the next resize or pick. OpenGL rejects a limit of 0: the view
    /// then spans -1 to 1 in both directions, whatever its shape.
    double drawing_limit() const { return drw_limit; }
    double drawing_limit(double some_val) { return drw_limit = some_val; }

    /// The scale factor from drawing units to eye units.
    double drawing_scaling() const { return drw_scaling; }
    double drawing_scaling(double some_val) { return drw_scaling = some_val; }

    /// The scale factor of the source view, 1.0 until it is set.
    double drawing_source_scaling() const { return drw_src_scaling; }
    double drawing_source_scaling(double some_val) { return drw_src_scaling = some_val; }

    /// The angles about the model's axes, in degrees; they are not wrapped.
    DRVect3d drawing_rotation() const { return {rotationX, rotationY, rotationZ}; }
    DRVect3d drawing_rotation(DRVect3d some_vect);

    /// In eye units, applied after the scaling.
    DRVect3d drawing_translation() const { return {translationX, translationY, translationZ}; }
    DRVect3d drawing_translation(DRVect3d some_vect);

    /// Appends an object, which the view then owns. Null and duplicates are not checked for: drawing null or
    /// deleting an object twice crashes.
    void add_drawing_object(GLObject* some_object) { drw_globjects.push_back(some_object); }

    /// The object at an index that counts from 0, or null if there is none. The view still owns it.
    GLObject* get_drawing_object(unsigned long some_number) const;
    unsigned long quantity_of_drawing_objects() const { return drw_globjects.size(); }

    /// Deletes all objects.
    void clear_drawing_objects();

    /// Exchanges the view's objects with those of `some_objects`; each side owns what it then holds.
    void swap_drawing_objects(std::vector<GLObject*>& some_objects) { drw_globjects.swap(some_objects); }

    /// The local id that the last left double-click picked, 0 for none.
    unsigned long last_selected_entity_id() const { return my_last_selected_entity_id; }

    Orientation_Mode orientation() const { return drw_orientation; }

    /// Sets the angles of a standard orientation; translation and scaling stay. A value outside the enumeration is
    /// stored and changes no angle.
    Orientation_Mode orientation(Orientation_Mode some_orientation);

    /// Sets the front orientation, no translation and the source scaling.
    void set_source_drawing_view();

    /// "v.", the GL_VERSION string of the view's context, and ", ". Before the view is first shown, it asks whatever
    /// context is current; without one the string is "unknown".
    QString version_of_OpenGL();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

    void initializeGL() override;
    void resizeGL(int wwidth, int wheight) override;
    void paintGL() override;

    /// Multiplies the current matrix by the orthographic projection for a widget of this size. A side of length 0
    /// counts as one pixel.
    void perspective_transformation(int cur_wwidth, int cur_wheight);

    /// Draws the 3 x 3 widget pixels around a widget position in selection mode and returns the number of hit records
    /// in `buffer`, which has room for `MaxSize` entries. If the buffer overflows, it is full and the result is larger
    /// than any number of hits.
    unsigned long entityIdAtPosition(const QPoint& pos, unsigned int MaxSize, GLuint* buffer);

private:
    void draw();
    void select_at(const QPoint& pos);
    void push_cursor(Qt::CursorShape shape);
    void give_back_cursors();

    GLdouble rotationX = 0.0;
    GLdouble rotationY = 0.0;
    GLdouble rotationZ = 0.0;
    GLdouble translationX = 0.0;
    GLdouble translationY = 0.0;
    GLdouble translationZ = 0.0;
    QPoint lastPos;
    DRVect3d drw_min_point;
    DRVect3d drw_max_point;
    double drw_limit = 1.0;
    double drw_scaling = 1.0;
    double drw_src_scaling = 1.0;
    std::vector<GLObject*> drw_globjects; // owned
    unsigned long my_last_selected_entity_id = 0;
    Orientation_Mode drw_orientation = FRONT;
    int my_cursors = 0; // override cursors pushed and not yet restored
};
