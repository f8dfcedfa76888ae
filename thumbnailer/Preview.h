// Draws the preview of a drawing: chooses the view, the scale and the lighting.
// Reading the drawing and writing the picture are left to the caller.
#pragma once

#include "Drawing/DRVect3d.h"

#include <QImage>

#include <list>
#include <optional>

class DraftEntity;

/// The extents of a drawing in eye coordinates (x to the right, y upwards, z away), in drawing units.
struct SeenExtents {
    DRVect3d center;
    double reach; // half the width or half the height, whichever is larger; 0 for a single point
};

/// Returns the extents of a drawing seen isometrically from the front, the right and above; the viewer's source view
/// shows the front. Ignores NaNs. Returns nothing if the extents are not finite.
std::optional<SeenExtents> seen_extents(const std::list<DraftEntity*>& entities);

/// Draws entities that have these extents as a square picture, `size` (at least 1) pixels wide, in shades of grey: lit
/// faces, and points and lines in the viewer's colour, on a darker background. Returns a null image if nothing would be
/// visible. Throws std::bad_alloc if there is not enough memory.
QImage draw_preview(const std::list<DraftEntity*>& entities, const SeenExtents& extents, int size);
