#ifndef GSL_VIEW_PAGE_H
#define GSL_VIEW_PAGE_H

#include "Outline.h"
#include "PictureFormat.h"
#include "Projection.h"
#include "Raster.h"

#include <memory>
#include <string>
#include <vector>

namespace gsl_view {

/// The resolution of a page as PNG.
constexpr double kPixelsPerMillimetre = 150.0 / 25.4;

/// How a line is drawn.
struct Pen {
  double width = 0.25; ///< in millimetres
  Colour colour;
};

/// Where a text is, seen from its place: the place is at its left end, its middle or its right end.
enum class Align : unsigned char { Left, Middle, Right };

/// How a text is written.
struct TextStyle {
  double size = 3.0; ///< height of the font in millimetres
  Align align = Align::Left;
  bool isBold = false;
  Colour colour;
};

/// A sheet of paper on which lines, surfaces, texts and pixels are drawn. Everything is in
/// millimetres from the upper left corner. The same calls give the same bytes: no clock and no
/// random number is read.
///
/// Range      coordinates must be at most 10000 mm away from the page.
/// Font       DejaVu Sans, which the system must have; it is not looked for in any other place.
/// Errors     std::bad_alloc and std::runtime_error from Finish alone; calls after an error have no
///            effect.
class Page {
public:
  Page(PictureFormat format, double width, double height);
  ~Page();
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;

  void DrawLine(const PagePoint& from, const PagePoint& to, const Pen& pen);
  /// Draws all lines as one element.
  void DrawLines(const std::vector<PageLine>& lines, const Pen& pen);
  void DrawBox(const Rect& box, const Pen& pen);
  void DrawCircle(const PagePoint& centre, double radius, const Pen& pen);
  void FillCircle(const PagePoint& centre, double radius, const Colour& colour,
                  double opacity = 1.0);
  /// Fills a polygon; an opacity of 1 hides what is below.
  void FillPolygon(const std::vector<PagePoint>& corners, const Colour& colour, double opacity);
  void DrawPolygon(const std::vector<PagePoint>& corners, const Pen& pen);
  /// Draws the pixels where their raster is.
  void DrawRaster(const Raster& raster);

  /// Writes one line of UTF-8. `at` is on the line below the letters.
  void DrawText(const PagePoint& at, const std::string& text, const TextStyle& style);
  /// Returns the width that the text takes.
  double WidthOf(const std::string& text, const TextStyle& style);
  /// Returns the text if it fits the width; else the text with an ellipsis in its middle.
  std::string Fitted(const std::string& text, double width, const TextStyle& style);

  /// Fills what is in the box and outside the circle.
  void FillAround(const Rect& box, const PagePoint& centre, double radius, const Colour& colour);

  /// Until EndClip nothing is drawn outside the circle.
  void BeginClip(const PagePoint& centre, double radius);
  void EndClip();

  /// Returns the bytes of the file. It is the last call.
  std::string Finish();

private:
  struct Impl;
  std::unique_ptr<Impl> m_impl;
};

} // namespace gsl_view

#endif
