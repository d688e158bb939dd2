#ifndef GSL_VIEW_RASTER_H
#define GSL_VIEW_RASTER_H

#include "Colour.h"
#include "Projection.h"

#include <cstdint>
#include <vector>

namespace gsl_view {

/// Which outlines are traced.
enum class Traced : unsigned char { Visible, All };

/// A part of the page as pixels, each with the depth of the nearest surface. The first row is the
/// upper one.
class Raster {
public:
  /// The background is white, and infinitely far.
  Raster(const Rect& area, double pixelsPerMillimetre);

  int Width() const { return m_width; }
  int Height() const { return m_height; }
  const std::vector<std::uint32_t>& Pixels() const { return m_pixels; }
  /// Returns the part of the page that the whole pixels cover.
  Rect Area() const;
  /// Returns the middle of a pixel, on the page.
  PagePoint MiddleOf(int x, int y) const;
  /// Colours a pixel, which gets no depth.
  void SetPixel(int x, int y, std::uint32_t pixel) { m_pixels[IndexOf(x, y)] = pixel; }

  /// Draws triangles, each in one tone of its colour: a triangle that faces the viewer is bright,
  /// and one that is nearly edge-on is dark. Both sides of a triangle look the same. `isMarked` may
  /// be empty; else marked triangles have the other colour. Corners are moved by `shift` first.
  /// Nothing is drawn outside the panel of the view. A triangle that is seen edge-on is not drawn.
  void Shade(const std::vector<Coord3>& corners, const Coord3& shift, const View& view,
             const Colour& colour, const std::vector<unsigned char>& isMarked,
             const Colour& marked);

  /// Returns whether a place on the page is at most about a pixel behind the nearest surface, in
  /// its own pixel or in one beside it. A place outside is visible.
  bool IsVisible(const PagePoint& at, double depth) const;

  /// Colours the pixels of `panel` at which the surfaces of `shape`, which has the same pixels,
  /// end, or a step in depth begins. What is behind a surface here may be left out.
  void TraceOutlines(const Raster& shape, const Rect& panel, const Colour& colour,
                     Traced traced = Traced::Visible);

private:
  struct Corner {
    double x, y, depth; ///< in pixels, and in millimetres
  };
  struct Bounds {
    int left, top, right, bottom; ///< the end is not part of it
  };

  Bounds PixelsOf(const Rect& panel) const;
  Corner CornerAt(const Coord3& p, const View& view) const;
  void Fill(const Corner (&corners)[3], const Bounds& bounds, std::uint32_t pixel);
  std::size_t IndexOf(int x, int y) const;
  /// Returns whether a surface ends, or falls in a step, between a pixel and the next.
  bool IsOutline(std::size_t here, std::size_t next, std::size_t opposite) const;

  double m_left, m_top, m_perMillimetre;
  int m_width, m_height;
  std::vector<std::uint32_t> m_pixels;
  std::vector<float> m_depths;
  std::vector<unsigned char> m_bodies; ///< the number of the call that drew the pixel; 0 for none
  unsigned char m_calls = 0;
};

} // namespace gsl_view

#endif
