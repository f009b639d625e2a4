// The page of the renderer's window: the scene as it comes over the socket, drawn while it changes.
import { Connection, RequestError } from "./connection.js";
import { Orbit } from "./orbit.js";
import { CODES, Panel } from "./panel.js";
import { Scene } from "./scene.js";
import { Viewer } from "./viewer.js";

const CAMERA_MS = 1000 / 30;

class Page {
  #acknowledged = 0;
  #cameraTimer = 0;
  #cameraSent = 0;

  constructor() {
    this.sequence = 0;
    this.drawn = 0;
    this.session = null;
    this.cameraLinked = false;
    this.export = { number: 0, running: false };
    this.errors = [];
    this.viewer = new Viewer(document.getElementById("canvas"), Scene, () => this.#shown());
    this.orbit = new Orbit(this.viewer, {
      moved: () => this.#cameraMoved(),
      clicked: (x, y) => this.panel.select(this.viewer.pick(x, y)),
    });
    this.panel = new Panel({
      ask: (code, data) => this.connection.request(code, data),
      showView: (view, tell) => this.showView(view, tell),
      showSun: (towards) => this.viewer.setSun(towards),
      currentView: () => this.viewer.view,
      viewAll: () => {
        this.viewer.viewAll();
        this.#cameraMoved();
      },
    });
    this.connection = new Connection(new URL("socket", location.href.replace(/^http/, "ws")));
    this.connection.addEventListener("state", () => this.panel.setState(this.connection.state));
    this.connection.addEventListener("hello", ({ detail }) => this.#begin(detail));
    this.connection.addEventListener("binary", ({ detail }) => this.#guard(() => this.viewer.content.addBinary(detail)));
    this.connection.addEventListener("update", ({ detail }) => this.#guard(() => this.#apply(detail)));
    this.connection.addEventListener("error", ({ detail }) => this.#fail(detail.text));
  }

  /** The plug-in is told of it with `tell`, when the cameras are linked. */
  async showView(view, tell) {
    this.viewer.view = view;
    if (tell && this.cameraLinked) await this.connection.request(CODES.camera, this.viewer.view);
  }

  /** How much of everything there is, for tests. */
  counts() {
    return { ...this.viewer.content.counts(), lights: this.viewer.lamps.children.filter((lamp) => lamp.isLight).length,
      frames: this.viewer.frames, faults: this.panel.faultCount };
  }

  get state() {
    return { connection: this.connection.state, session: this.session, sequence: this.sequence, drawn: this.drawn,
      cameraLinked: this.cameraLinked, export: this.export, lastExport: this.lastExport, errors: this.errors };
  }

  #begin({ session, format }) {
    if (format !== 1) this.#fail(`The renderer speaks format ${format}, this page 1: reload the page.`);
    this.session = session;
    this.sequence = this.drawn = this.#acknowledged = 0;
    this.lastExport = undefined;
    this.viewer.placed = false;
    this.viewer.content.clear();
    this.viewer.setLights([]);
    this.panel.restart();
    this.panel.greet();
  }

  #apply(update) {
    this.panel.apply(update);
    if (update.cameraLinked !== undefined) this.cameraLinked = update.cameraLinked;
    if (update.camera) this.#takeCamera(update.camera);
    if (update.background) this.viewer.setBackground(update.background.color);
    if (update.export) this.export = update.export;
    if (update.lastExport) this.lastExport = update.lastExport;
    if (update.lights) this.viewer.setLights(update.lights);
    if (this.viewer.content.apply(update)) this.viewer.changed();
    this.viewer.relaxed = this.export.running;
    if (update.sequence === undefined) return;
    this.sequence = update.sequence;
    this.viewer.changed(false);
  }

  // A user who is moving the view keeps it.
  #takeCamera(camera) {
    if (!this.orbit.active) this.viewer.view = camera;
    this.viewer.setSun(camera.towardsSun);
  }

  #shown() {
    this.drawn = this.sequence;
    if (this.drawn === this.#acknowledged) return;
    this.#acknowledged = this.drawn;
    this.connection.acknowledge(this.drawn);
  }

  // At most so many a second, and the last one in any case.
  #cameraMoved() {
    if (!this.cameraLinked || this.#cameraTimer) return;
    const wait = Math.max(0, this.#cameraSent + CAMERA_MS - performance.now());
    this.#cameraTimer = setTimeout(() => {
      this.#cameraTimer = 0;
      this.#cameraSent = performance.now();
      // A newer one took its place, or the renderer went: neither needs to be told.
      this.connection.request(CODES.camera, this.viewer.view).catch(() => {});
    }, wait);
  }

  #guard(action) {
    try {
      action();
    } catch (error) {
      this.#fail(error.message);
      throw error;
    }
  }

  #fail(text) {
    this.errors.push(text);
    this.panel.notice(text, true);
  }
}

addEventListener("unhandledrejection", (event) => {
  if (event.reason instanceof RequestError) event.preventDefault();
});
window.quellix = new Page();
