// The edges of a surface that show its shape.

const SHARP = Math.cos(Math.PI / 6);

/** Returns the unit normal of each triangle, zeros for one without area. */
function normalsOf(vertices, corners) {
  const normals = new Float32Array(corners.length);
  for (let t = 0; t < corners.length; t += 3) {
    const [a, b, c] = [3 * corners[t], 3 * corners[t + 1], 3 * corners[t + 2]];
    const ux = vertices[b] - vertices[a], uy = vertices[b + 1] - vertices[a + 1], uz = vertices[b + 2] - vertices[a + 2];
    const vx = vertices[c] - vertices[a], vy = vertices[c + 1] - vertices[a + 1], vz = vertices[c + 2] - vertices[a + 2];
    const x = uy * vz - uz * vy, y = uz * vx - ux * vz, z = ux * vy - uy * vx;
    const length = Math.sqrt(x * x + y * y + z * z);
    if (length === 0) continue;
    normals[t] = x / length;
    normals[t + 1] = y / length;
    normals[t + 2] = z / length;
  }
  return normals;
}

/**
 * Returns pairs of vertices: the edges that one triangle uses, or between triangles that turn by
 * more than 30 degrees, or that more than two triangles use. A table of open addressing finds the
 * triangles of an edge.
 */
export function sharpEdges(vertices, corners) {
  const normals = normalsOf(vertices, corners);
  let size = 16;
  while (size < 2 * corners.length) size *= 2;
  const slots = new Int32Array(size).fill(-1);
  const isShared = new Uint8Array(corners.length);
  const sharp = new Uint8Array(corners.length);
  const endOf = (half) => (half % 3 === 2 ? half - 2 : half + 1);
  for (let half = 0; half < corners.length; ++half) {
    const p = corners[half], q = corners[endOf(half)];
    if (p === q) continue;
    const low = Math.min(p, q), high = Math.max(p, q);
    let slot = (Math.imul(low, 73856093) ^ Math.imul(high, 19349663)) & (size - 1);
    for (; slots[slot] >= 0; slot = (slot + 1) & (size - 1)) {
      const p2 = corners[slots[slot]], q2 = corners[endOf(slots[slot])];
      if (Math.min(p2, q2) === low && Math.max(p2, q2) === high) break;
    }
    const first = slots[slot];
    if (first < 0) {
      slots[slot] = half;
      sharp[half] = 1;
      continue;
    }
    const a = first - (first % 3), b = half - (half % 3);
    const turn = normals[a] * normals[b] + normals[a + 1] * normals[b + 1] + normals[a + 2] * normals[b + 2];
    // Neighbours that use the edge in the same direction are oriented in opposite ways.
    const facing = corners[first] === p ? -turn : turn;
    sharp[first] = isShared[first] || facing < SHARP ? 1 : 0;
    isShared[first] = 1;
  }
  const edges = [];
  for (let half = 0; half < corners.length; ++half) {
    if (sharp[half]) edges.push(corners[half], corners[endOf(half)]);
  }
  return new Uint32Array(edges);
}
