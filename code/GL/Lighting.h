// The light that drawings are seen in, for the view and for previews.
// The background, the matrices and the objects are left to the caller.
#pragma once

/// Sets up lights, normals and the depth test of the current context, in an OpenGL that is as yet unchanged. Two
/// opposite lights shine along the z axis of the current model-view matrix, from infinity: `limit`, the largest
/// absolute coordinate of the drawing, only stands in their positions, and the first call of the process sets it for
/// all later ones.
void set_up_lighting(double limit);
