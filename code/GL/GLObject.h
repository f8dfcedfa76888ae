// GLObject: draws one entity with OpenGL, on the screen or for picking.
// QGLEditor owns the objects and decides when to draw them.
#pragma once

#include "Drawing/BlockMemory.h"
#include "Drawing/DRVect3d.h"
#include "Marker.h"

#include <cstddef>

class DraftEntity;

/// The drawable form of one entity, in immediate mode. Colours are red, green and blue from 0 to 1.
class GLObject : public Marker
{
public:
    /// How faces are drawn; points and lines look the same in every mode.
    enum DRendering : int { POINT, WIREFRAME, SOLID };

    /// The object does not own the entity, which must outlive every draw().
    explicit GLObject(DraftEntity* cur_drentity);
    ~GLObject() override;
    GLObject(const GLObject&) = delete;
    GLObject& operator=(const GLObject&) = delete;

    static void* operator new(std::size_t size) { return BlockMemory::take(size); }
    static void operator delete(void* object) { BlockMemory::release(object); }

    /// The object's id within its view. Its low 32 bits are the object's name on OpenGL's name stack.
    unsigned long local_id() const { return my_local_id; }
    unsigned long local_id(unsigned long some_val) { return my_local_id = some_val; }

    DRendering rendering() const { return my_rendering; }
    DRendering rendering(DRendering some_rend) { return my_rendering = some_rend; }

    DRVect3d basic_color() const { return my_basic_color; }
    DRVect3d basic_color(DRVect3d some_color) { return my_basic_color = some_color; }

    DRVect3d select_color() const { return my_select_color; }
    DRVect3d select_color(DRVect3d some_color) { return my_select_color = some_color; }

    /// The size of points and the width of lines, in pixels.
    double thickness() const { return my_thickness; }
    double thickness(double some_val) { return my_thickness = some_val; }

    /// Draws the object in the current context, with its local id on the name stack. Must not be called between glBegin
    /// and glEnd. Leaves lighting on after a solid face and off after everything else. An unknown type, or a face
    /// with an unknown rendering, draws nothing.
    void draw();

private:
    void draw_face();
    const DRVect3d& current_color() const;

    unsigned long my_local_id = 0;
    DRendering my_rendering = WIREFRAME;
    DRVect3d my_basic_color{0.961, 0.961, 0.961};
    DRVect3d my_select_color{1.0, 0.0, 1.0};
    double my_thickness = 1.0;
    DraftEntity* my_drentity; // not owned
};
