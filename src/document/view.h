// What a user sees of a document without changing it: zoom and title, and the read-out of the
// pixel under the pointer.
#pragma once

#include <QString>

namespace kvn::document {

class frmMain;

// A step is taken while the zoom before it lies within 0.5 to 1600 percent, so it may end beyond.
void ZoomIn(frmMain& document);
void ZoomOut(frmMain& document);
// Fits once: 1 the whole picture, 2 its width, 3 its height; 0 ends fitting.
void ZoomType(frmMain& document, int kind);
// The same limits look at the present zoom, not at the new one.
void SetZoomValue(frmMain& document, qint16 percent);
double Zoom(const frmMain& document);
// `distance` is 3 for one notch away from the user. The new zoom must lie within the limits.
void wheelZoom(frmMain& document, double distance);

// The window's title: file name, an at sign, `percent`.
void showTitle(frmMain& document, const QString& percent);
void showZoomTitle(frmMain& document);

// The read-out of one image pixel. Outside the picture the last one stands.
void ShowPixelInfo(frmMain& document, int x, int y);

} // namespace kvn::document
