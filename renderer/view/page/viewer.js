// Draws the scene on a canvas, when something has changed.
import * as THREE from "three";
import { makeLamp, SUNLIGHT, Surroundings } from "./shading.js";

const MOST_LAMPS = 8;
const MOST_SHADOWED_LAMPS = 3;
// Above this a lamp's shadows, six views of the scene each, cost more than they give.
const MOST_SHADOW_TRIANGLES = 400000;
const SUN_MAP_SIDE = 2048;

export class Viewer {
  #drawing = false;
  #shadowsDue = true;
  #lastDrawEnd = 0;
  #drawMs = 0;

  /** `onDrawn` is called after each picture. */
  constructor(canvas, Scene, onDrawn) {
    this.canvas = canvas;
    this.onDrawn = onDrawn;
    this.renderer = new THREE.WebGLRenderer({ canvas, antialias: true });
    this.renderer.toneMapping = THREE.CustomToneMapping;
    this.renderer.shadowMap.enabled = true;
    this.renderer.shadowMap.autoUpdate = false;
    this.root = new THREE.Scene();
    this.content = new Scene(Math.min(4, this.renderer.capabilities.getMaxAnisotropy()));
    this.surroundings = new Surroundings(this.renderer, this.root);
    this.lamps = new THREE.Group();
    this.sun = new THREE.DirectionalLight();
    this.sun.castShadow = true;
    this.sun.shadow.mapSize.setScalar(SUN_MAP_SIDE);
    this.root.add(this.content.group, this.lamps, this.sun, this.sun.target);
    this.camera = new THREE.PerspectiveCamera(32, 1, 1, 1000);
    this.target = new THREE.Vector3();
    this.towardsSun = null;
    this.placed = false;
    this.relaxed = false;
    this.frames = 0;
    document.addEventListener("visibilitychange", () => document.hidden && this.#drawDue());
    new ResizeObserver(() => this.#resize()).observe(canvas);
    this.#resize();
  }

  /** Eye, target, up and the vertical field of view in degrees. */
  get view() {
    return { eye: this.camera.position.toArray(), target: this.target.toArray(), up: this.camera.up.toArray(),
      fieldOfView: this.camera.fov };
  }

  set view({ eye, target, up, fieldOfView }) {
    this.camera.position.set(...eye);
    this.target.set(...target);
    this.camera.up.set(...up);
    this.camera.fov = THREE.MathUtils.clamp(fieldOfView, 1, 170);
    this.placed = true;
    this.changed(false);
  }

  /** The direction towards the sun; null or zero: none, and the light comes over the viewer's shoulder. */
  setSun(towards) {
    this.towardsSun = towards && towards.some((part) => part !== 0) ? new THREE.Vector3(...towards).normalize() : null;
    this.changed();
  }

  setBackground(color) {
    this.surroundings.setBackground(color);
    this.changed(false);
  }

  setLights(lights) {
    for (const lamp of [...this.lamps.children]) lamp.dispose?.();
    this.lamps.clear();
    for (const light of lights.slice(0, MOST_LAMPS)) {
      const lamp = makeLamp(light);
      if (!lamp) continue;
      this.lamps.add(lamp);
      if (lamp.target) this.lamps.add(lamp.target);
    }
    this.changed();
  }

  /** Something is to be drawn anew; with `scene` shadows fall differently too. */
  changed(scene = true) {
    this.#shadowsDue ||= scene;
    if (this.#drawing) return;
    this.#drawing = true;
    // While much arrives, half of the time is left to it.
    const pause = this.relaxed ? this.#lastDrawEnd + this.#drawMs - performance.now() : 0;
    // A page that nobody sees gets no animation frames.
    const soon = () => (document.hidden ? setTimeout(this.#drawDue) : requestAnimationFrame(this.#drawDue));
    if (pause > 0) setTimeout(soon, pause);
    else soon();
  }

  #drawDue = () => {
    if (!this.#drawing) return;
    this.#drawing = false;
    this.draw();
    this.onDrawn();
  };

  draw() {
    const began = performance.now();
    const box = this.content.box();
    if (!this.placed) this.#viewAll(box);
    this.camera.lookAt(this.target);
    this.#setPlanes(box);
    this.camera.updateProjectionMatrix();
    this.camera.updateMatrixWorld();
    this.content.turnTo(this.camera.position);
    this.surroundings.place(box, this.camera.position);
    this.#placeSun(box);
    if (this.#shadowsDue) this.#shadeLamps(box);
    this.renderer.shadowMap.needsUpdate = this.#shadowsDue;
    this.#shadowsDue = false;
    this.renderer.render(this.root, this.camera);
    ++this.frames;
    this.#lastDrawEnd = performance.now();
    this.#drawMs = this.#lastDrawEnd - began;
  }

  /** Moves the view so that everything is seen. */
  viewAll() {
    this.#viewAll(this.content.box());
    this.changed(false);
  }

  /** What is at a place of the canvas, in its own pixels; null where nothing is. */
  pick(x, y) {
    const ray = new THREE.Raycaster();
    ray.setFromCamera(new THREE.Vector2(x / this.canvas.clientWidth * 2 - 1, 1 - y / this.canvas.clientHeight * 2), this.camera);
    return this.content.pick(ray);
  }

  /** The picture as it is now, as the address of a PNG file. */
  picture() {
    this.draw();
    return this.canvas.toDataURL("image/png");
  }

  #resize() {
    const { clientWidth, clientHeight } = this.canvas;
    if (clientWidth === 0 || clientHeight === 0) return;
    this.renderer.setPixelRatio(Math.min(devicePixelRatio, 2));
    this.renderer.setSize(clientWidth, clientHeight, false);
    this.camera.aspect = clientWidth / clientHeight;
    this.changed(false);
  }

  #viewAll(box) {
    const direction = new THREE.Vector3(0.62, -0.78, 0.42).normalize();
    this.camera.up.set(0, 0, 1);
    this.camera.fov = 32;
    if (box.isEmpty()) box = new THREE.Box3(new THREE.Vector3(-1, -1, -1), new THREE.Vector3(1, 1, 1));
    box.getCenter(this.target);
    const half = THREE.MathUtils.degToRad(this.camera.fov / 2);
    const angle = Math.min(half, Math.atan(Math.tan(half) * this.camera.aspect));
    const distance = box.getSize(new THREE.Vector3()).length() / 2 / Math.sin(angle);
    this.camera.position.copy(this.target).addScaledVector(direction, distance);
  }

  #setPlanes(box) {
    const radius = box.isEmpty() ? 1 : Math.max(box.getSize(new THREE.Vector3()).length() / 2, 1e-3);
    const distance = box.isEmpty() ? 1 : box.getCenter(new THREE.Vector3()).distanceTo(this.camera.position);
    // In steps, so that surfaces in one plane do not flicker with each edit that changes the box a little.
    const step = (value, round) => 2 ** (round(Math.log2(value) * 2) / 2);
    // The ground reaches beyond the box.
    this.camera.far = step(distance + radius * 14, Math.ceil);
    this.camera.near = step(Math.max(distance - radius * 1.05, this.camera.far / 4000), Math.floor);
  }

  #placeSun(box) {
    const towards = this.towardsSun ?? this.#shoulder();
    this.sun.color.setRGB(1, 1, 1);
    if (!this.towardsSun) this.sun.color.setRGB(1, 0.95, 0.86);
    this.sun.intensity = SUNLIGHT;
    const radius = box.isEmpty() ? 1 : Math.max(box.getSize(new THREE.Vector3()).length() / 2, 1e-3) * 1.02;
    const center = box.isEmpty() ? new THREE.Vector3() : box.getCenter(new THREE.Vector3());
    const position = center.clone().addScaledVector(towards, radius * 2);
    if (!this.towardsSun && position.distanceToSquared(this.sun.position) > 0) this.#shadowsDue = true;
    this.sun.position.copy(position);
    this.sun.target.position.copy(center);
    const { camera } = this.sun.shadow;
    Object.assign(camera, { left: -radius, right: radius, top: radius, bottom: -radius, near: radius * 0.5, far: radius * 3.5 });
    camera.up.set(0, Math.abs(towards.z) > 0.99 ? 1 : 0, Math.abs(towards.z) > 0.99 ? 0 : 1);
    camera.updateProjectionMatrix();
    this.sun.shadow.normalBias = radius * 2 / SUN_MAP_SIDE * 1.5;
    this.sun.shadow.bias = -0.0004;
  }

  // From above, over the viewer's left shoulder.
  #shoulder() {
    const back = new THREE.Vector3().subVectors(this.camera.position, this.target).setZ(0);
    if (back.length() < 1e-6) back.set(0, -1, 0);
    back.normalize();
    const left = new THREE.Vector3().crossVectors(back, new THREE.Vector3(0, 0, 1));
    return new THREE.Vector3(0, 0, 1.05).addScaledVector(back, 0.55).addScaledVector(left, 0.75).normalize();
  }

  #shadeLamps(box) {
    const { triangles } = this.content.counts();
    const radius = box.isEmpty() ? 1 : box.getSize(new THREE.Vector3()).length() / 2;
    this.lamps.children.filter((lamp) => lamp.isLight).forEach((lamp, i) => {
      lamp.castShadow = i < MOST_SHADOWED_LAMPS && triangles <= MOST_SHADOW_TRIANGLES;
      if (!lamp.castShadow) return;
      lamp.shadow.mapSize.setScalar(512);
      lamp.shadow.camera.far = radius * 2 + lamp.position.distanceTo(this.target);
      lamp.shadow.camera.near = radius * 0.005;
      lamp.shadow.camera.updateProjectionMatrix();
      // Depths are far from linear here, so what is taken off lies along the normal.
      lamp.shadow.normalBias = radius * 0.003;
      lamp.shadow.bias = 0;
    });
  }
}
