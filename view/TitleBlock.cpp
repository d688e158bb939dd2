#include "TitleBlock.h"

#include "AnswerNames.h"
#include "PictureStyle.h"
#include "ViewText.h"

#include <algorithm>
#include <cmath>

namespace gsl_view {

using gsl_sweep::Answer;
using gsl_sweep::ContactKind;
using gsl_sweep::Rule;
using gsl_sweep::SweepStatus;

namespace {

constexpr std::size_t kMostFiles = 4; // lines for fixed bodies
constexpr double kLine = 4.6;         // between two lines

/// One column of the block: labels and values, one pair under the other.
class Column {
public:
  Column(Page& page, const Rect& column, double labelWidth)
      : m_page(page), m_column(column), m_labelWidth(labelWidth), m_y(column.top + 1.2) {}

  void Write(const std::string& label, const std::string& value, const TextStyle& style = kValue) {
    m_y += kLine;
    m_page.DrawText({m_column.left, m_y}, label, kLabel);
    const double left = m_column.left + m_labelWidth;
    m_page.DrawText({left, m_y}, m_page.Fitted(value, m_column.right - left, style), style);
  }

  /// Draws a small box in the colour of a body at the end of the label.
  void Swatch(const Colour& colour) {
    const double right = m_column.left + m_labelWidth - 2.0;
    const Rect box{right - 4.0, m_y - 2.4, right, m_y};
    m_page.FillPolygon({{box.left, box.top},
                        {box.right, box.top},
                        {box.right, box.bottom},
                        {box.left, box.bottom}},
                       colour, 1.0);
    m_page.DrawBox(box, {0.15, kInk});
  }

private:
  Page& m_page;
  Rect m_column;
  double m_labelWidth;
  double m_y;
};

std::string BodyText(const ViewBody& body) {
  return DrawableText(body.name) + ", " + std::to_string(body.triangles.triangleCount) +
         (body.triangles.triangleCount == 1 ? " triangle" : " triangles");
}

/// Returns the name and the number of triangles, with the name shortened where they do not fit.
std::string FittedBody(Page& page, const ViewBody& body, double width) {
  std::string whole = BodyText(body);
  if (page.WidthOf(whole, kValue) <= width) return whole;
  const std::string name = DrawableText(body.name);
  const std::string count = whole.substr(name.size());
  return page.Fitted(name, width - page.WidthOf(count, kValue), kValue) + count;
}

void DrawFiles(Page& page, const ViewScene& scene, const Rect& area, bool showsBodies) {
  constexpr double kLabelWidth = 21.0;
  const double width = area.Width() - kLabelWidth;
  Column column(page, area, kLabelWidth);
  column.Write("moving", FittedBody(page, scene.moving, width));
  if (showsBodies) column.Swatch(kMovingColour);
  const bool touches = showsBodies && (scene.answer.status == SweepStatus::Contact ||
                                       scene.answer.status == SweepStatus::Start);
  // The body that is met comes first.
  std::vector<std::size_t> order(scene.fixed.size());
  for (std::size_t k = 0; k < order.size(); ++k)
    order[k] = k;
  if (touches)
    std::rotate(order.begin(),
                order.begin() + static_cast<std::ptrdiff_t>(scene.answer.contact.fixedBody),
                order.begin() + static_cast<std::ptrdiff_t>(scene.answer.contact.fixedBody) + 1);
  const bool areTooMany = order.size() > kMostFiles;
  const std::size_t shown = areTooMany ? kMostFiles - 1 : order.size();
  for (std::size_t k = 0; k < shown; ++k) {
    const bool isMet = touches && k == 0 && order.size() > 1;
    column.Write(k == 0 ? "fixed" : "",
                 (isMet ? "met: " : "") +
                     FittedBody(page, scene.fixed[order[k]], width - (isMet ? 9.0 : 0.0)));
    if (k == 0 && showsBodies) column.Swatch(kFixedColour);
  }
  if (areTooMany)
    column.Write("", "and " + std::to_string(order.size() - shown) + " more fixed bodies");
}

std::string TravelText(const Answer& answer) {
  if (answer.status == SweepStatus::Contact) return FullNumber(answer.contact.travel);
  return answer.status == SweepStatus::Start ? "0 (from the start)" : "none";
}

} // namespace

std::string HeadlineOf(const ViewScene& scene) {
  const Answer& answer = scene.answer;
  const bool isNear = scene.question.clearance > 0.0;
  const std::string within = "ithin " + ShortNumber(scene.question.clearance);
  if (answer.status == SweepStatus::Contact) {
    const std::string what = isNear       ? "W" + within
                             : scene.last ? std::string("Last contact")
                                          : std::string("Contact");
    return what + " after a travel of " + ShortNumber(answer.contact.travel);
  }
  if (answer.status == SweepStatus::Start) {
    if (isNear) return "W" + within + " from the start";
    return scene.last ? "Last contact at the start" : "In contact from the start";
  }
  const std::string limit = std::isfinite(scene.question.maxDistance)
                                ? " up to a travel of " + ShortNumber(scene.question.maxDistance)
                                : "";
  return (isNear ? "Not w" + within : std::string("No contact")) + limit;
}

std::string AskedText(const ViewScene& scene) {
  std::string text = scene.last ? "last contact" : "first contact";
  if (scene.question.clearance > 0.0) text = "within " + ShortNumber(scene.question.clearance);
  if (scene.question.rule == Rule::Solid) text += " of solids";
  if (scene.question.rule == Rule::NotLeaving) text += ", leaving allowed";
  if (scene.question.oneSided) text += ", one-sided";
  if (std::isfinite(scene.question.maxDistance)) {
    text += ", up to " + ShortNumber(scene.question.maxDistance);
  }
  return text;
}

std::string KindInWords(const ViewScene& scene) {
  const Answer& answer = scene.answer;
  if (answer.status != SweepStatus::Contact && answer.status != SweepStatus::Start) return "none";
  if (answer.contact.kind == ContactKind::Inside) {
    return answer.contact.movingIsInside ? "moving inside fixed" : "fixed inside moving";
  }
  if (answer.contact.kind == ContactKind::Overlap) return "they share a point";
  std::string words = KindName(answer.contact.kind);
  return words.replace(words.find('-'), 1, scene.question.clearance > 0.0 ? " to " : " on ");
}

void DrawTitleBlock(Page& page, const ViewScene& scene, const Rect& block, const TitleTexts& texts,
                    bool showsBodies) {
  const double second = block.left + 0.44 * block.Width();
  const double third = block.left + 0.80 * block.Width();
  page.DrawBox(block, {0.35, kInk});
  for (const double x : {second, third})
    page.DrawLine({x, block.top}, {x, block.bottom}, {0.25, kInk});
  DrawFiles(page, scene, {block.left + 2.5, block.top, second - 2.0, block.bottom}, showsBodies);
  Column answer(page, {second + 2.5, block.top, third - 2.0, block.bottom}, 19.0);
  for (const TitleRow& row : texts.rows)
    answer.Write(row.label, row.value, {3.0, Align::Left, row.isBold, kInk});
  if (!scene.changes.empty()) answer.Write("moving", DrawableText(scene.changes));
  const Rect right{third + 2.5, block.top, block.right - 2.0, block.bottom};
  Column tool(page, right, 0.0);
  tool.Write("", "gsl-sweep " + DrawableText(scene.toolVersion), {3.6, Align::Left, true, kInk});
  tool.Write("", "lengths in the unit of the files", kLabel);
  if (texts.errorBound > 0.0) {
    tool.Write("", "off by at most " + ShortNumber(texts.errorBound), kLabel);
  }
  if (!texts.note.empty()) tool.Write("", texts.note, kLabel);
}

void DrawTitleBlock(Page& page, const ViewScene& scene, const Rect& block,
                    const std::string& note) {
  TitleTexts texts;
  texts.rows = {{"direction", ShortVector(scene.answer.unitDirection)},
                {"travel", TravelText(scene.answer), true},
                {"kind", KindInWords(scene)},
                {"asked", AskedText(scene)}};
  texts.errorBound = scene.answer.errorBound;
  texts.note = note;
  DrawTitleBlock(page, scene, block, texts, true);
}

} // namespace gsl_view
