// What is marked: the two triangles, the patch, the points, the normal and the way of the point.

import {
  BufferAttribute,
  BufferGeometry,
  CanvasTexture,
  ConeGeometry,
  DoubleSide,
  Group,
  Mesh,
  MeshBasicMaterial,
  Points,
  PointsMaterial,
  Sprite,
  SpriteMaterial,
  Vector3,
} from 'three';
import { LineMaterial } from 'three/examples/jsm/lines/LineMaterial.js';
import { LineSegments2 } from 'three/examples/jsm/lines/LineSegments2.js';
import { LineSegmentsGeometry } from 'three/examples/jsm/lines/LineSegmentsGeometry.js';
import { drawnNumber } from './data.js';
import { plus } from './frame.js';

const FILL = { moving: 0xffe680, fixed: 0x9fd0ff };
// Marks are drawn over the bodies, in this order.
const ORDER = { triangle: 11, line: 12, outline: 13, point: 14 };
const ARROW = 70; // pixels

function overAll(material) {
  material.depthTest = false;
  material.depthWrite = false;
  material.transparent = true;
  return material;
}

function thickLine(positions, options) {
  const geometry = new LineSegmentsGeometry();
  geometry.setPositions(positions);
  const line = new LineSegments2(geometry, overAll(new LineMaterial({ color: 0x000000, linewidth: 2, ...options })));
  line.frustumCulled = false;
  return line;
}

/** Returns the corners of some triangles of a body, nine numbers each. */
function cornersOf(body, triangles) {
  const positions = new Float32Array(9 * triangles.length);
  triangles.forEach((triangle, k) => {
    for (let corner = 0; corner < 3; ++corner) {
      const vertex = 3 * body.corners[3 * triangle + corner];
      positions.set(body.vertices.subarray(vertex, vertex + 3), 9 * k + 3 * corner);
    }
  });
  return positions;
}

function fillOf(positions, color, opacity) {
  const geometry = new BufferGeometry();
  geometry.setAttribute('position', new BufferAttribute(positions, 3));
  const fill = new Mesh(geometry, overAll(new MeshBasicMaterial({ color, opacity, side: DoubleSide })));
  fill.frustumCulled = false;
  return fill;
}

/** Lets bodies hide a fill, which lies on its own body. */
function onSurface(fill) {
  Object.assign(fill.material, {
    depthTest: true,
    polygonOffset: true,
    polygonOffsetFactor: -1,
    polygonOffsetUnits: -1,
  });
  return fill;
}

function outlineOf(positions) {
  const sides = [];
  for (let k = 0; k < positions.length; k += 9) {
    for (const [from, to] of [[0, 3], [3, 6], [6, 0]]) {
      sides.push(...positions.subarray(k + from, k + from + 3), ...positions.subarray(k + to, k + to + 3));
    }
  }
  return thickLine(sides, {});
}

/** Returns a disc with a ring around it, for points. */
function discTexture(inner, ring) {
  const canvas = document.createElement('canvas');
  canvas.width = canvas.height = 64;
  const context = canvas.getContext('2d');
  context.beginPath();
  context.arc(32, 32, 24, 0, 2 * Math.PI);
  context.lineWidth = 10;
  context.strokeStyle = ring;
  context.stroke();
  if (inner) {
    context.fillStyle = inner;
    context.fill();
  }
  return new CanvasTexture(canvas);
}

function spriteAt(position, texture, pixels, order) {
  const sprite = new Sprite(overAll(new SpriteMaterial({ map: texture })));
  sprite.position.set(...position);
  sprite.renderOrder = order;
  sprite.keepSize = (stage) => sprite.scale.setScalar(pixels * stage.pixel());
  return sprite;
}

/** Adds what is marked on a body to a group, in the numbers of the body. */
function markBody(group, body, role, place) {
  if (body.patch.length > 0) {
    // Bodies may hide the patch; its points are seen through them.
    group.add(onSurface(fillOf(cornersOf(body, body.patch), FILL[role], 0.55)));
  }
  if (place) {
    const positions = cornersOf(body, [drawnNumber(body, place.triangle)]);
    const fill = fillOf(positions, FILL[role], 0.2);
    const outline = outlineOf(positions);
    fill.renderOrder = ORDER.triangle;
    outline.renderOrder = ORDER.outline;
    // It is brighter where no body hides it.
    group.add(fill, onSurface(fillOf(positions, FILL[role], 0.65)), outline);
  }
  if (body.points.length > 0) {
    const geometry = new BufferGeometry();
    geometry.setAttribute('position', new BufferAttribute(body.points, 3));
    const material = new PointsMaterial({ size: 6, sizeAttenuation: false, map: discTexture('#ffffff', '#000000') });
    const points = new Points(geometry, overAll(material));
    points.frustumCulled = false;
    points.renderOrder = ORDER.point;
    group.add(points);
  }
}

function arrow(direction) {
  const group = new Group();
  const tip = new Mesh(new ConeGeometry(7, 20, 24), overAll(new MeshBasicMaterial({ color: 0x000000 })));
  const rim = new Mesh(new ConeGeometry(10, 24, 24), overAll(new MeshBasicMaterial({ color: 0xffffff })));
  // The bases lie in one plane, so that the rim is even.
  tip.position.y = ARROW;
  rim.position.y = ARROW + 2;
  rim.renderOrder = ORDER.line;
  tip.renderOrder = ORDER.outline;
  const white = thickLine([0, 0, 0, 0, ARROW, 0], { color: 0xffffff, linewidth: 6 });
  const black = thickLine([0, 0, 0, 0, ARROW, 0], { linewidth: 3 });
  white.renderOrder = ORDER.line;
  black.renderOrder = ORDER.outline;
  group.add(white, rim, black, tip);
  group.quaternion.setFromUnitVectors(new Vector3(0, 1, 0), new Vector3(...direction));
  group.keepSize = (stage) => group.scale.setScalar(stage.pixel());
  return group;
}

/** Frees what a group keeps in the memory of the driver. */
function dispose(group) {
  group.traverse((part) => {
    part.geometry?.dispose();
    part.material?.map?.dispose();
    part.material?.dispose();
  });
}

/** The marks of one answer, which are drawn until they are removed. */
export class Marks {
  constructor(stage, scene, frame) {
    const { answer } = scene;
    this.stage = stage;
    this.added = [];
    this.kept = [];
    this.mark(scene.moving, 'moving', answer.moving);
    scene.fixed.forEach((body, k) => this.mark(body, 'fixed', answer.fixed_body === k ? answer.fixed : null));
    if (answer.moving) this.addWay(answer, frame);
    if (answer.fixed) {
      const at = frame.place(answer.fixed.point);
      this.kept.push(spriteAt(at, discTexture('#ffffff', '#000000'), 12, ORDER.point));
      if (answer.normal) {
        const normal = arrow(answer.normal);
        normal.position.set(...at);
        this.kept.push(normal);
      }
    }
    for (const mark of this.kept) this.add(stage.scene, mark);
    this.prepare = (shown) => this.kept.forEach((mark) => mark.keepSize(shown));
    stage.beforeDrawing.push(this.prepare);
  }

  add(parent, mark) {
    parent.add(mark);
    this.added.push(mark);
  }

  mark(body, role, place) {
    const group = new Group();
    markBody(group, body, role, place);
    this.add(this.stage.groups.get(body.id), group);
  }

  addWay(answer, frame) {
    const from = frame.place(answer.moving.point);
    const way = plus(from, answer.direction, answer.travel / frame.unit);
    const white = thickLine([...from, ...way], { color: 0xffffff, linewidth: 4 });
    const black = thickLine([...from, ...way], { linewidth: 1.5 });
    white.renderOrder = black.renderOrder = ORDER.line;
    this.add(this.stage.scene, white);
    this.add(this.stage.scene, black);
    const ring = spriteAt(from, discTexture(null, '#000000'), 22, ORDER.point);
    this.kept.push(ring);
    ring.follow = (shift) => ring.position.set(...plus(from, answer.direction, shift));
  }

  /** Follows the travel, by the shift as it is drawn. */
  follow(shift) {
    this.kept.forEach((mark) => mark.follow?.(shift));
  }

  remove() {
    for (const mark of this.added) {
      mark.removeFromParent();
      dispose(mark);
    }
    this.stage.beforeDrawing = this.stage.beforeDrawing.filter((prepare) => prepare !== this.prepare);
  }
}
