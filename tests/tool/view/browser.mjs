// Headless Chromium, told what to do over its debugging pipe.
import { spawn } from "node:child_process";
import { mkdtempSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { setTimeout as sleep } from "node:timers/promises";

const FLAGS = [
  "--headless=new",
  "--no-sandbox", // there is none for root
  "--remote-debugging-pipe",
  "--use-angle=swiftshader",
  "--enable-unsafe-swiftshader",
  "--autoplay-policy=no-user-gesture-required",
  "--mute-audio",
  "--hide-scrollbars",
  "--no-first-run",
  "--disable-background-networking",
  "--disable-component-update",
  "--disable-dev-shm-usage",
  "--disable-sync",
  "--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1",
];

const SIZE = { width: 960, height: 600 };

export class Browser {
  #process;
  #profile = mkdtempSync(join(tmpdir(), "biseam-browser-"));
  #answers = new Map();
  #listeners = new Set();
  #number = 0;

  constructor(program = process.env.BISEAM_CHROMIUM ?? "chromium") {
    const stdio = ["ignore", "ignore", "ignore", "pipe", "pipe"];
    this.#process = spawn(program, [...FLAGS, `--user-data-dir=${this.#profile}`], { stdio });
    let rest = "";
    this.#process.stdio[4].setEncoding("utf8").on("data", (text) => {
      const messages = (rest + text).split("\0");
      rest = messages.pop();
      messages.forEach((message) => this.#receive(JSON.parse(message)));
    });
    this.#process.on("exit", () => this.#answers.forEach(({ reject }) => reject(new Error("the browser has ended"))));
  }

  #receive(message) {
    if (message.id === undefined) return this.#listeners.forEach((listener) => listener(message));
    const { resolve, reject } = this.#answers.get(message.id);
    this.#answers.delete(message.id);
    message.error ? reject(new Error(message.error.message)) : resolve(message.result);
  }

  send(method, params = {}, sessionId = undefined) {
    const id = ++this.#number;
    this.#process.stdio[3].write(`${JSON.stringify({ id, method, params, sessionId })}\0`);
    return new Promise((resolve, reject) => this.#answers.set(id, { resolve, reject }));
  }

  listen(listener) {
    this.#listeners.add(listener);
  }

  // ready: an expression that is true once the page can be used.
  async open(address, ready = "document.documentElement.dataset.ready") {
    const { targetId } = await this.send("Target.createTarget", { url: "about:blank" });
    const { sessionId } = await this.send("Target.attachToTarget", { targetId, flatten: true });
    const page = new Page(this, sessionId, targetId);
    await page.load(address, ready);
    return page;
  }

  async close() {
    const ended = new Promise((resolve) => this.#process.on("exit", resolve));
    this.send("Browser.close").catch(() => {});
    await ended;
    rmSync(this.#profile, { recursive: true, force: true, maxRetries: 5 });
  }
}

export class Page {
  complaints = []; // errors and warnings on the console, and exceptions
  requests = []; // addresses
  statuses = []; // of the answers
  #browser;
  #session;
  #target;

  constructor(browser, session, target) {
    this.#browser = browser;
    this.#session = session;
    this.#target = target;
    browser.listen(({ sessionId, method, params }) => sessionId === session && this.#note(method, params));
  }

  #note(method, params) {
    if (method === "Network.requestWillBeSent") this.requests.push(params.request.url);
    if (method === "Network.responseReceived") this.statuses.push(params.response.status);
    if (method === "Runtime.exceptionThrown") this.complaints.push(JSON.stringify(params.exceptionDetails));
    if (method === "Log.entryAdded" && params.entry.level !== "verbose") this.complaints.push(JSON.stringify(params.entry));
    if (method === "Runtime.consoleAPICalled" && ["error", "warning", "assert"].includes(params.type)) {
      this.complaints.push(JSON.stringify(params.args));
    }
  }

  send(method, params) {
    return this.#browser.send(method, params, this.#session);
  }

  async load(address, ready) {
    for (const domain of ["Page", "Runtime", "Log", "Network"]) await this.send(`${domain}.enable`);
    await this.send("Emulation.setDeviceMetricsOverride", { ...SIZE, deviceScaleFactor: 1, mobile: false });
    const loaded = this.#loaded();
    await this.send("Page.navigate", { url: address });
    await loaded;
    await this.until(ready);
  }

  #loaded() {
    return new Promise((resolve) => {
      this.#browser.listen(({ sessionId, method }) => {
        if (sessionId === this.#session && method === "Page.loadEventFired") resolve();
      });
    });
  }

  async evaluate(expression) {
    const { result, exceptionDetails } = await this.send("Runtime.evaluate", {
      expression,
      awaitPromise: true,
      returnByValue: true,
      userGesture: true,
    });
    if (exceptionDetails) throw new Error(JSON.stringify(exceptionDetails));
    return result.value;
  }

  async until(expression, seconds = 60) {
    const end = Date.now() + seconds * 1000;
    for (;;) {
      const value = await this.evaluate(expression);
      if (value) return value;
      if (Date.now() > end) throw new Error(`still not so after ${seconds} s: ${expression}; ${this.complaints}`);
      await sleep(50);
    }
  }

  // Takes the picture into a file once the view has come to rest.
  async screenshot(path) {
    await sleep(800);
    const { data } = await this.send("Page.captureScreenshot", { format: "png" });
    writeFileSync(path, Buffer.from(data, "base64"));
    return path;
  }

  #mouse(type, x, y, more = {}) {
    return this.send("Input.dispatchMouseEvent", { type, x, y, button: "left", clickCount: 1, ...more });
  }

  async drag(from, to) {
    const steps = 10;
    await this.#mouse("mousePressed", ...from, { buttons: 1 });
    for (let k = 1; k <= steps; ++k) {
      const [x, y] = from.map((start, axis) => start + ((to[axis] - start) * k) / steps);
      await this.#mouse("mouseMoved", x, y, { buttons: 1 });
      await sleep(16);
    }
    await this.#mouse("mouseReleased", ...to);
  }

  async wheel(deltaY) {
    await this.#mouse("mouseWheel", SIZE.width / 2, SIZE.height / 2, { button: "none", deltaX: 0, deltaY });
  }

  async click(selector) {
    const [x, y] = await this.evaluate(`(() => {
      const box = document.querySelector(${JSON.stringify(selector)}).getBoundingClientRect();
      return [box.x + box.width / 2, box.y + box.height / 2];
    })()`);
    await this.#mouse("mousePressed", x, y, { buttons: 1 });
    await this.#mouse("mouseReleased", x, y);
  }

  async press(key, milliseconds = 50) {
    const text = key.length === 1 ? key : undefined;
    await this.send("Input.dispatchKeyEvent", { type: "keyDown", key, code: key, text });
    await sleep(milliseconds);
    await this.send("Input.dispatchKeyEvent", { type: "keyUp", key, code: key });
  }

  // Two fingers that move apart for a factor above 1.
  async pinch(factor) {
    const points = (half) => [-half, half].map((dx, id) => ({ x: SIZE.width / 2 + dx, y: SIZE.height / 2, id }));
    const touch = (type, touchPoints) => this.send("Input.dispatchTouchEvent", { type, touchPoints });
    await this.send("Emulation.setTouchEmulationEnabled", { enabled: true, maxTouchPoints: 2 });
    await touch("touchStart", points(80));
    for (let k = 1; k <= 10; ++k) {
      await touch("touchMove", points(80 * factor ** (k / 10)));
      await sleep(16);
    }
    await touch("touchEnd", []);
    await this.send("Emulation.setTouchEmulationEnabled", { enabled: false });
  }

  close() {
    return this.#browser.send("Target.closeTarget", { targetId: this.#target });
  }
}
