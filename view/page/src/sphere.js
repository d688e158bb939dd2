// The sphere that chooses the direction: each place has the colour of the nearest direction. It turns with the camera,
// so that a direction on it points as the body goes in the picture. One half is seen: that towards the viewer, from
// outside, or that away from the viewer, from inside. From where the body comes, the second is of more use.

import { Nearest, neighbour } from './answers.js';
import { dot, plus } from './frame.js';
import { textOf } from './numbers.js';

const byId = (id) => document.getElementById(id);
const bytesOfColour = (text) => [1, 3, 5].map((at) => parseInt(text.slice(at, at + 2), 16));
const unitOf = (v) => v.map((number) => number / Math.hypot(...v));
const cross = (a, b) => [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]];
const short = (number) => textOf(Number(number.toPrecision(6)));

/** Returns the part of the scale of a travel, from 0 to 1. */
function partOf({ low, high, logarithmic }, travel) {
  if (!(high > low)) return 0.5;
  const part = logarithmic ? Math.log(Math.max(travel, low) / low) / Math.log(high / low) : (travel - low) / (high - low);
  return Math.min(1, Math.max(0, part));
}

function mixed(colours, part) {
  const place = part * (colours.length - 1);
  const below = Math.min(colours.length - 2, Math.floor(place));
  return [0, 1, 2].map((k) => Math.round(colours[below][k] + (place - below) * (colours[below + 1][k] - colours[below][k])));
}

/** Returns whether a pixel is a dot of the start, or a stripe of the free directions. */
const isDot = (x, y, unit) => (x + (Math.floor(y / (5 * unit)) % 2) * 5 * unit) % (10 * unit) < 2 * unit && y % (5 * unit) < 2 * unit;
const isStripe = (x, y, unit) => (x + y) % (8 * unit) < 1.5 * unit;

/** Marks the round travels on the bar, and names those whose numbers have room beside each other. */
function markScale(scale) {
  const WIDTH_OF_LETTER = 0.028; // as a part of the narrowest bar
  const widthOf = (text) => WIDTH_OF_LETTER * (text.length + 1);
  const lowest = widthOf(byId('scale-low').textContent);
  const highest = 1 - widthOf(byId('scale-high').textContent);
  let end = lowest;
  for (const tick of scale.ticks) {
    const part = partOf(scale, tick);
    const mark = byId('scale-bar').appendChild(document.createElement('i'));
    mark.style.left = `${100 * part}%`;
    const text = short(tick);
    const half = widthOf(text) / 2;
    if (part - half < end || part + half > highest) continue;
    const label = byId('scale-numbers').appendChild(document.createElement('span'));
    label.className = 'tick';
    label.textContent = text;
    label.style.left = `${100 * part}%`;
    end = part + half;
  }
}

function showScale(answers) {
  const { sphere, count } = answers;
  const { scale } = sphere;
  const share = (part) => `${part} of ${count}`;
  byId('count-start').textContent = share(sphere.start);
  byId('count-contact').textContent = share(sphere.contact);
  byId('count-free').textContent = share(sphere.free);
  byId('scale').hidden = sphere.contact === 0;
  if (scale.logarithmic) byId('scale-name').textContent += ', logarithmic scale';
  byId('scale-bar').style.background = `linear-gradient(to right, ${sphere.colours.join(', ')})`;
  byId('scale-low').textContent = (scale.cut ? '\u2264 ' : '') + short(scale.low);
  byId('scale-high').textContent = short(scale.high);
  markScale(scale);
  byId('go-least').hidden = byId('go-greatest').hidden = sphere.contact === 0;
}

/** Names the states as the question has them. */
function nameStates({ question }) {
  const near = question.clearance > 0 ? `within ${textOf(question.clearance)}` : null;
  const limit = question.max_distance === null ? '' : ` up to ${textOf(question.max_distance)}`;
  const isSolid = question.rule === 'solid';
  byId('name-start').textContent = near ? `${near} from the start` : isSolid ? 'overlap from the start' : question.last ? 'last contact at the start' : 'in contact from the start';
  byId('scale-name').textContent = near ? `travel until ${near}` : isSolid ? 'travel until they overlap' : `travel to the ${question.last ? 'last' : 'first'} contact`;
  byId('name-free').textContent = (near ? `free: not ${near}` : isSolid ? 'free: no overlap' : 'free: no contact') + limit;
}

export class Sphere {
  /** Calls `choose(k)` for a direction, and `turn(right, up)` to turn the camera by radians. */
  constructor(scene, answers, choose, turn) {
    this.answers = answers;
    this.choose = choose;
    this.turn = turn;
    this.canvas = byId('sphere');
    this.chosen = scene.sphere.shown;
    this.axes = { right: [1, 0, 0], up: [0, 0, 1], toward: [0, -1, 0] };
    this.side = 1; // -1 for the half away from the viewer
    this.nearest = new Nearest(scene.sphere.directions);
    this.useColours(scene.sphere);
    byId('directions').hidden = false;
    nameStates(scene);
    showScale(answers);
    byId('turn-over').addEventListener('click', () => this.turnOver(-this.side));
    byId('go-least').addEventListener('click', () => this.go(scene.sphere.least));
    byId('go-greatest').addEventListener('click', () => this.go(scene.sphere.greatest));
    this.canvas.setAttribute('aria-valuemax', answers.count);
    this.canvas.addEventListener('keydown', (event) => this.useKey(event));
    this.usePointer();
    new ResizeObserver(() => this.draw()).observe(this.canvas);
  }

  useColours(sphere) {
    const colours = sphere.colours.map(bytesOfColour);
    this.starts = sphere.start_colours.map(bytesOfColour);
    this.frees = sphere.free_colours.map(bytesOfColour);
    this.states = new Uint8Array(this.answers.count); // 0 free, 1 contact, 2 start
    this.colours = new Uint8Array(3 * this.answers.count);
    for (let k = 0; k < this.answers.count; ++k) {
      this.states[k] = sphere.codes[k] & 3;
      const own = [this.frees[0], mixed(colours, partOf(sphere.scale, this.answers.travel(k) ?? 0)), this.starts[0]];
      this.colours.set(own[this.states[k]], 3 * k);
    }
  }

  /** Takes the axes of the camera, which are unit vectors. */
  look(axes) {
    const isSame = ['right', 'up', 'toward'].every((name) => this.axes[name].every((number, k) => number === axes[name][k]));
    if (isSame) return;
    this.axes = axes;
    this.draw();
  }

  /** Shows a direction as the chosen one. */
  show(k) {
    this.chosen = k;
    const { canvas, answers } = this;
    canvas.setAttribute('aria-valuenow', k + 1);
    const travel = answers.travel(k);
    const state = { none: 'free', start: 'from the start', contact: `travel ${travel === null ? '' : short(travel)}` }[answers.status(k)];
    const direction = answers.direction(k).map((number) => textOf(Number(number.toFixed(3))));
    canvas.setAttribute('aria-valuetext', `direction ${k + 1} of ${answers.count}, (${direction.join(', ')}): ${state}`);
    byId('chosen').textContent = `${k + 1} of ${answers.count}: ${state}`;
    this.draw();
  }

  go(k) {
    if (k === null) return;
    this.choose(k);
    this.turnOverTo(this.answers.direction(k));
  }

  turnOver(side) {
    this.side = side;
    byId('half').textContent = side > 0 ? 'The half towards you.' : 'The half away from you.';
    this.draw();
  }

  /** Shows the half with a direction. */
  turnOverTo(direction) {
    this.turnOver(dot(direction, this.axes.toward) < 0 ? -1 : 1);
  }

  /** Returns the direction at a place of the canvas, or null beside the sphere. */
  at(x, y) {
    const box = this.canvas.getBoundingClientRect();
    const radius = (0.5 * box.width * this.reach()) / this.canvas.width;
    const u = (x - box.left - 0.5 * box.width) / radius;
    const v = (box.top + 0.5 * box.height - y) / radius;
    const square = u * u + v * v;
    if (square > 1) return null;
    const { right, up, toward } = this.axes;
    return plus(plus(right.map((number) => number * u), up, v), toward, this.side * Math.sqrt(1 - square));
  }

  /** Returns the diameter of the sphere in pixels of the canvas: names are written beside it. */
  reach() {
    return this.canvas.width - 36 * this.scale();
  }

  scale() {
    return Math.min(2, window.devicePixelRatio);
  }

  usePointer() {
    const { canvas } = this;
    let from = null;
    canvas.addEventListener('pointerdown', (event) => {
      if (event.button !== 0) return;
      from = { x: event.clientX, y: event.clientY, isClick: true };
      canvas.setPointerCapture(event.pointerId);
    });
    canvas.addEventListener('pointermove', (event) => {
      if (!from) return;
      const [dx, dy] = [event.clientX - from.x, event.clientY - from.y];
      if (from.isClick && Math.hypot(dx, dy) < 4) return;
      const radius = 0.5 * canvas.clientWidth;
      this.turn((-this.side * dx) / radius, (this.side * dy) / radius);
      from = { x: event.clientX, y: event.clientY, isClick: false };
    });
    canvas.addEventListener('pointerup', (event) => {
      const place = from?.isClick ? this.at(event.clientX, event.clientY) : null;
      from = null;
      if (place) this.choose(this.nearest.find(...place));
    });
    canvas.addEventListener('pointercancel', () => {
      from = null;
    });
  }

  useKey(event) {
    const { chosen, answers } = this;
    const { least, greatest } = answers.sphere;
    const targets = {
      PageUp: (chosen + 1) % answers.count,
      PageDown: (chosen + answers.count - 1) % answers.count,
      Home: least ?? 0,
      End: greatest ?? 0,
    };
    const sides = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, 1], ArrowDown: [0, -1] };
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    if (event.key in targets) this.go(targets[event.key]);
    else if (event.key in sides) this.go(neighbour(answers.sphere.directions, chosen, this.sideOf(...sides[event.key])));
    else return;
    event.preventDefault();
  }

  /** Returns the way along the sphere, from the chosen direction, to the right or up as it is seen. */
  sideOf(right, up) {
    const own = this.answers.direction(this.chosen);
    // From inside, east is to the left.
    const flat = cross(this.axes.up, own);
    const east = Math.hypot(...flat) > 1e-3 ? unitOf(flat) : this.axes.right;
    const north = unitOf(cross(own, east));
    return plus(east.map((number) => number * right * this.side), north, up);
  }

  draw() {
    if (this.isAsked) return;
    this.isAsked = true;
    requestAnimationFrame(() => {
      this.isAsked = false;
      this.paint();
      this.canvas.dataset.drawn = Number(this.canvas.dataset.drawn ?? 0) + 1;
    });
  }

  paint() {
    const { canvas } = this;
    const unit = this.scale();
    const size = Math.max(40, Math.round(canvas.clientWidth * unit));
    if (canvas.width !== size) canvas.width = canvas.height = size;
    const context = canvas.getContext('2d', { willReadFrequently: true });
    context.putImageData(this.imageOf(context, size, unit), 0, 0);
    const styles = getComputedStyle(document.documentElement);
    const ink = styles.getPropertyValue('--text');
    context.lineWidth = 1.5 * unit;
    context.strokeStyle = ink;
    context.beginPath();
    context.arc(size / 2, size / 2, this.reach() / 2, 0, 2 * Math.PI);
    context.stroke();
    const { right, up, toward } = this.axes;
    canvas.dataset.axes = [right, up, toward.map((number) => this.side * number)].join(';');
    this.nameAxes(context, size, unit);
    this.ringAt(context, size, unit, this.answers.direction(this.chosen));
  }

  imageOf(context, size, unit) {
    const image = context.createImageData(size, size);
    const radius = this.reach() / 2;
    const { right, up, toward } = this.axes;
    for (let y = 0; y < size; ++y) {
      for (let x = 0; x < size; ++x) {
        const u = (x + 0.5 - size / 2) / radius;
        const v = (size / 2 - y - 0.5) / radius;
        const square = u * u + v * v;
        if (square > 1) continue;
        const w = this.side * Math.sqrt(1 - square);
        const k = this.nearest.find(
          u * right[0] + v * up[0] + w * toward[0],
          u * right[1] + v * up[1] + w * toward[1],
          u * right[2] + v * up[2] + w * toward[2],
        );
        const at = 4 * (y * size + x);
        const state = this.states[k];
        const mark = state === 0 ? isStripe(x, y, unit) && this.frees[1] : state === 2 && isDot(x, y, unit) && this.starts[1];
        for (let part = 0; part < 3; ++part) image.data[at + part] = mark ? mark[part] : this.colours[3 * k + part];
        image.data[at + 3] = 255;
      }
    }
    return image;
  }

  placeOf(direction, size) {
    const radius = this.reach() / 2;
    const { right, up } = this.axes;
    return [size / 2 + radius * dot(direction, right), size / 2 - radius * dot(direction, up)];
  }

  /** Names the ends of the axes that are on the half that is seen. */
  nameAxes(context, size, unit) {
    context.font = `bold ${12 * unit}px system-ui, sans-serif`;
    context.textAlign = 'center';
    context.textBaseline = 'middle';
    for (const [axis, name] of ['x', 'y', 'z'].entries()) {
      for (const sign of [1, -1]) {
        const end = [0, 1, 2].map((k) => (k === axis ? sign : 0));
        if (this.side * dot(end, this.axes.toward) < -0.05) continue;
        const [x, y] = this.placeOf(end, size);
        // Beside the point, away from the middle.
        const [dx, dy] = [x - size / 2, y - size / 2];
        const away = Math.hypot(dx, dy);
        const [left, top] = away > 1 ? [x + (13 * unit * dx) / away, y + (13 * unit * dy) / away] : [x + 13 * unit, y];
        for (const [color, radius] of [['#ffffff', 3.5], ['#000000', 2]]) {
          context.fillStyle = color;
          context.beginPath();
          context.arc(x, y, radius * unit, 0, 2 * Math.PI);
          context.fill();
        }
        context.fillStyle = '#ffffff';
        context.fillRect(left - 10 * unit, top - 7 * unit, 20 * unit, 14 * unit);
        context.fillStyle = '#000000';
        context.fillText((sign > 0 ? '+' : '\u2212') + name, left, top);
      }
    }
  }

  /** Draws a ring around the chosen direction, broken while it is on the other half. */
  ringAt(context, size, unit, direction) {
    const [x, y] = this.placeOf(direction, size);
    context.setLineDash(this.side * dot(direction, this.axes.toward) < 0 ? [3 * unit, 3 * unit] : []);
    for (const [color, width] of [['#000000', 6], ['#ffffff', 3]]) {
      context.beginPath();
      context.arc(x, y, 7 * unit, 0, 2 * Math.PI);
      context.strokeStyle = color;
      context.lineWidth = width * unit;
      context.stroke();
    }
    context.setLineDash([]);
  }
}
