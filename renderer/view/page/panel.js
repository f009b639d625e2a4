// The page beside the picture: what was sent, what was found, what is selected, and the controls. Each
// control asks the plug-in through `ask(code, data)`.

const find = (id) => document.getElementById(id);
const NUMBER = new Intl.NumberFormat("en");
const MOST_FINDINGS = 500;

export const CODES = Object.freeze({ reload: 102, camera: 103, quit: 104, date: 105, scenes: 106, hostCamera: 107,
  shadows: 108, outOfSync: 109, save: 110, load: 111, remove: 112, setPbr: 113, pbr: 114, version: 115, suppress: 116 });

const STATES = { connecting: "connecting", connected: "connected", ended: "the session has ended; looking for the next",
  gone: "the renderer is gone; looking for the next" };

/** Term and value for each entry. */
function list(id, entries) {
  find(id).replaceChildren(...entries.flatMap(([term, value]) => {
    const dt = document.createElement("dt"), dd = document.createElement("dd");
    dt.textContent = term;
    dd.textContent = typeof value === "number" ? NUMBER.format(value) : String(value);
    return [dt, dd];
  }));
}

export class Panel {
  /** `act` has what the controls need of the page: ask, showView, showSun, currentView, viewAll. */
  constructor(act) {
    this.act = act;
    this.faults = [];
    this.notes = [];
    this.noteCounts = {};
    this.faultCount = 0;
    this.#wire();
    this.setState("connecting");
  }

  setState(state) {
    find("status").textContent = STATES[state];
    find("status").className = state === "connected" ? "" : "lost";
    for (const control of document.querySelectorAll("[data-needs]")) control.disabled = state !== "connected";
    if (state !== "connected") this.#progress("", 0);
  }

  /** Told with each new socket, which tells everything again. */
  restart() {
    this.faults = [];
    this.notes = [];
    this.noteCounts = {};
    this.faultCount = 0;
    this.message = "";
    this.progress = 0;
    find("last-export").replaceChildren();
    this.#showFindings();
    this.select(null);
  }

  apply(update) {
    if (update.model !== undefined) {
      find("model").textContent = update.model || "Untitled";
      document.title = `${update.model || "Untitled"} – KvApp`;
    }
    if (update.cameraLinked !== undefined) find("linked").textContent = update.cameraLinked ? "linked" : "not linked";
    if (update.message !== undefined || update.progress !== undefined) {
      this.#progress(this.message = update.message ?? this.message, this.progress = update.progress ?? this.progress);
    }
    if (update.lastExport) this.#showExport(update.lastExport);
    if (update.findings) this.#takeFindings(update.findings);
  }

  /** What a click met, or null. */
  select(hit) {
    if (!hit) return list("selected", [["Nothing", ""]]);
    list("selected", [["Owner", hit.owner], ["Mesh", `${hit.meshId} (number ${hit.mesh})`], ["Triangles", hit.triangles],
      ["Material", hit.materialName ?? "unknown"], ["Key", hit.material ?? "none"], ["Side", hit.side]]);
  }

  notice(text, failed = false) {
    find("notice").textContent = text;
    find("notice").className = failed ? "failed" : "";
  }

  /** What is asked once at the beginning of a session. */
  async greet() {
    await this.#try("", async () => {
      find("version").textContent = (await this.act.ask(CODES.version)).version;
      find("pbr").checked = (await this.act.ask(CODES.pbr)).value;
      this.#showDate(await this.act.ask(CODES.shadows));
      await this.#readScenes();
    });
  }

  #progress(message, progress) {
    const busy = message !== "" || progress > 0;
    find("progress").hidden = !busy;
    find("progress").value = progress;
    find("message").textContent = message;
  }

  #showExport(last) {
    list("last-export", [["Number", last.n], ["Milliseconds", Math.round(last.ms)], ["Bytes", last.bytes],
      ["Materials", `${last.materialsSent} sent, ${last.materialsReferenced} kept`],
      ["Meshes", `${last.meshesSent} sent`], ["Placements", `${last.placementsSent} sent`],
      ["Owners", `${last.ownersReferenced} kept`], ["Lights", last.lightsSent],
      ["Vertices", last.verticesSent], ["Triangles", last.trianglesSent]]);
  }

  #takeFindings({ faultCount, noteCounts, faultsFrom, faults, notesFrom, notes }) {
    this.faultCount = faultCount ?? this.faultCount;
    this.noteCounts = noteCounts ?? this.noteCounts;
    if (faults) this.faults.splice(faultsFrom, Infinity, ...faults);
    if (notes) this.notes.splice(notesFrom, Infinity, ...notes);
    this.#showFindings();
  }

  #showFindings() {
    find("fault-count").textContent = this.faultCount;
    find("note-count").textContent = Object.values(this.noteCounts).reduce((sum, count) => sum + count, 0);
    const line = (kind) => ({ command, name, text }) => {
      const item = document.createElement("li");
      item.className = kind;
      item.textContent = `${name} (${command}): ${text}`;
      return item;
    };
    find("findings").replaceChildren(...[...this.faults.map(line("fault")), ...this.notes.map(line("note"))]
      .slice(0, MOST_FINDINGS));
  }

  #showDate({ date, towardsSun, shadows }) {
    const [year, ...rest] = date.map((part) => String(part).padStart(2, "0"));
    const [month, day, hour, minute, second] = rest;
    find("date").value = `${year.padStart(4, "0")}-${month}-${day}T${hour}:${minute}:${second}`;
    find("sun").textContent = shadows ? "The sun casts shadows." : "The host shows no shadows.";
    this.act.showSun(shadows ? towardsSun : null);
  }

  async #readScenes() {
    const { scenes } = await this.act.ask(CODES.scenes);
    find("scene-list").replaceChildren(...scenes.map((scene) => {
      const button = document.createElement("button");
      button.textContent = scene.name;
      button.dataset.needs = "";
      button.onclick = () => this.#try(`The view is that of ${scene.name}.`, async () => {
        await this.act.showView(scene.camera, true);
        await this.act.ask(CODES.date, { date: scene.date });
        this.#showDate({ ...scene });
      });
      return button;
    }));
    return scenes.length;
  }

  // One control: what went wrong is told, and so is that it went well.
  async #try(done, action) {
    try {
      const text = await action();
      this.notice(text ?? done);
    } catch (error) {
      this.notice(error.message, true);
    }
  }

  #wire() {
    const on = (id, done, action, event = "click") =>
      find(id).addEventListener(event, () => this.#try(done, action));
    const { act } = this;
    const name = () => find("name").value;
    on("reload", "The plug-in was asked to send its edits.", () => act.ask(CODES.reload).then(() => undefined));
    on("quit", "The session ends.", () => act.ask(CODES.quit).then(() => undefined));
    on("fit", "Everything is in view.", () => act.viewAll());
    on("host-camera", "The view is the host’s.", async () => {
      await act.showView((await act.ask(CODES.hostCamera)).camera, false);
    });
    on("scenes", "", async () => ((count) => (count === 0 ? "The model has no scenes." : `${count} scenes were read.`))(
      await this.#readScenes()));
    on("set-date", "The date is set.", async () => {
      const parts = find("date").value.match(/\d+/g)?.map(Number) ?? [];
      if (parts.length < 5) throw new Error("A date and a time are needed.");
      await act.ask(CODES.date, { date: [...parts, 0].slice(0, 6) });
      this.#showDate(await act.ask(CODES.shadows));
    });
    on("shadows", "The sun is the host’s.", async () => this.#showDate(await act.ask(CODES.shadows)));
    on("pbr", "The kind of materials was changed.", async () => {
      await act.ask(CODES.setPbr, { value: find("pbr").checked });
      find("pbr").checked = (await act.ask(CODES.pbr)).value;
    }, "change");
    on("ask-step", "", async () => {
      const { value } = await act.ask(CODES.outOfSync);
      find("in-step").textContent = value ? "ahead of the renderer" : "in step";
    });
    on("suppress", "The next sync is left out.", () => act.ask(CODES.suppress).then(() => undefined));
    on("save", "The view is kept in the model.", async () => {
      const bytes = new TextEncoder().encode(JSON.stringify(act.currentView()));
      const data = Array.from(bytes, (byte) => byte.toString(16).padStart(2, "0")).join("");
      await act.ask(CODES.save, { name: name(), data });
    });
    on("load", "The view is the one that was kept.", async () => {
      const { data } = await act.ask(CODES.load, { name: name() });
      if (data === null) throw new Error(`The model keeps no view named ${name()}.`);
      const bytes = Uint8Array.from(data.match(/../g) ?? [], (digits) => parseInt(digits, 16));
      await act.showView(readView(new TextDecoder().decode(bytes)), true);
    });
    on("remove", "The view is kept no more.", () => act.ask(CODES.remove, { name: name() }).then(() => undefined));
  }
}

// What is kept under a name may have been written by anybody.
function readView(text) {
  const vector = (value) => Array.isArray(value) && value.length === 3 && value.every(Number.isFinite);
  let view = null;
  try {
    view = JSON.parse(text);
  } catch { /* told below */ }
  if (!vector(view?.eye) || !vector(view.target) || !vector(view.up) || !(view.fieldOfView > 0 && view.fieldOfView < 180)) {
    throw new Error("What the model keeps under this name is no view.");
  }
  return view;
}
