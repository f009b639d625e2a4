// The renderer's page in a real browser, with a live session behind it.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { readFileSync } from "node:fs";
import { join } from "node:path";
import { after, afterEach, before, beforeEach, describe, it } from "node:test";
import { counts, difference, LiveHost, openPage, pixels, readPng, settled, startBrowser, state, waitFor } from "./harness.mjs";

let browser, host, page;

before(async () => { browser = await startBrowser(); });
after(async () => { await browser?.close(); });

async function begin() {
  host = await LiveHost.start();
  page = await openPage(browser, host.address);
  await settled(page, host);
}

// The session ends whatever has become of the browser.
async function end() {
  const ended = host;
  const errors = [];
  try {
    if (page) errors.push(...page.troubles, ...(await state(page)).errors);
    for (const open of (await browser.pages()).slice(1)) await open.close();
  } finally {
    host = page = null;
    await ended?.stop();
  }
  assert.deepEqual(errors, []);
}

const text = (id) => page.$eval(`#${id}`, (element) => element.textContent);

// The rectangle of the canvas in which a box of the model is seen, with a margin for what is smoothed.
function project(bounds) {
  return page.evaluate((box) => {
    const { camera, canvas } = window.quellix.viewer;
    const seen = { left: Infinity, right: -Infinity, top: Infinity, bottom: -Infinity };
    for (let corner = 0; corner < 8; ++corner) {
      const point = camera.position.clone().set(...[0, 1, 2].map((axis) => box[corner >> axis & 1][axis])).project(camera);
      const x = (point.x + 1) / 2 * canvas.width, y = (1 - point.y) / 2 * canvas.height;
      seen.left = Math.min(seen.left, x - 3);
      seen.right = Math.max(seen.right, x + 3);
      seen.top = Math.min(seen.top, y - 3);
      seen.bottom = Math.max(seen.bottom, y + 3);
    }
    return seen;
  }, bounds);
}

describe("the picture", () => {
  beforeEach(() => begin());
  afterEach(end);

  it("agrees with the renderer's own of the same camera", async () => {
    const shown = await pixels(page);
    host.process.stdin.end();
    await host.ended;
    const file = join(host.folder, "picture.png");
    execFileSync(join(process.env.KVAPP_DIR, "KvApp/kvpicture"),
      [join(host.folder, "scene.glb"), file, "--size", `${shown.width}x${shown.height}`]);
    const wanted = await readPng(page, readFileSync(file), shown.width, shown.height);
    // What differs is what faces the camera, which a file cannot turn, the darkening of corners and glass.
    const { mean } = difference(shown, wanted);
    const { part } = difference(shown, wanted, { least: 40 });
    assert.ok(mean < 5, `mean difference ${mean} of 255`);
    assert.ok(part < 0.02, `${part} of the pixels differ much`);
  });

  it("changes where an edit of the tour is, and nowhere else", async () => {
    // Shadows and the ground, which follows the size of the model, reach beyond what was edited.
    await page.evaluate(() => {
      const { renderer, root, surroundings } = window.quellix.viewer;
      renderer.shadowMap.enabled = false;
      surroundings.place = () => { surroundings.ground.visible = false; };
      root.traverse(({ material }) => [material].flat().forEach((one) => { if (one) one.needsUpdate = true; }));
    });
    // Rectangles of the canvas in which the entities are seen.
    const regionsOf = async (entities) => {
      const boxes = await host.ruby(`[*${entities}].map { |entity| entity.bounds.then { |box| [box.min.to_a, box.max.to_a] } }`);
      return Promise.all(boxes.map(project));
    };
    const tower = "@tower", piece = "piece", twin = "@twin";
    const painted = "[*model.entities.instances, *model.entities.groups].select { |one| one.material == piece.material }";
    let former = await pixels(page);
    // Makes an edit of `where`, before it and after it; without a place the whole picture may change.
    const make = async (edit, { before: from, after: to, least = 0.0005 }) => {
      const regions = from ? await regionsOf(from) : [];
      await host.edit(edit);
      if (to) regions.push(...await regionsOf(to));
      await settled(page, host);
      const now = await pixels(page);
      const { part, beyond } = difference(former, now, { regions });
      former = now;
      assert.ok(part > least, `${edit} changed ${part} of the pixels`);
      if (regions.length > 0) assert.equal(beyond, 0, `${edit} changed what it does not concern`);
      return now;
    };
    await make("move", { before: piece, after: piece });
    const moved = await make("paint", { after: painted });
    await make("hide", { before: piece });
    assert.equal(difference(moved, await make("show", { after: piece })).part, 0);
    const low = await make("build", { after: tower });
    await make("reshape", { after: tower });
    assert.equal(difference(low, await make("Sketchup.undo", { before: tower })).part, 0);
    await make("place", { after: twin });
    await make("evening", { least: 0.05 });
    await make("shine", {});
    await make("dusk", { least: 0.3 });
    await make("orbit", { least: 0.2 });
  });

  it("turns what faces the camera, and follows the host's view", async () => {
    const facing = () => page.evaluate(() => {
      const { viewer } = window.quellix;
      return [...viewer.content.meshes.values()].filter((mesh) => mesh.facesCamera).flatMap((mesh) => mesh.plain.items.map((item) => {
        const m = mesh.plain.matrices.array.subarray(item.at * 16, item.at * 16 + 16);
        const away = [viewer.camera.position.x - m[12], viewer.camera.position.y - m[13]];
        return -(m[4] * away[0] + m[5] * away[1]) / Math.hypot(m[4], m[5]) / Math.hypot(...away);
      }));
    });
    for (const degrees of [0, 70, 200]) {
      await host.edit(`orbit(${degrees})`);
      await settled(page, host);
      const cosines = await facing();
      assert.ok(cosines.length > 0);
      for (const cosine of cosines) assert.ok(cosine > 0.9999, `it is turned away: ${cosine}`);
      const view = await page.evaluate(() => window.quellix.viewer.view);
      const eye = await host.ruby("model.active_view.camera.eye.to_a");
      view.eye.forEach((part, i) => assert.ok(Math.abs(part - eye[i]) < 1e-2 * Math.hypot(...eye)));
    }
  });
});

// One session for all, since none of them needs to find it as it was.
describe("the controls", () => {
  before(() => begin());
  after(end);

  const press = async (id) => {
    await page.$eval("#notice", (notice) => { notice.textContent = "…"; });
    await page.$eval(`#${id}`, (button) => button.click());
    await waitFor(async () => (await text("notice")) !== "…", `${id} was answered`);
    assert.equal(await page.$eval("#notice", (notice) => notice.className), "", await text("notice"));
  };
  const heard = async (id) => {
    await host.heard();
    await press(id);
    return host.heard();
  };

  it("say what was clicked, as the wire names it", async () => {
    await host.edit("build");
    await settled(page, host);
    const place = await project(await host.ruby("@tower.bounds.then { |box| [box.min.to_a, box.max.to_a] }"));
    const canvas = await page.$eval("#canvas", (element) => element.getBoundingClientRect().toJSON());
    await page.mouse.click(canvas.x + (place.left + place.right) / 2, canvas.y + (place.top + place.bottom) / 2);
    const selected = Object.fromEntries(await page.$$eval("#selected dt", (terms) =>
      terms.map((term) => [term.textContent, term.nextElementSibling.textContent])));
    assert.equal(selected.Owner, await host.ruby("@tower.persistent_id.to_s"));
    assert.equal(selected.Material, "Tower");
    assert.equal(selected.Side, "front");
  });

  it("ask what they say, with their values", async () => {
    await host.ruby('model.pages.add("Entrance"); model.pages.length');
    await waitFor(async () => (await host.heard()).length === 0, "the page has asked all that it asks by itself");
    assert.deepEqual(await heard("reload"), [["on_reload"]]);
    assert.deepEqual(await heard("host-camera"), [["on_request_camera_info"]]);
    assert.deepEqual(await heard("shadows"), [["on_request_shadow_info"]]);
    assert.deepEqual(await heard("ask-step"), [["model_out_of_sync?"]]);
    assert.equal(await text("in-step"), "in step");
    assert.deepEqual(await heard("suppress"), [["suppress_autosync_once"]]);
    assert.equal(await text("version"), String(await host.ruby("Quellix_SUInterface::SU_VERSION")));

    await page.$eval("#date", (input) => { input.value = "2027-03-04T05:06:07"; });
    assert.deepEqual(await heard("set-date"), [["on_datetime_updated", [2027, 3, 4, 5, 6, 7]], ["on_request_shadow_info"]]);
    assert.equal(await host.ruby('model.shadow_info["ShadowTime"].getutc.to_s'), "2027-03-04 05:06:07 UTC");

    const pbr = await host.ruby("live.use_pbr?");
    assert.deepEqual(await heard("pbr"), [["set_use_pbr", !pbr], ["get_use_pbr"]]);

    assert.deepEqual(await heard("scenes"), [["on_get_scenes"]]);
    assert.equal(await text("scene-list"), "Entrance");
    const asked = await heard("scene-list button");
    assert.deepEqual(asked.map(([name]) => name), ["on_camera_changed_by_gui", "on_datetime_updated"]);
  });

  it("keep a view in the model", async () => {
    const view = await page.evaluate(() => window.quellix.viewer.view);
    await page.$eval("#name", (input) => { input.value = "näher"; });
    const [[name, ...saved]] = await heard("save");
    assert.equal(name, "save_parameters");
    assert.equal(saved[0], "näher");
    await page.evaluate(() => window.quellix.orbit.turn(1, 0));
    await heard("load");
    const again = await page.evaluate(() => window.quellix.viewer.view);
    again.eye.forEach((part, i) => assert.ok(Math.abs(part - view.eye[i]) < 1e-6 * Math.hypot(...view.eye)));
    assert.deepEqual(await heard("remove"), [["remove_attribute", "näher"]]);
    await page.$eval("#load", (button) => button.click());
    await waitFor(async () => (await text("notice")).includes("keeps no view"), "it is told that there is none");
  });

  it("move the host's view while its user orbits, at most 30 times a second", async () => {
    await waitFor(async () => (await host.heard()).length === 0, "nothing is asked");
    await page.focus("#canvas");
    const began = Date.now();
    for (let i = 0; i < 30; ++i) await page.keyboard.press("ArrowRight");
    const seconds = (Date.now() - began) / 1000;
    const view = await page.evaluate(() => window.quellix.viewer.view);
    const near = (eye) => Math.hypot(...eye.map((part, i) => part - view.eye[i])) < 1e-3 * Math.hypot(...view.eye);
    await waitFor(async () => near(await host.ruby("model.active_view.camera.eye.to_a")), "the host's view is the page's");
    const cameras = await host.heard();
    assert.ok(cameras.every(([name, numbers]) => name === "on_camera_changed_by_gui" && numbers.length === 10));
    assert.ok(cameras.length <= 30 * seconds + 2, `${cameras.length} in ${seconds} s`);
    await settled(page, host);
    assert.ok(near((await page.evaluate(() => window.quellix.viewer.view)).eye), "the view did not jump back");
  });

  it("are all reached by keyboard, and in view on a small screen in light and dark", async () => {
    for (const scheme of ["light", "dark"]) {
      await page.emulateMediaFeatures([{ name: "prefers-color-scheme", value: scheme }]);
      await page.setViewport({ width: 900, height: 600 });
      const found = await page.evaluate(() => {
        const luminance = (color) => color.match(/[\d.]+/g).slice(0, 3).map((part) => part / 255)
          .map((part) => (part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4))
          .reduce((sum, part, i) => sum + part * [0.2126, 0.7152, 0.0722][i], 0);
        const back = luminance(getComputedStyle(document.body).backgroundColor);
        const contrast = ["body", "#status", "dt"].map((name) => luminance(getComputedStyle(document.querySelector(name)).color))
          .map((front) => (Math.max(front, back) + 0.05) / (Math.min(front, back) + 0.05));
        const controls = [...document.querySelectorAll("button, input, canvas")];
        return { contrast: Math.min(...contrast), wide: document.documentElement.scrollWidth, high: document.documentElement.scrollHeight,
          beyond: controls.filter((one) => one.getBoundingClientRect().right > innerWidth).map((one) => one.id),
          unreachable: controls.filter((one) => one.tabIndex < 0).map((one) => one.id) };
      });
      assert.ok(found.contrast >= 4.5, `${scheme}: a contrast of ${found.contrast}`);
      assert.deepEqual([found.wide, found.high, found.beyond, found.unreachable], [900, 600, [], []]);
    }
  });

  it("end the session, which the page then says", async () => {
    await page.click("#quit");
    const [status] = await host.ended;
    assert.equal(status, 0, host.errors);
    await waitFor(async () => (await text("status")).includes("ended"), "the page says that the session has ended");
    assert.ok(await page.$eval("#reload", (button) => button.disabled));
  });
});

describe("the connection", () => {
  beforeEach(() => begin());
  afterEach(end);

  it("shows everything after 20 reconnects in the middle of exports", async () => {
    // Small, so that drawing takes little of the time.
    await page.setViewport({ width: 640, height: 420 });
    const wanted = await counts(page);
    await host.ruby("wait(0); @exports = 0; live.on_status { |status| @exports += 1 if status == :exporting }; nil");
    for (let i = 0; i < 20; ++i) {
      const export_ = host.ruby("live.sync_all; nil");
      await new Promise((resolve) => { setTimeout(resolve, i * 3); });
      await page.evaluate(() => window.quellix.connection.reconnect());
      await export_;
      await waitFor(async () => (await state(page)).connection === "connected", "the page is back");
    }
    await settled(page, host);
    const { frames, ...found } = await counts(page);
    assert.deepEqual(found, (({ frames: _, ...rest }) => rest)(wanted));
    assert.ok(await host.ruby("@exports") >= 20);
  });

  it("feeds two pages alike", async () => {
    const other = await openPage(browser, host.address);
    await settled(other, host);
    await host.edit("build; paint; place");
    await settled(other, host);
    await settled(page, host);
    const [a, b] = [await counts(page), await counts(other)].map(({ frames, ...rest }) => rest);
    assert.deepEqual(a, b);
    assert.deepEqual(other.troubles, []);
  });

  it("says that the renderer was killed, and shows the next one", async () => {
    const first = (await state(page)).session;
    const { frames: before, ...wanted } = await counts(page);
    const children = readFileSync(`/proc/${host.process.pid}/task/${host.process.pid}/children`, "utf8").trim().split(" ").map(Number);
    assert.equal(children.length, 1);
    process.kill(children[0], "SIGKILL");
    await waitFor(async () => (await text("status")).includes("renderer is gone"), "the page says that the renderer is gone");
    await waitFor(() => host.ruby("live.status == :renderer_gone"), "the link has noticed");
    await host.ruby("live.restart");
    await waitFor(async () => (await state(page)).session !== first, "the page has found the next renderer");
    await settled(page, host);
    const { frames: _, ...found } = await counts(page);
    assert.deepEqual(found, wanted);
  });
});
