#include "Page.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <cairo.h>

#include <cmath>
#include <cstring>
#include <map>
#include <new>
#include <stdexcept>
#include <string_view>

#include "ViewText.h"

namespace gsl_view {

namespace {

constexpr double kPointsPerMillimetre = 72.0 / 25.4;
constexpr double kTurn = 6.283185307179586;

/// Appends to a string. No exception may pass through the library.
cairo_status_t Append(void* closure, const unsigned char* data, unsigned int length) noexcept {
  try {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
  } catch (const std::bad_alloc&) {
    return CAIRO_STATUS_NO_MEMORY;
  }
}

void Require(cairo_status_t status) {
  if (status == CAIRO_STATUS_SUCCESS) return;
  if (status == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
  throw std::runtime_error(std::string("the picture cannot be drawn: ") +
                           cairo_status_to_string(status));
}

/// Throws std::bad_alloc where a page may not find memory: the drawing library ends the process in
/// some of the places where memory runs out. Most of this is for reading fonts.
void RequireRoom() {
  constexpr std::size_t kRoom = std::size_t{64} << 20;
  void* const volatile room = ::operator new(kRoom); // volatile, so that it is not left out
  ::operator delete(room);
}

/// Gives the names of elements that begin with a word numbers from 1, in the order of the text. The
/// drawing library numbers them through the life of the process.
std::string Renumbered(const std::string& svg, std::string_view word) {
  std::map<std::string, std::size_t> numbers;
  std::string text;
  std::size_t copied = 0;
  for (std::size_t at = svg.find(word); at != std::string::npos; at = svg.find(word, at + 1)) {
    const std::size_t begin = at + word.size();
    const std::size_t end = svg.find_first_not_of("0123456789", begin);
    const bool isName = at > 0 && (svg[at - 1] == '#' || svg[at - 1] == '"');
    if (!isName || end == begin || end == std::string::npos) continue;
    const auto found = numbers.emplace(svg.substr(begin, end - begin), numbers.size() + 1).first;
    text.append(svg, copied, begin - copied);
    text += std::to_string(found->second);
    copied = end;
  }
  return text.append(svg, copied);
}

} // namespace

struct Page::Impl {
  PictureFormat format = PictureFormat::Svg;
  std::string bytes;
  cairo_surface_t* surface = nullptr;
  cairo_t* cairo = nullptr;

  Impl() = default;
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;
  ~Impl() {
    cairo_destroy(cairo);
    cairo_surface_destroy(surface);
  }

  void Open(double width, double height) {
    RequireRoom();
    const double wide = width * kPointsPerMillimetre, high = height * kPointsPerMillimetre;
    if (format == PictureFormat::Svg) {
      surface = cairo_svg_surface_create_for_stream(Append, &bytes, wide, high);
    } else if (format == PictureFormat::Pdf) {
      surface = cairo_pdf_surface_create_for_stream(Append, &bytes, wide, high);
      cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_CREATE_DATE,
                                     "2000-01-01T00:00:00Z");
    } else {
      surface = cairo_image_surface_create(
          CAIRO_FORMAT_RGB24, static_cast<int>(std::lround(width * kPixelsPerMillimetre)),
          static_cast<int>(std::lround(height * kPixelsPerMillimetre)));
    }
    cairo = cairo_create(surface);
    const double scale = format == PictureFormat::Png ? kPixelsPerMillimetre : kPointsPerMillimetre;
    cairo_scale(cairo, scale, scale);
    cairo_set_line_cap(cairo, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cairo, CAIRO_LINE_JOIN_ROUND);
    // Letters have the same places in every format.
    cairo_font_options_t* const options = cairo_font_options_create();
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_set_font_options(cairo, options);
    cairo_font_options_destroy(options);
  }

  void Use(const Colour& colour, double opacity = 1.0) {
    if (opacity < 1.0)
      cairo_set_source_rgba(cairo, colour.red, colour.green, colour.blue, opacity);
    else
      cairo_set_source_rgb(cairo, colour.red, colour.green, colour.blue);
  }

  void Stroke(const Pen& pen) {
    Use(pen.colour);
    cairo_set_line_width(cairo, pen.width);
    cairo_stroke(cairo);
  }

  void Outline(const std::vector<PagePoint>& corners) {
    for (const PagePoint& corner : corners)
      cairo_line_to(cairo, corner.x, corner.y);
    cairo_close_path(cairo);
  }

  void Circle(const PagePoint& centre, double radius) {
    cairo_new_sub_path(cairo);
    cairo_arc(cairo, centre.x, centre.y, radius, 0.0, kTurn);
  }

  void Font(const TextStyle& style) {
    cairo_select_font_face(cairo, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL,
                           style.isBold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cairo, style.size);
  }
};

Page::Page(PictureFormat format, double width, double height) : m_impl(std::make_unique<Impl>()) {
  m_impl->format = format;
  m_impl->Open(width, height);
  m_impl->Use({1.0, 1.0, 1.0});
  cairo_paint(m_impl->cairo);
}

Page::~Page() = default;

void Page::DrawLine(const PagePoint& from, const PagePoint& to, const Pen& pen) {
  DrawLines({{from, to}}, pen);
}

void Page::DrawLines(const std::vector<PageLine>& lines, const Pen& pen) {
  if (lines.empty()) return;
  for (const PageLine& line : lines) {
    cairo_move_to(m_impl->cairo, line.from.x, line.from.y);
    cairo_line_to(m_impl->cairo, line.to.x, line.to.y);
  }
  m_impl->Stroke(pen);
}

void Page::DrawBox(const Rect& box, const Pen& pen) {
  cairo_rectangle(m_impl->cairo, box.left, box.top, box.Width(), box.Height());
  m_impl->Stroke(pen);
}

void Page::DrawCircle(const PagePoint& centre, double radius, const Pen& pen) {
  m_impl->Circle(centre, radius);
  m_impl->Stroke(pen);
}

void Page::FillCircle(const PagePoint& centre, double radius, const Colour& colour,
                      double opacity) {
  m_impl->Circle(centre, radius);
  m_impl->Use(colour, opacity);
  cairo_fill(m_impl->cairo);
}

void Page::FillPolygon(const std::vector<PagePoint>& corners, const Colour& colour,
                       double opacity) {
  if (corners.empty()) return;
  m_impl->Outline(corners);
  m_impl->Use(colour, opacity);
  cairo_fill(m_impl->cairo);
}

void Page::DrawPolygon(const std::vector<PagePoint>& corners, const Pen& pen) {
  if (corners.empty()) return;
  m_impl->Outline(corners);
  m_impl->Stroke(pen);
}

void Page::DrawRaster(const Raster& raster) {
  cairo_surface_t* const image =
      cairo_image_surface_create(CAIRO_FORMAT_RGB24, raster.Width(), raster.Height());
  if (cairo_surface_status(image) == CAIRO_STATUS_SUCCESS) {
    cairo_surface_flush(image);
    unsigned char* const data = cairo_image_surface_get_data(image);
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(image));
    const auto width = static_cast<std::size_t>(raster.Width());
    for (std::size_t y = 0; y < static_cast<std::size_t>(raster.Height()); ++y)
      std::memcpy(data + y * stride, &raster.Pixels()[y * width], 4 * width);
    cairo_surface_mark_dirty(image);
  }
  const Rect area = raster.Area();
  cairo_t* const cairo = m_impl->cairo;
  cairo_save(cairo);
  cairo_translate(cairo, area.left, area.top);
  cairo_scale(cairo, area.Width() / raster.Width(), area.Height() / raster.Height());
  cairo_set_source_surface(cairo, image, 0.0, 0.0);
  cairo_pattern_set_filter(cairo_get_source(cairo), CAIRO_FILTER_NEAREST);
  cairo_paint(cairo);
  cairo_restore(cairo);
  cairo_surface_destroy(image);
}

void Page::DrawText(const PagePoint& at, const std::string& text, const TextStyle& style) {
  const double width = style.align == Align::Left ? 0.0 : WidthOf(text, style);
  const double part = style.align == Align::Left ? 0.0 : style.align == Align::Middle ? 0.5 : 1.0;
  m_impl->Font(style);
  m_impl->Use(style.colour);
  cairo_move_to(m_impl->cairo, at.x - part * width, at.y);
  cairo_show_text(m_impl->cairo, text.c_str());
  cairo_new_path(m_impl->cairo);
}

double Page::WidthOf(const std::string& text, const TextStyle& style) {
  m_impl->Font(style);
  cairo_text_extents_t extents;
  cairo_text_extents(m_impl->cairo, text.c_str(), &extents);
  return extents.x_advance;
}

std::string Page::Fitted(const std::string& text, double width, const TextStyle& style) {
  if (WidthOf(text, style) <= width) return text;
  std::vector<std::size_t> begins; // of each character, and the end
  for (std::size_t at = 0; at < text.size(); at = NextCharacter(text, at))
    begins.push_back(at);
  begins.push_back(text.size());
  const auto shortened = [&](std::size_t kept) {
    const std::size_t head = begins[(kept + 1) / 2];
    const std::size_t tail = begins[begins.size() - 1 - kept / 2];
    return text.substr(0, head) + "\xE2\x80\xA6" + text.substr(tail);
  };
  // The most characters that fit lie from `fits` to before `tooMany`.
  std::size_t fits = 0, tooMany = begins.size() - 1;
  while (tooMany - fits > 1) {
    const std::size_t middle = fits + (tooMany - fits) / 2;
    (WidthOf(shortened(middle), style) <= width ? fits : tooMany) = middle;
  }
  return shortened(fits);
}

void Page::FillAround(const Rect& box, const PagePoint& centre, double radius,
                      const Colour& colour) {
  cairo_t* const cairo = m_impl->cairo;
  cairo_rectangle(cairo, box.left, box.top, box.Width(), box.Height());
  m_impl->Circle(centre, radius);
  m_impl->Use(colour);
  cairo_set_fill_rule(cairo, CAIRO_FILL_RULE_EVEN_ODD);
  cairo_fill(cairo);
  cairo_set_fill_rule(cairo, CAIRO_FILL_RULE_WINDING);
}

void Page::BeginClip(const PagePoint& centre, double radius) {
  cairo_save(m_impl->cairo);
  m_impl->Circle(centre, radius);
  cairo_clip(m_impl->cairo);
}

void Page::EndClip() {
  cairo_restore(m_impl->cairo);
}

std::string Page::Finish() {
  RequireRoom();
  Require(cairo_status(m_impl->cairo));
  if (m_impl->format == PictureFormat::Png) {
    Require(cairo_surface_write_to_png_stream(m_impl->surface, Append, &m_impl->bytes));
    return std::move(m_impl->bytes);
  }
  cairo_surface_finish(m_impl->surface);
  Require(cairo_surface_status(m_impl->surface));
  if (m_impl->format == PictureFormat::Svg) {
    return Renumbered(Renumbered(m_impl->bytes, "surface"), "image");
  }
  return std::move(m_impl->bytes);
}

} // namespace gsl_view
