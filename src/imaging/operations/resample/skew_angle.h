// How far a scanned page is turned, by its lines of text.
//
// The lower edges of the ink are counted along parallel lines through the page; of all angles the
// right one makes the counts differ most from one line to the next. (W. Postl, Detection of linear
// oblique structures and skew scan in digitized documents, 1986; edges instead of ink, as in D.
// Bloomberg, G. Kopec, L. Dasari, Measuring document image skew and orientation, 1995.) Solid areas
// have few edges and specks are spread evenly, so pictures and noise on the page hardly matter.
#pragma once

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

inline constexpr double largestSkew = 15; // degrees to either side

struct SkewSearch {
    int fineRows = 2;   // rows taken together in the last search
    int coarseRows = 4; // rows taken together in the sweep over all angles
    double step = 0.1;  // of the sweep, degrees
};

// The degrees, clockwise, by which the lines in that part of a 1-bit picture fall to the right. 0
// if no angle stands out. Ink are the pixels there are fewer of.
double skewAngle(const ConstView& page, const Rect& area, const SkewSearch& search, Task& task);

// The value, 0 or 1, that most pixels of the part have.
int paperBit(const ConstView& page, const Rect& area);

} // namespace kvn::imaging
