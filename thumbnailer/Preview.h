// The picture of a drawing for a file manager.
// Reading the drawing and writing the picture are left to the caller.
#pragma once

#include <QImage>

#include <list>

class DraftEntity;
class DXFL_Processing;

/// Turns a drawing's points from model coordinates to eye coordinates, seen isometrically from the front, the right
/// and above, where the front is the side that the source view shows; then moves and scales them so that the drawing
/// fits the cube from -1 to 1, and computes the normals of its faces. `reader` tells the extents. False where there are
/// none that are finite.
bool bring_into_view(std::list<DraftEntity*>& entities, const DXFL_Processing& reader);

/// A square picture of a drawing that has been brought into view, `size` pixels wide: faces solid and lit, points and
/// lines in their colour, on the background of the viewer. A null image where no OpenGL is to be had.
QImage draw_preview(const std::list<DraftEntity*>& entities, int size);
