#include "DrawnScene.h"

#include "ContactPlaces.h"
#include "CornerBox.h"

#include <algorithm>
#include <cmath>

namespace gsl_view {

using gsl_arithmetic::Add;
using gsl_arithmetic::Dot;
using gsl_arithmetic::Multiply;
using gsl_arithmetic::Subtract;
using gsl_sweep::Answer;
using gsl_sweep::Contact;
using gsl_sweep::ContactKind;
using gsl_sweep::TriangleView;

namespace {

// A travel that is longer than this many times the bodies is drawn shorter.
constexpr double kLongestTravel = 2.0;

bool IsFinite(const Coord3& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

DrawnTriangle CornersOf(const TriangleView& view, std::size_t triangle) {
  DrawnTriangle corners{};
  for (std::size_t k = 0; k < 3; ++k) {
    const std::size_t corner = 3 * triangle + k;
    const double* const v =
        view.vertices + 3 * (view.corners == nullptr ? corner : view.corners[corner]);
    corners[k] = {v[0], v[1], v[2]};
  }
  return corners;
}

template <class Use>
void ForEachFinite(const TriangleView& view, const Use& use) {
  for (std::size_t k = 0; k < view.triangleCount; ++k) {
    const DrawnTriangle corners = CornersOf(view, k);
    if (std::all_of(corners.begin(), corners.end(), IsFinite)) use(k, corners);
  }
}

/// Returns the power of two that brings a positive number to about 1, as far as a double can.
double ScaleOf(double number) {
  if (!(number > 0.0)) return 1.0;
  int exponent = 0;
  std::frexp(number, &exponent);
  return std::ldexp(1.0, std::clamp(-exponent, -1022, 1023));
}

double Largest(const Coord3& p) {
  return std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
}

double LargestOf(const TriangleView& view) {
  double largest = 0.0;
  ForEachFinite(view, [&](std::size_t, const DrawnTriangle& corners) {
    for (const Coord3& corner : corners)
      largest = std::max(largest, Largest(corner));
  });
  return largest;
}

/// A change of coordinates: p * first - origin + shift. The factor is a power of two.
struct Frame {
  double first = 1.0;
  Coord3 origin{0.0, 0.0, 0.0};
  Coord3 shift{0.0, 0.0, 0.0};

  Coord3 Map(const Coord3& p) const { return Add(Subtract(Multiply(p, first), origin), shift); }
};

void Place(const TriangleView& view, const Frame& frame, DrawnBody& body) {
  ForEachFinite(view, [&](std::size_t, const DrawnTriangle& corners) {
    for (const Coord3& corner : corners)
      body.corners.push_back(frame.Map(corner));
    body.isMarked.push_back(0);
  });
}

CornerBox BoxOfCorners(const std::vector<Coord3>& corners) {
  CornerBox box;
  for (const Coord3& corner : corners)
    box.Take(corner);
  return box;
}

/// The frames of both bodies. At a contact the place of the contact is the origin of both, so that
/// nothing is lost to the rounding of a long travel.
struct Frames {
  Frame moving, fixed;
};

Frames FramesOf(const ViewScene& scene, const CornerBox& movingBox, double first) {
  Frames frames;
  frames.moving.first = frames.fixed.first = first;
  const Answer& answer = scene.answer;
  if (!Touches(answer)) {
    frames.moving.origin = frames.fixed.origin = movingBox.Centre();
    return frames;
  }
  const Contact& contact = answer.contact;
  frames.moving.origin = Multiply(contact.movingPoint, first);
  frames.fixed.origin = Multiply(contact.fixedPoint, first);
  if (scene.question.clearance > 0.0) {
    const Coord3 reached =
        Add(frames.moving.origin, Multiply(answer.unitDirection, contact.travel * first));
    frames.fixed.shift = Subtract(frames.fixed.origin, reached);
  }
  return frames;
}

/// Copies the triangles that touch, and those of the patch.
void TakeContacts(const ViewScene& scene, const Frames& frames, DrawnScene& drawn) {
  std::vector<Contact> contacts(scene.patch);
  contacts.insert(contacts.begin(), scene.answer.contact);
  for (const Contact& contact : contacts) {
    const ContactPlaces places = PlacesOf(contact);
    const auto take = [](const TriangleView& view, std::size_t triangle, const Frame& frame,
                         std::vector<DrawnTriangle>& out) {
      if (triangle >= view.triangleCount) return;
      DrawnTriangle corners = CornersOf(view, triangle);
      if (!std::all_of(corners.begin(), corners.end(), IsFinite)) return;
      for (Coord3& corner : corners)
        corner = frame.Map(corner);
      out.push_back(corners);
    };
    if (places.moving) {
      take(scene.moving.triangles, contact.movingTriangle, frames.moving, drawn.movingTriangles);
    }
    if (places.fixed) {
      take(scene.fixed.at(contact.fixedBody).triangles, contact.fixedTriangle, frames.fixed,
           drawn.fixedTriangles);
    }
  }
}

/// Marks the triangles of the patch, by their numbers in the views.
void Mark(const TriangleView& view, const std::vector<std::size_t>& numbers, std::size_t first,
          DrawnBody& body) {
  if (numbers.empty()) return;
  std::vector<unsigned char> isListed(view.triangleCount);
  for (const std::size_t number : numbers) {
    if (number < isListed.size()) isListed[number] = 1;
  }
  std::size_t at = first;
  ForEachFinite(view,
                [&](std::size_t k, const DrawnTriangle&) { body.isMarked[at++] = isListed[k]; });
}

void MarkPatch(const ViewScene& scene, const std::vector<std::size_t>& firstOfFixed,
               DrawnScene& drawn) {
  std::vector<std::size_t> moving;
  std::vector<std::vector<std::size_t>> fixed(scene.fixed.size());
  for (const Contact& contact : scene.patch) {
    moving.push_back(contact.movingTriangle);
    fixed.at(contact.fixedBody).push_back(contact.fixedTriangle);
  }
  Mark(scene.moving.triangles, moving, 0, drawn.moving);
  for (std::size_t k = 0; k < fixed.size(); ++k)
    Mark(scene.fixed[k].triangles, fixed[k], firstOfFixed[k], drawn.fixed);
}

/// Brings a scene that is scaled by the first scale alone to a size of about 1.
void ScaleToOne(DrawnScene& drawn) {
  CornerBox box = BoxOfCorners(drawn.moving.corners);
  const CornerBox fixed = BoxOfCorners(drawn.fixed.corners);
  if (!fixed.isEmpty) {
    box.Take(fixed.low);
    box.Take(fixed.high);
  }
  const double scale = ScaleOf(box.Diagonal());
  const auto rescale = [&](Coord3& p) { p = Multiply(p, scale); };
  for (DrawnBody* const body : {&drawn.moving, &drawn.fixed})
    std::for_each(body->corners.begin(), body->corners.end(), rescale);
  for (auto* const triangles : {&drawn.movingTriangles, &drawn.fixedTriangles}) {
    for (DrawnTriangle& triangle : *triangles)
      std::for_each(triangle.begin(), triangle.end(), rescale);
  }
  rescale(drawn.movingPoint);
  rescale(drawn.fixedPoint);
  drawn.travel *= scale;
  const double size = box.Diagonal() * scale;
  drawn.size = size > 0.0 ? size : 1.0;
}

} // namespace

DrawnScene MakeDrawnScene(const ViewScene& scene) {
  DrawnScene drawn;
  drawn.direction = scene.answer.unitDirection;
  drawn.touches = Touches(scene.answer);
  double largest = LargestOf(scene.moving.triangles);
  for (const ViewBody& body : scene.fixed)
    largest = std::max(largest, LargestOf(body.triangles));
  const double first = ScaleOf(largest);
  CornerBox movingBox;
  ForEachFinite(scene.moving.triangles, [&](std::size_t, const DrawnTriangle& corners) {
    for (const Coord3& corner : corners)
      movingBox.Take(Multiply(corner, first));
  });
  const Frames frames = FramesOf(scene, movingBox, first);
  Place(scene.moving.triangles, frames.moving, drawn.moving);
  std::vector<std::size_t> firstOfFixed;
  for (const ViewBody& body : scene.fixed) {
    firstOfFixed.push_back(drawn.fixed.isMarked.size());
    Place(body.triangles, frames.fixed, drawn.fixed);
  }
  if (drawn.touches) {
    drawn.movingPoint = frames.moving.Map(scene.answer.contact.movingPoint);
    drawn.fixedPoint = frames.fixed.Map(scene.answer.contact.fixedPoint);
    drawn.travel = scene.answer.contact.travel * first;
    drawn.hidesFixed =
        scene.answer.contact.kind == ContactKind::Inside && !scene.answer.contact.movingIsInside;
    TakeContacts(scene, frames, drawn);
    MarkPatch(scene, firstOfFixed, drawn);
  }
  ScaleToOne(drawn);
  const double longest = kLongestTravel * drawn.size;
  drawn.isShortened = drawn.travel > longest;
  drawn.travel = std::min(drawn.travel, longest);
  return drawn;
}

ViewBox BoxOf(const DrawnBody& body, const Axes& axes) {
  ViewBox box;
  for (const Coord3& corner : body.corners)
    box.Add(Dot(axes.right, corner), Dot(axes.up, corner));
  return box;
}

} // namespace gsl_view
