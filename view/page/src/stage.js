// The picture: surfaces, camera and light. It is drawn again only after something has changed.

import {
  AmbientLight,
  BufferAttribute,
  BufferGeometry,
  DirectionalLight,
  DoubleSide,
  Group,
  LineBasicMaterial,
  LineSegments,
  Mesh,
  MeshLambertMaterial,
  OrthographicCamera,
  Scene,
  Vector3,
  WebGLRenderer,
} from 'three';
import { OrbitControls } from 'three/examples/jsm/controls/OrbitControls.js';
import { sharpEdges } from './edges.js';

// Two hues that differ in lightness; the moving body has stripes too.
const COLOURS = { moving: 0xf2a93b, fixed: 0x3f6ea3 };
const EDGE_COLOURS = { moving: 0x5a3500, fixed: 0x0b1b30 };
const BACKGROUNDS = { light: 0xf7f8fa, dark: 0x15181d };
const MOST_ZOOM = 1e6;

/** Darkens thin stripes of the screen. */
function addStripes(material) {
  material.onBeforeCompile = (shader) => {
    shader.uniforms.stripe = { value: 7 * window.devicePixelRatio };
    shader.fragmentShader = shader.fragmentShader
      .replace('void main() {', 'uniform float stripe;\nvoid main() {')
      .replace(
        '#include <dithering_fragment>',
        '#include <dithering_fragment>\n' +
          'if (mod(gl_FragCoord.x + gl_FragCoord.y, stripe) < 0.22 * stripe) gl_FragColor.rgb *= 0.8;',
      );
  };
}

function surfaceOf(body, role) {
  const geometry = new BufferGeometry();
  geometry.setAttribute('position', new BufferAttribute(body.vertices, 3));
  geometry.setIndex(new BufferAttribute(body.corners, 1));
  const material = new MeshLambertMaterial({
    color: COLOURS[role],
    side: DoubleSide,
    flatShading: true,
    polygonOffset: true,
    polygonOffsetFactor: 1,
    polygonOffsetUnits: 1,
  });
  if (role === 'moving') addStripes(material);
  const surface = new Mesh(geometry, material);
  const lines = new BufferGeometry();
  lines.setAttribute('position', geometry.getAttribute('position'));
  lines.setIndex(new BufferAttribute(sharpEdges(body.vertices, body.corners), 1));
  surface.add(new LineSegments(lines, new LineBasicMaterial({ color: EDGE_COLOURS[role] })));
  return surface;
}

export class Stage {
  /** Throws where WebGL 2 is not available. */
  constructor(canvas) {
    this.canvas = canvas;
    this.renderer = new WebGLRenderer({ canvas, antialias: true });
    this.scene = new Scene();
    this.camera = new OrthographicCamera(-1, 1, 1, -1, 0, 1);
    this.camera.up.set(0, 0, 1);
    const light = new DirectionalLight(0xffffff, 2.2);
    light.position.set(-0.4, 0.6, 1);
    this.camera.add(light);
    this.scene.add(this.camera, new AmbientLight(0xffffff, 1.1));
    this.groups = new Map();
    this.depth = { centre: [0, 0, 0], radius: 1 }; // a ball around all bodies, where they are
    this.beforeDrawing = [];
    this.controls = new OrbitControls(this.camera, canvas);
    this.controls.zoomToCursor = true;
    this.controls.maxZoom = MOST_ZOOM;
    this.controls.addEventListener('change', () => this.draw());
    new ResizeObserver(() => this.resize()).observe(canvas);
    canvas.addEventListener('keydown', (event) => this.turnByKey(event));
  }

  /** Adds a body and returns the group that moves it; its numbers are those of the body. */
  addBody(body, role, frame) {
    const group = new Group();
    group.home = new Vector3(...frame.place(body.centre));
    group.position.copy(group.home);
    group.scale.setScalar(body.scale / frame.unit);
    group.surface = surfaceOf(body, role);
    group.add(group.surface);
    this.groups.set(body.id, group);
    this.scene.add(group);
    return group;
  }

  /** Shows a ball, from a direction where one is given. */
  look(ball, from) {
    this.ball = ball;
    const { camera, controls } = this;
    const arm = from ? new Vector3(...from) : camera.position.clone().sub(controls.target);
    controls.target.set(...ball.centre);
    camera.position.copy(controls.target).add(arm);
    camera.zoom = 1;
    this.resize();
    controls.update();
    this.draw();
  }

  /** Moves the camera along its line of sight, so that it sees just the ball and has the finest depth. */
  fitDepth() {
    const { camera, controls } = this;
    const reach = this.depth.radius + new Vector3(...this.depth.centre).distanceTo(controls.target);
    const arm = camera.position.clone().sub(controls.target).setLength(2 * reach);
    camera.position.copy(controls.target).add(arm);
    camera.far = 4 * reach;
    camera.updateProjectionMatrix();
    camera.updateMatrixWorld();
  }

  resize() {
    const width = Math.max(1, this.canvas.clientWidth);
    const height = Math.max(1, this.canvas.clientHeight);
    this.renderer.setPixelRatio(window.devicePixelRatio);
    this.renderer.setSize(width, height, false);
    const half = (1.08 * (this.ball ? this.ball.radius : 1)) / Math.min(1, width / height);
    this.camera.top = half;
    this.camera.bottom = -half;
    this.camera.right = (half * width) / height;
    this.camera.left = -this.camera.right;
    this.camera.updateProjectionMatrix();
    this.draw();
  }

  /** Returns the length of one pixel of CSS. */
  pixel() {
    return (this.camera.top - this.camera.bottom) / this.camera.zoom / Math.max(1, this.canvas.clientHeight);
  }

  draw() {
    if (this.isAsked) return;
    this.isAsked = true;
    requestAnimationFrame(() => {
      this.isAsked = false;
      this.fitDepth();
      for (const prepare of this.beforeDrawing) prepare(this);
      this.renderer.render(this.scene, this.camera);
      this.canvas.dataset.drawn = Number(this.canvas.dataset.drawn ?? 0) + 1;
    });
  }

  useTheme(theme) {
    this.renderer.setClearColor(BACKGROUNDS[theme]);
    this.draw();
  }

  seeThrough(isOn) {
    for (const { surface } of this.groups.values()) {
      surface.material.transparent = isOn;
      surface.material.opacity = isOn ? 0.4 : 1;
      surface.material.depthWrite = !isOn;
      surface.material.needsUpdate = true;
    }
    this.draw();
  }

  turnByKey(event) {
    const turns = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, 1], ArrowDown: [0, -1] };
    const zooms = { '+': 1.2, '=': 1.2, '-': 1 / 1.2 };
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    if (turns[event.key]) {
      const [right, up] = turns[event.key];
      if (event.shiftKey) this.shift(40 * right, 40 * up);
      else this.turn((right * Math.PI) / 24, (up * Math.PI) / 24);
    } else if (zooms[event.key]) {
      this.camera.zoom = Math.min(MOST_ZOOM, this.camera.zoom * zooms[event.key]);
      this.camera.updateProjectionMatrix();
    } else {
      return;
    }
    event.preventDefault();
    this.turned();
  }

  /** Draws what the camera sees after it was turned, moved or zoomed. */
  turned() {
    this.controls.update();
    this.draw();
  }

  /** Returns the axes of the camera as unit vectors: to the right, up, and towards the viewer. */
  axes() {
    const { camera, controls } = this;
    camera.lookAt(controls.target);
    camera.updateMatrixWorld();
    const axis = (column) => new Vector3().setFromMatrixColumn(camera.matrixWorld, column).toArray();
    return { right: axis(0), up: axis(1), toward: axis(2) };
  }

  /** Turns the camera around its target, about the vertical and towards it, in radians. */
  turn(right, up) {
    const { camera, controls } = this;
    const arm = camera.position.clone().sub(controls.target);
    const length = arm.length();
    const height = Math.min(1.55, Math.max(-1.55, Math.asin(arm.z / length) + up));
    const around = Math.atan2(arm.y, arm.x) + right;
    const flat = Math.cos(height);
    arm.set(flat * Math.cos(around), flat * Math.sin(around), Math.sin(height)).multiplyScalar(length);
    camera.position.copy(controls.target).add(arm);
  }

  /** Moves the camera by pixels of the picture. */
  shift(right, up) {
    const step = new Vector3().setFromMatrixColumn(this.camera.matrix, 0).multiplyScalar(right * this.pixel());
    step.addScaledVector(new Vector3().setFromMatrixColumn(this.camera.matrix, 1), up * this.pixel());
    this.camera.position.add(step);
    this.controls.target.add(step);
  }
}
