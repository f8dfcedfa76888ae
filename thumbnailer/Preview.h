// The picture of a drawing for a file manager: where the eye stands, how large the drawing is, how light its faces are.
// Reading the drawing and writing the picture are left to the caller.
#pragma once

#include "Drawing/DRVect3d.h"

#include <QImage>

#include <list>
#include <optional>

class DraftEntity;

/// What the eye sees of a drawing, in drawing units. Eye coordinates: x to the right, y upwards, z away.
struct SeenExtents {
    DRVect3d center;
    double reach; // from the centre to the right or upwards, whichever is farther; 0 for a lone point
};

/// The extents of a drawing seen isometrically from the front, the right and above, where the front is the side that
/// the viewer's source view shows. Nothing where they are not finite; coordinates that are no numbers take no part.
std::optional<SeenExtents> seen_extents(const std::list<DraftEntity*>& entities);

/// A square picture of a drawing whose extents are given, `size` pixels wide, from 1, in shades of grey: faces lit,
/// points and lines in the viewer's colour, on a background darker than these. A null image where nothing would be
/// seen. Throws std::bad_alloc when there is not enough memory.
QImage draw_preview(const std::list<DraftEntity*>& entities, const SeenExtents& extents, int size);
