// Canvas: a square of grey samples with depth, filled triangle by triangle.
// Where the triangles lie and how light they are is left to Preview.
#pragma once

#include "Drawing/DRVect3d.h"

#include <vector>

/// Sample coordinates are in samples: x from the left, y from the top, z away from the eye. The first sample's centre
/// is (0.5, 0.5). Of several triangles over a sample the one with the smallest z is seen, and of equal ones the first.
class Canvas
{
public:
    /// `side` is in samples, from 1; shades are from 0, black, to 255. Throws std::bad_alloc when there is not enough
    /// memory.
    Canvas(int side, unsigned char background);

    /// Colours the samples whose centres are in the triangle. Corners are finite; they may lie outside the canvas.
    void fill_triangle(const DRVect3d& a, const DRVect3d& b, const DRVect3d& c, unsigned char grey);

    /// The mean shade of a square of samples within the canvas, whose first column and row and whose side are given.
    unsigned char mean(int column, int row, int side) const;

private:
    int my_side;
    std::vector<unsigned char> my_greys;
    std::vector<float> my_depths;
};
