// Where things are drawn: coordinates are divided by one unit and counted from one origin, so that
// numbers of any size can be drawn. Both are doubles; what is near the origin keeps its digits.

export const dot = (a, b) => a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
export const plus = (a, b, factor = 1) => a.map((number, k) => number + factor * b[k]);

/** The box of a body in its own numbers, which are about from -1 to 1. */
function ownBox(vertices) {
  const low = [Infinity, Infinity, Infinity];
  const high = [-Infinity, -Infinity, -Infinity];
  for (let k = 0; k < vertices.length; ++k) {
    const axis = k % 3;
    if (vertices[k] < low[axis]) low[axis] = vertices[k];
    if (vertices[k] > high[axis]) high[axis] = vertices[k];
  }
  return vertices.length > 0 ? { low, high } : { low: [0, 0, 0], high: [0, 0, 0] };
}

/** Returns how coordinates are drawn, and the box of each body as it is drawn before any travel. */
export function frameOf(scene) {
  const bodies = [scene.moving, ...scene.fixed];
  const unit = Math.max(...bodies.map((body) => body.scale));
  const { answer } = scene;
  const origin = (answer.fixed ?? answer.moving)?.point ?? scene.moving.centre;
  const place = (point) => point.map((number, k) => number / unit - origin[k] / unit);
  const boxes = new Map();
  for (const body of bodies) {
    const box = ownBox(body.vertices);
    const centre = place(body.centre);
    const factor = body.scale / unit;
    boxes.set(body.id, { low: plus(centre, box.low, factor), high: plus(centre, box.high, factor) });
  }
  return { unit, place, boxes };
}

const corners = (box) =>
  [0, 1, 2, 3, 4, 5, 6, 7].map((k) => [0, 1, 2].map((axis) => ((k >> axis) & 1 ? box.high : box.low)[axis]));

/** Returns the travel, as it is drawn, after which a box along its way is past all others. */
export function passingTravel(moving, others, direction) {
  const least = Math.min(...corners(moving).map((p) => dot(p, direction)));
  const greatest = Math.max(...others.flatMap(corners).map((p) => dot(p, direction)));
  const size = Math.hypot(...plus(moving.high, moving.low, -1));
  return Math.max(greatest - least, size) || 1;
}

/** Returns a ball around boxes. */
export function ballAround(boxes) {
  const low = [0, 1, 2].map((axis) => Math.min(...boxes.map((box) => box.low[axis])));
  const high = [0, 1, 2].map((axis) => Math.max(...boxes.map((box) => box.high[axis])));
  return {
    centre: plus(low, high).map((number) => number / 2),
    radius: Math.hypot(...plus(high, low, -1)) / 2 || 1,
  };
}

/** Returns the greatest travel of the slider, in the units of the files. */
export function greatestTravel(scene, frame) {
  const { answer, question } = scene;
  if (answer.travel !== null) return answer.travel;
  const fixed = scene.fixed.map((body) => frame.boxes.get(body.id));
  const passing = passingTravel(frame.boxes.get(scene.moving.id), fixed, answer.direction) * frame.unit;
  const travel = Number.isFinite(passing) ? passing : Number.MAX_VALUE;
  return question.max_distance === null ? travel : Math.min(travel, question.max_distance);
}
