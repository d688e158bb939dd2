#ifndef GSL_VIEW_PICTURE_STYLE_H
#define GSL_VIEW_PICTURE_STYLE_H

#include "Page.h"

/// The page, the colours and the letters that the parts of a picture share. The colours of the
/// bodies also differ as greys, so that they are told apart without colour vision.
namespace gsl_view {

// A4 landscape.
constexpr double kPageWidth = 297.0, kPageHeight = 210.0;

/// Returns the frame of a page, which begins at a whole pixel of a PNG.
constexpr Rect PictureFrame() {
  constexpr double kPixel = 1.0 / kPixelsPerMillimetre;
  return {60 * kPixel, 60 * kPixel, 1694 * kPixel, 1180 * kPixel};
}

constexpr Colour kMovingColour{1.0, 0.72, 0.30};
constexpr Colour kFixedColour{0.50, 0.60, 0.76};
constexpr Colour kMovingMark{0.86, 0.30, 0.12}; ///< triangles of the patch
constexpr Colour kFixedMark{0.16, 0.22, 0.42};
constexpr Colour kInk{0.08, 0.08, 0.08};
constexpr Colour kPale{0.45, 0.45, 0.45};
constexpr Colour kFrameColour{0.60, 0.60, 0.60};

constexpr Pen kEdgePen{0.2, kInk};
constexpr Pen kBeforePen{0.25, {0.72, 0.36, 0.0}};        ///< the moving body before its travel
constexpr Pen kBeforeHiddenPen{0.13, {0.86, 0.72, 0.56}}; ///< the same behind a body
constexpr Pen kInnerPen{0.18, kFixedMark};                ///< a fixed body inside the moving one
constexpr Pen kFramePen{0.18, kFrameColour};
constexpr Pen kDetailPen{0.35, {0.0, 0.0, 0.0}};

constexpr TextStyle kLabel{2.6, Align::Left, false, kPale};
constexpr TextStyle kValue{3.0, Align::Left, false, kInk};

} // namespace gsl_view

#endif
