// Moves the view with the pointer, fingers or keys.
import * as THREE from "three";

const STEP = Math.PI / 36;
// A press that moves less is a click.
const CLICK_PIXELS = 4;

export class Orbit {
  /** `moved` is called when its user moved the view, `clicked` with the place of a click. */
  constructor(viewer, { moved, clicked }) {
    this.viewer = viewer;
    this.moved = moved;
    this.active = false;
    const { canvas } = viewer;
    let press = null;
    canvas.addEventListener("pointerdown", (event) => {
      press = { x: event.clientX, y: event.clientY, way: 0 };
      canvas.setPointerCapture(event.pointerId);
      this.active = true;
    });
    canvas.addEventListener("pointermove", (event) => {
      if (!press) return;
      const x = event.clientX - press.x, y = event.clientY - press.y;
      press = { x: event.clientX, y: event.clientY, way: press.way + Math.abs(x) + Math.abs(y) };
      if (press.way < CLICK_PIXELS) return;
      if (event.shiftKey || event.buttons & 6) this.pan(-x / canvas.clientHeight, y / canvas.clientHeight);
      else this.turn(-x / canvas.clientHeight * Math.PI, -y / canvas.clientHeight * Math.PI);
    });
    canvas.addEventListener("pointerup", (event) => {
      if (press && press.way < CLICK_PIXELS) clicked(event.offsetX, event.offsetY);
      this.active = false;
      press = null;
    });
    canvas.addEventListener("pointercancel", () => {
      this.active = false;
      press = null;
    });
    canvas.addEventListener("contextmenu", (event) => event.preventDefault());
    canvas.addEventListener("wheel", (event) => {
      event.preventDefault();
      this.zoom(Math.exp(THREE.MathUtils.clamp(event.deltaY, -200, 200) * 0.001));
    }, { passive: false });
    canvas.addEventListener("keydown", (event) => this.#key(event));
  }

  /** Around the target: to the right and up, radians. */
  turn(right, up) {
    const { camera, target } = this.viewer;
    const offset = camera.position.clone().sub(target);
    const axis = camera.up.clone().normalize();
    offset.applyAxisAngle(axis, right);
    const angle = offset.angleTo(axis);
    const side = new THREE.Vector3().crossVectors(axis, offset).normalize();
    offset.applyAxisAngle(side, THREE.MathUtils.clamp(angle + up, 0.02, Math.PI - 0.02) - angle);
    camera.position.copy(target).add(offset);
    this.#changed();
  }

  /** Along the picture, in its heights. */
  pan(right, up) {
    const { camera, target } = this.viewer;
    const high = 2 * camera.position.distanceTo(target) * Math.tan(THREE.MathUtils.degToRad(camera.fov / 2));
    const move = new THREE.Vector3(right * high, up * high, 0).applyQuaternion(camera.quaternion);
    camera.position.add(move);
    target.add(move);
    this.#changed();
  }

  /** So many times as far from the target. */
  zoom(factor) {
    const { camera, target } = this.viewer;
    camera.position.sub(target).multiplyScalar(factor).add(target);
    this.#changed();
  }

  #key(event) {
    const way = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, 1], ArrowDown: [0, -1] }[event.key];
    if (way && event.shiftKey) this.pan(way[0] * 0.05, way[1] * 0.05);
    else if (way) this.turn(way[0] * STEP, -way[1] * STEP);
    else if (event.key === "+") this.zoom(0.9);
    else if (event.key === "-") this.zoom(1 / 0.9);
    else return;
    event.preventDefault();
  }

  #changed() {
    this.viewer.placed = true;
    this.viewer.changed(false);
    this.moved();
  }
}
