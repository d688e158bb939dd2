// The way to look at a sphere where no camera exists, because the browser cannot draw the bodies.

export class Orbit {
  constructor() {
    this.around = -Math.PI / 3;
    this.height = 0.4;
  }

  /** Turns as the camera does: about the vertical and towards it, in radians. */
  turn(right, up) {
    this.around += right;
    this.height = Math.min(1.55, Math.max(-1.55, this.height + up));
  }

  axes() {
    const [c, s, flat, rise] = [Math.cos(this.around), Math.sin(this.around), Math.cos(this.height), Math.sin(this.height)];
    return { right: [-s, c, 0], up: [-rise * c, -rise * s, flat], toward: [flat * c, flat * s, rise] };
  }
}
