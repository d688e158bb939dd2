// The viewer page of gsl-sweep: two or more bodies and the answer to one question about them.

import { readScene } from './data.js';
import { ballAround, dot, frameOf, greatestTravel, plus } from './frame.js';
import { addMarks } from './marks.js';
import { showNumbers } from './numbers.js';
import { Player } from './player.js';
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

/** Returns the box of the moving body after a shift, as it is drawn. */
function movedBox(scene, frame, shift) {
  const box = frame.boxes.get(scene.moving.id);
  const { direction } = scene.answer;
  return { low: plus(box.low, direction, shift), high: plus(box.high, direction, shift) };
}

function useViews(stage, scene, frame, greatest) {
  const { answer } = scene;
  const moving = movedBox(scene, frame, 0);
  const end = movedBox(scene, frame, greatest / frame.unit);
  const fixed = scene.fixed.map((body) => frame.boxes.get(body.id));
  const all = ballAround([moving, end, ...fixed]);
  const touched = answer.fixed ?? answer.moving;
  const sizes = [moving, ...fixed].map((box) => ballAround([box]).radius);
  const near = touched && { centre: frame.place(touched.point), radius: 0.25 * Math.min(...sizes) };
  // The camera needs a vertical that it does not look along.
  const tilt = (view) => (Math.hypot(view[0], view[1]) < 1e-6 ? [0, -1e-5, view[2]] : view);
  const views = {
    'view-all': () => stage.look(all, obliqueView(answer.direction)),
    'view-contact': () => stage.look(near),
    'view-side': () => stage.look(all, sideView(answer.direction)),
    'view-along': () => stage.look(all, tilt(answer.direction.map((number) => -number))),
  };
  for (const [id, view] of Object.entries(views)) byId(id).addEventListener('click', view);
  byId('view-contact').disabled = !near;
  // After a long way the bodies would be small.
  const together = ballAround([end, ...fixed]);
  if (near && all.radius > 2.5 * together.radius) stage.look(together, obliqueView(answer.direction));
  else views['view-all']();
}

/** Presses the button of a key, except while the key has a meaning of its own. */
function useKeys() {
  const buttons = { ' ': 'play', a: 'view-all', c: 'view-contact', s: 'view-side', d: 'view-along', x: 'see-through', t: 'theme' };
  document.addEventListener('keydown', (event) => {
    const id = buttons[event.key.toLowerCase()];
    if (!id || event.ctrlKey || event.altKey || event.metaKey || event.defaultPrevented) return;
    if (event.key === ' ' && event.target.closest('button, summary, input[type="checkbox"]')) return;
    event.preventDefault();
    byId(id).click();
  });
}

function show(stage, scene) {
  const frame = frameOf(scene);
  const greatest = greatestTravel(scene, frame);
  stage.addBody(scene.moving, 'moving', frame);
  for (const body of scene.fixed) stage.addBody(body, 'fixed', frame);
  const fixed = scene.fixed.map((body) => frame.boxes.get(body.id));
  const followTravel = addMarks(stage, scene, frame);
  const group = stage.groups.get(scene.moving.id);
  const startsAtEnd = scene.answer.status !== 'none';
  new Player(greatest, startsAtEnd ? 1 : 0, (travel) => {
    const shift = travel / frame.unit;
    group.position.set(...plus(group.home.toArray(), scene.answer.direction, shift));
    followTravel(shift);
    stage.depth = ballAround([movedBox(scene, frame, shift), ...fixed]);
    stage.draw();
  });
  byId('see-through').addEventListener('click', (event) => {
    const isOn = event.currentTarget.getAttribute('aria-pressed') !== 'true';
    event.currentTarget.setAttribute('aria-pressed', isOn);
    stage.seeThrough(isOn);
  });
  useViews(stage, scene, frame, greatest);
  // Otherwise the outer body hides the inner one.
  if (scene.answer.kind === 'inside') byId('see-through').click();
}

const scene = readScene();
const stage = openStage();
showNumbers(scene, (id, isVisible) => {
  if (!stage) return;
  stage.groups.get(id).visible = isVisible;
  stage.draw();
});
if (stage) show(stage, scene);
else byId('travel-bar').hidden = true;
useThemes((theme) => stage?.useTheme(theme));
useKeys();
document.documentElement.dataset.state = 'ready';
