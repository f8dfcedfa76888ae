// The light that drawings are seen in, for the view and for previews.
// The background, the matrices and the objects are left to the caller.
#pragma once

/// Sets up lights, normals and the depth test of a fresh context, which is current. Two opposite lights shine along the
/// z axis of the current model-view matrix, from infinity. Their positions are +-10 times `limit`, the largest absolute
/// coordinate of the drawing, bounded to what a float can light with; any limit is accepted, NaN included. The first
/// call of the process sets the positions for all later ones.
void set_up_lighting(double limit);
