// Draws the preview of a drawing: chooses the view, the scale and the lighting.
// Reading the drawing and writing the picture are left to the caller.
#pragma once

#include <QImage>

#include <list>

class DraftEntity;

/// Draws entities isometrically from the front, the right and above; the viewer's source view shows the front. Returns
/// a square picture, `size` (at least 1) pixels wide, in shades of grey: lit faces, and points and lines in the
/// viewer's colour, on a darker background. Leaves out entities with NaNs. Returns a null image if the extents are not
/// finite or nothing would be visible. Throws std::bad_alloc if there is not enough memory.
QImage draw_preview(const std::list<DraftEntity*>& entities, int size);
