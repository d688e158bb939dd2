// The viewer page of gsl-sweep: two or more bodies, and the answers to one question or to many
// directions.

import { Answers } from './answers.js';
import { readScene } from './data.js';
import { ballAround, dot, frameOf, greatestTravel, plus } from './frame.js';
import { Marks } from './marks.js';
import { showLegend, showNumbers, useCopying } from './numbers.js';
import { Orbit } from './orbit.js';
import { Player } from './player.js';
import { Sphere } from './sphere.js';
import { Stage } from './stage.js';
import { useThemes } from './theme.js';

const byId = (id) => document.getElementById(id);

/** Returns a stage, or null where the browser cannot draw. */
function openStage() {
  try {
    return new Stage(byId('canvas'));
  } catch {
    byId('canvas').hidden = true;
    byId('views').hidden = true;
    byId('no-view').hidden = false;
    return null;
  }
}

/** Returns an oblique view from the side that the moving body comes from: it does not hide the contact. */
function obliqueView(direction) {
  const views = [0.45, -0.45].flatMap((z) => [[0.6, -0.7, z], [-0.7, -0.6, z], [0.7, 0.6, z], [-0.6, 0.7, z]]);
  const miss = (view) => Math.abs(-dot(view, direction) - 0.45);
  return views.reduce((best, view) => (miss(view) < miss(best) - 1e-9 ? view : best));
}

/** Returns a view across a direction, level where that is possible. */
function sideView(direction) {
  const [x, y] = direction;
  const level = Math.hypot(x, y);
  return level < 1e-6 ? [0, -1, 0] : [y / level, -x / level, 0];
}

/** Returns the box of the moving body after a shift along a direction, as it is drawn. */
function movedBox(scene, frame, direction, shift) {
  const box = frame.boxes.get(scene.moving.id);
  return { low: plus(box.low, direction, shift), high: plus(box.high, direction, shift) };
}

/** Returns whether a ball contains another. */
const contains = (ball, other) => Math.hypot(...plus(ball.centre, other.centre, -1)) + other.radius <= 1.01 * ball.radius;

/** The buttons that show the bodies, for the answer that is shown. */
class Views {
  constructor(stage, scene, frame) {
    Object.assign(this, { stage, scene, frame });
    this.fixed = scene.fixed.map((body) => frame.boxes.get(body.id));
    // The camera needs a vertical that it does not look along.
    const tilt = (view) => (Math.hypot(view[0], view[1]) < 1e-6 ? [0, -1e-5, view[2]] : view);
    const views = {
      'view-all': () => stage.look(this.all, obliqueView(this.approach())),
      'view-contact': () => stage.look(this.near),
      'view-side': () => stage.look(this.all, sideView(this.direction)),
      'view-along': () => stage.look(this.all, tilt(this.direction.map((number) => -number))),
    };
    for (const [id, view] of Object.entries(views)) byId(id).addEventListener('click', view);
  }

  /** Returns the way of the moving body: with a sphere, which has many, the way to the other bodies. */
  approach() {
    if (!this.scene.sphere) return this.direction;
    const way = plus(ballAround(this.fixed).centre, ballAround([movedBox(this.scene, this.frame, this.direction, 0)]).centre, -1);
    const length = Math.hypot(...way);
    return length > 0 ? way.map((number) => number / length) : this.direction;
  }

  /** Takes the answer of the scene. */
  use(greatest) {
    const { scene, frame, fixed } = this;
    const { answer } = scene;
    this.direction = answer.direction;
    const moving = movedBox(scene, frame, answer.direction, 0);
    const end = movedBox(scene, frame, answer.direction, greatest / frame.unit);
    const touched = answer.fixed ?? answer.moving;
    const sizes = [moving, ...fixed].map((box) => ballAround([box]).radius);
    this.near = touched && { centre: frame.place(touched.point), radius: 0.25 * Math.min(...sizes) };
    this.together = ballAround([end, ...fixed]);
    this.all = ballAround([moving, end, ...fixed]);
    byId('view-contact').disabled = !this.near;
  }

  /** Shows the bodies from a side from which they are seen well. */
  begin() {
    // After a long way the bodies would be small.
    const isLong = this.near && this.all.radius > 2.5 * this.together.radius;
    this.stage.look(isLong ? this.together : this.all, obliqueView(this.approach()));
  }

  /** Leaves the camera where it is, unless the bodies would not be in the picture. */
  keep() {
    const shown = this.near ? this.together : this.all;
    if (!contains(this.stage.ball, shown)) this.stage.look(shown);
  }
}

/** Presses the button of a key, except while the key has a meaning of its own. */
function useKeys() {
  const buttons = { ' ': 'play', a: 'view-all', c: 'view-contact', s: 'view-side', d: 'view-along', x: 'see-through', t: 'theme', o: 'turn-over' };
  document.addEventListener('keydown', (event) => {
    const id = buttons[event.key.toLowerCase()];
    if (!id || event.ctrlKey || event.altKey || event.metaKey || event.defaultPrevented) return;
    if (event.key === ' ' && event.target.closest('button, summary, input[type="checkbox"]')) return;
    event.preventDefault();
    byId(id).click();
  });
}

/** What is drawn of the scene: bodies, marks, camera and slider. */
class Shown {
  constructor(stage, scene) {
    this.stage = stage;
    this.scene = scene;
    this.frame = frameOf(scene);
    stage.addBody(scene.moving, 'moving', this.frame);
    for (const body of scene.fixed) stage.addBody(body, 'fixed', this.frame);
    this.fixed = scene.fixed.map((body) => this.frame.boxes.get(body.id));
    this.views = new Views(stage, scene, this.frame);
    this.player = new Player((travel) => this.move(travel));
    byId('see-through').addEventListener('click', (event) => {
      const isOn = event.currentTarget.getAttribute('aria-pressed') !== 'true';
      event.currentTarget.setAttribute('aria-pressed', isOn);
      stage.seeThrough(isOn);
    });
    this.use();
    this.views.begin();
    // Otherwise the outer body hides the inner one.
    if (scene.answer.kind === 'inside') byId('see-through').click();
  }

  /** Shows the answer of the scene, at its contact if it has one. */
  use() {
    this.marks?.remove();
    this.marks = new Marks(this.stage, this.scene, this.frame);
    const greatest = greatestTravel(this.scene, this.frame);
    this.views.use(greatest);
    this.player.use(greatest, this.scene.answer.status === 'none' ? 0 : 1);
  }

  move(travel) {
    const { stage, scene, frame } = this;
    const { direction } = scene.answer;
    const shift = travel / frame.unit;
    const group = stage.groups.get(scene.moving.id);
    group.position.set(...plus(group.home.toArray(), direction, shift));
    this.marks.follow(shift);
    stage.depth = ballAround([movedBox(scene, frame, direction, shift), ...this.fixed]);
    stage.draw();
  }
}

const scene = readScene();
const stage = openStage();
let numbers = showNumbers(scene);
showLegend(scene, (id, isVisible) => {
  if (!stage) return;
  stage.groups.get(id).visible = isVisible;
  stage.draw();
});
useCopying(() => numbers);
const shown = stage && new Shown(stage, scene);
if (!stage) byId('travel-bar').hidden = true;

/** Lets the sphere choose among its answers. */
function useSphere() {
  const answers = new Answers(scene.sphere);
  const orbit = stage ?? new Orbit();
  const sphere = new Sphere(
    scene,
    answers,
    (k) => {
      scene.answer = answers.at(k);
      numbers = showNumbers(scene);
      sphere.show(k);
      document.documentElement.dataset.direction = k;
      if (!shown) return;
      shown.use();
      shown.views.keep();
    },
    (right, up) => {
      orbit.turn(right, up);
      if (stage) stage.turned();
      else sphere.look(orbit.axes());
    },
  );
  byId('sphere-keys').hidden = false;
  sphere.look(orbit.axes());
  sphere.turnOverTo(scene.answer.direction);
  if (stage) stage.beforeDrawing.push(() => sphere.look(stage.axes()));
  sphere.show(scene.sphere.shown);
  document.documentElement.dataset.direction = scene.sphere.shown;
  return sphere;
}

const sphere = scene.sphere ? useSphere() : null;
useThemes((theme) => {
  stage?.useTheme(theme);
  sphere?.draw();
});
useKeys();
document.documentElement.dataset.state = 'ready';
