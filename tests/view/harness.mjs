// A live session, a browser and its pages, for tests.
import { spawn } from "node:child_process";
import { once } from "node:events";
import { mkdtempSync, rmSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { createInterface } from "node:readline";

const { NODE_MODULES_DIR, RUBY, KVAPP_DIR, SOURCE_DIR } = process.env;
const puppeteer = createRequire(join(NODE_MODULES_DIR, "x.js"))("puppeteer-core");

export const HOUSE = join(SOURCE_DIR, "examples/house.json");
const FACTOR = Number(process.env.TIME_FACTOR ?? 1);
const WAIT_MS = 60000 * FACTOR;

/** The stand-in host with a model and the live link, in a process of its own. */
export class LiveHost {
  static async start({ model = HOUSE, env = {} } = {}) {
    const host = new LiveHost();
    host.folder = mkdtempSync(join(tmpdir(), "view-"));
    host.process = spawn(RUBY, ["-W", "-E", "UTF-8", join(SOURCE_DIR, "tests/view/live_host.rb"), model], {
      stdio: ["pipe", "pipe", "pipe"],
      env: { ...process.env, KVAPP_DIR, KVAPP_OUT: host.folder, KVAPP_PICTURE: "0", ...env },
    });
    host.errors = "";
    host.process.stderr.on("data", (text) => { host.errors += text; });
    host.lastId = 0;
    host.asked = new Map();
    host.ended = once(host.process, "exit");
    const lines = createInterface(host.process.stdout);
    const first = new Promise((resolve, reject) => {
      lines.on("line", (line) => {
        const message = JSON.parse(line);
        if (message.address) return resolve(message.address);
        const { resolve: done, reject: failed } = host.asked.get(message.id);
        host.asked.delete(message.id);
        if (message.error) failed(new Error(message.error));
        else done(message.value);
      });
      host.ended.then(([status]) => {
        const gone = new Error(`the host has ended with ${status}: ${host.errors}`);
        reject(gone);
        for (const { reject: failed } of host.asked.values()) failed(gone);
      });
    });
    host.address = await first;
    return host;
  }

  /** Evaluates it in the session; its value as JSON has it. */
  ruby(code) {
    return new Promise((resolve, reject) => {
      const id = ++this.lastId;
      this.asked.set(id, { resolve, reject });
      this.process.stdin.write(`${JSON.stringify({ id, ruby: code })}\n`);
    });
  }

  /** What the renderer asked since the last call. */
  heard() { return this.ruby("Heard::LIST.slice!(0..)"); }

  /** Makes an edit and lets it be sent. */
  async edit(code) {
    await this.ruby(code);
    await this.inStep();
  }

  async inStep() {
    await waitFor(() => this.ruby("live.status == :in_step && !live.pending?"), "the link is in step");
  }

  async stop() {
    if (this.process.exitCode === null && this.process.signalCode === null) this.process.stdin.end();
    await this.ended;
    rmSync(this.folder, { recursive: true, force: true });
  }
}

export function startBrowser() {
  return puppeteer.launch({
    executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
    protocolTimeout: WAIT_MS * 2,
    args: ["--no-sandbox", "--use-angle=swiftshader", "--enable-unsafe-swiftshader", "--disable-dev-shm-usage",
      "--disable-background-networking", "--disable-component-update", "--disable-sync", "--no-first-run"],
  });
}

/** Opens the page; whatever it reports as an error is in `page.troubles`. */
export async function openPage(browser, address, { width = 900, height = 600 } = {}) {
  const page = await browser.newPage();
  await page.setViewport({ width, height });
  page.troubles = [];
  page.on("pageerror", (error) => page.troubles.push(error.message));
  await page.evaluateOnNewDocument(() => {
    // A picture's pixels, in a size of one's choice.
    window.pixelsOf = (image, { width, height } = image) => {
      const context = new OffscreenCanvas(width, height).getContext("2d");
      context.imageSmoothingQuality = "high";
      context.drawImage(image, 0, 0, width, height);
      const { data } = context.getImageData(0, 0, width, height);
      let text = "";
      for (let i = 0; i < data.length; i += 8192) text += String.fromCharCode(...data.subarray(i, i + 8192));
      return { width, height, data: btoa(text) };
    };
  });
  await page.goto(address);
  await page.waitForFunction(() => window.quellix);
  return page;
}

export const state = (page) => page.evaluate(() => window.quellix.state);
export const counts = (page) => page.evaluate(() => window.quellix.counts());

export async function waitFor(condition, what) {
  const ending = Date.now() + WAIT_MS;
  while (!(await condition())) {
    if (Date.now() > ending) throw new Error(`never: ${what}`);
    await new Promise((resolve) => { setTimeout(resolve, 50); });
  }
}

/** Until the page has drawn everything, and what `host` sends is sent. */
export async function settled(page, host) {
  if (host) await host.inStep();
  let before = -1;
  await waitFor(async () => {
    const now = await state(page);
    const calm = now.connection === "connected" && now.lastExport && !now.export.running && now.sequence > 0 &&
      now.drawn === now.sequence && now.sequence === before;
    before = now.sequence;
    if (!calm) await new Promise((resolve) => { setTimeout(resolve, 200); });
    return calm;
  }, "the page has drawn everything");
}

/** The canvas as it is drawn now: width, height and RGBA pixels, the top row first. */
export async function pixels(page) {
  const { width, height, data } = await page.evaluate(async () => {
    const image = await createImageBitmap(await (await fetch(window.quellix.viewer.picture())).blob());
    return window.pixelsOf(image);
  });
  return { width, height, data: Buffer.from(data, "base64") };
}

/** Any PNG file, in the size of `width` by `height`. */
export async function readPng(page, bytes, width, height) {
  const result = await page.evaluate(async (base64, size) => {
    const image = await createImageBitmap(await (await fetch(`data:image/png;base64,${base64}`)).blob());
    return window.pixelsOf(image, size);
  }, bytes.toString("base64"), { width, height });
  return { ...result, data: Buffer.from(result.data, "base64") };
}

/**
 * What part of the pixels differs by more than `least` of 255 in a channel, how many of these are in none of the
 * rectangles `regions`, and the mean difference.
 */
export function difference(a, b, { least = 12, regions = [] } = {}) {
  let count = 0, beyond = 0, sum = 0;
  for (let i = 0; i < a.width * a.height; ++i) {
    let most = 0;
    for (let channel = 0; channel < 3; ++channel) {
      const apart = Math.abs(a.data[i * 4 + channel] - b.data[i * 4 + channel]);
      sum += apart;
      most = Math.max(most, apart);
    }
    if (most <= least) continue;
    const x = i % a.width, y = Math.floor(i / a.width);
    ++count;
    if (!regions.some(({ left, right, top, bottom }) => x >= left && x <= right && y >= top && y <= bottom)) ++beyond;
  }
  return { part: count / (a.width * a.height), mean: sum / (a.width * a.height * 3), beyond };
}
