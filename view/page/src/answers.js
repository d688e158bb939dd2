// The answers to the directions of a sphere, and how the page changes from one to the next.

// The codes of PageSphere.
const KIND_SHIFT = 2;
const HAS_NORMAL = 1 << 8;
const OVERLAPS_AT_START = 1 << 9;
const MOVING_PLACE = 1 << 10;
const FIXED_PLACE = 1 << 11;
const IS_EXACT = 1 << 12;
const PER_CONTACT = 11;

/** The answers of a sphere, by their numbers from 0. */
export class Answers {
  constructor(sphere) {
    this.sphere = sphere;
    this.count = sphere.codes.length;
    // Only directions with a contact have one.
    this.contactOf = new Int32Array(this.count);
    let contacts = 0;
    for (let k = 0; k < this.count; ++k) this.contactOf[k] = this.status(k) === 'none' ? -1 : contacts++;
  }

  status(k) {
    return this.sphere.statuses[this.sphere.codes[k] & 3];
  }

  /** Returns the travel, or null for a free direction. */
  travel(k) {
    return this.contactOf[k] < 0 ? null : this.sphere.contacts[PER_CONTACT * this.contactOf[k]];
  }

  direction(k) {
    return [...this.sphere.directions.subarray(3 * k, 3 * k + 3)];
  }

  /** Returns an answer as the data of a page with one answer has it. */
  at(k) {
    const code = this.sphere.codes[k];
    const direction = this.direction(k);
    const none = { travel: null, error_bound: null, kind: null, overlaps_at_start: false, normal: null };
    const answer = { status: this.status(k), exact: (code & IS_EXACT) !== 0, direction, ...none };
    const contact = this.contactOf[k];
    if (contact < 0) return { ...answer, moving: null, fixed: null, fixed_body: null };
    const numbers = [...this.sphere.contacts.subarray(PER_CONTACT * contact, PER_CONTACT * (contact + 1))];
    const [moving, fixed, body] = this.sphere.triangles.subarray(3 * contact, 3 * contact + 3);
    return {
      ...answer,
      travel: numbers[0],
      error_bound: numbers[1],
      kind: this.sphere.kinds[(code >> KIND_SHIFT) & 7],
      overlaps_at_start: (code & OVERLAPS_AT_START) !== 0,
      normal: code & HAS_NORMAL ? numbers.slice(8, 11) : null,
      moving: code & MOVING_PLACE ? { triangle: moving, point: numbers.slice(2, 5) } : null,
      fixed: code & FIXED_PLACE ? { triangle: fixed, point: numbers.slice(5, 8) } : null,
      fixed_body: body,
    };
  }

  greatestTravel() {
    return this.sphere.greatest === null ? 0 : this.travel(this.sphere.greatest);
  }
}

/** Finds the nearest of many directions by boxes of a grid. */
export class Nearest {
  constructor(directions) {
    this.directions = directions;
    const count = directions.length / 3;
    // Even directions have a neighbour within about this distance.
    this.side = Math.min(2, 1.6 * Math.sqrt((4 * Math.PI) / count));
    this.cells = Math.ceil(2 / this.side) + 2;
    this.starts = new Int32Array(this.cells ** 3 + 1);
    const cellOf = (k) => this.cellOf(directions[3 * k], directions[3 * k + 1], directions[3 * k + 2]);
    for (let k = 0; k < count; ++k) ++this.starts[cellOf(k) + 1];
    for (let cell = 0; cell < this.cells ** 3; ++cell) this.starts[cell + 1] += this.starts[cell];
    const next = this.starts.slice();
    this.numbers = new Int32Array(count);
    for (let k = 0; k < count; ++k) this.numbers[next[cellOf(k)]++] = k;
  }

  place(number) {
    return Math.min(this.cells - 2, Math.max(1, Math.floor((number + 1) / this.side) + 1));
  }

  cellOf(x, y, z) {
    return (this.place(z) * this.cells + this.place(y)) * this.cells + this.place(x);
  }

  /** Returns the number of the nearest direction to a unit vector; of equally near ones the lowest. */
  find(x, y, z) {
    let best = -1;
    let least = Infinity;
    const look = (k) => {
      const dx = this.directions[3 * k] - x;
      const dy = this.directions[3 * k + 1] - y;
      const dz = this.directions[3 * k + 2] - z;
      const square = dx * dx + dy * dy + dz * dz;
      if (square < least || (square === least && k < best)) {
        least = square;
        best = k;
      }
    };
    const [px, py, pz] = [this.place(x), this.place(y), this.place(z)];
    for (let cz = pz - 1; cz <= pz + 1; ++cz) {
      for (let cy = py - 1; cy <= py + 1; ++cy) {
        const row = (cz * this.cells + cy) * this.cells + px;
        for (let at = this.starts[row - 1]; at < this.starts[row + 2]; ++at) look(this.numbers[at]);
      }
    }
    // Beyond the boxes around there may be a nearer one.
    if (!(least <= this.side * this.side)) for (let k = 0; 3 * k < this.directions.length; ++k) look(k);
    return best;
  }
}

/** Returns the nearest direction that lies to one side of another, or the other itself where there is none. */
export function neighbour(directions, from, side) {
  const own = directions.subarray(3 * from, 3 * from + 3);
  let best = from;
  let least = Infinity;
  for (let k = 0; 3 * k < directions.length; ++k) {
    const [x, y, z] = [directions[3 * k] - own[0], directions[3 * k + 1] - own[1], directions[3 * k + 2] - own[2]];
    const along = x * side[0] + y * side[1] + z * side[2];
    const square = x * x + y * y + z * z;
    // Within 45 degrees of the side.
    if (!(along > 0) || along * along < 0.5 * square) continue;
    if (square < least) {
      least = square;
      best = k;
    }
  }
  return best;
}
