// The page of a picture, opened as a double click opens it.
import assert from "node:assert/strict";
import { copyFileSync } from "node:fs";
import { after, before, describe, test } from "node:test";
import { pathToFileURL } from "node:url";
import { Browser } from "./browser.mjs";
import { biseam, cells, makePicture, psnr, scratchFolder, screenshotFolder } from "./tool.mjs";

const SAME = 35; // dB; screenshots of one view differ by what rounding does
const OTHER = 25;

const shot = screenshotFolder();
let browser;
before(() => (browser = new Browser()));
after(() => browser.close());

// Nothing to complain about, and no address but this file's and what is within it.
function assertQuiet(page) {
  assert.deepEqual(page.complaints, []);
  for (const address of page.requests) assert.match(address, /^(file|blob|data):/);
  assert.equal(page.requests.filter((address) => address.startsWith("file:")).length, 1);
}

async function openPage(folder, ...words) {
  biseam("view", ...words, "-o", folder("page.html"));
  return browser.open(pathToFileURL(folder("page.html")).href);
}

async function openPicture(name) {
  const folder = scratchFolder();
  makePicture(folder("panorama.png"));
  const page = await openPage(folder, folder("panorama.png"));
  const start = await page.screenshot(shot(`${name}-before.png`));
  return { page, start };
}

// The view after an action differs from the one before.
async function assertChanges(name, action) {
  const { page, start } = await openPicture(name);
  await action(page);
  const end = await page.screenshot(shot(`${name}-after.png`));
  const alike = psnr(start, end);
  assert.ok(alike < OTHER, `${alike} dB`);
  assertQuiet(page);
  await page.close();
}

describe("the page of a picture", () => {
  test("shows the picture and stays as it is when nothing is done", async () => {
    const { page, start } = await openPicture("rest");
    const again = await page.screenshot(shot("rest-after.png"));
    assert.ok(psnr(start, again) > SAME);
    assert.equal(await page.evaluate("document.title"), "panorama.png");
    assertQuiet(page);
    await page.close();
  });

  test("turns when dragged", () => assertChanges("drag", (page) => page.drag([600, 300], [300, 250])));
  test("zooms by the wheel", () =>
    assertChanges("wheel", async (page) => {
      for (let k = 0; k < 5; ++k) await page.wheel(-300);
    }));
  test("zooms by two fingers", () => assertChanges("pinch", (page) => page.pinch(2)));
  test("turns by an arrow key", () => assertChanges("arrow", (page) => page.press("ArrowRight", 600)));
  test("zooms by a key", () => assertChanges("plus", (page) => page.press("+", 600)));

  test("fills the screen by a key and by the button", async () => {
    const { page } = await openPicture("screen");
    await page.press("f");
    await page.until("document.fullscreenElement?.id === 'viewer'");
    await page.evaluate("document.exitFullscreen()");
    await page.until("!document.fullscreenElement");
    await page.click(".psv-fullscreen-button");
    await page.until("document.fullscreenElement?.id === 'viewer'");
    assertQuiet(page);
    await page.close();
  });

  test("has a name for every button, and the licences of what it holds", async () => {
    const { page } = await openPicture("about");
    const names = await page.evaluate(`[...document.querySelectorAll("[tabindex='0']")]
      .filter((element) => element.offsetParent)
      .map((element) => element.getAttribute("role") + " " + element.getAttribute("aria-label"))`);
    assert.deepEqual(names, ["button Zoom out", "button Zoom in", "button About", "button Full screen (F)"]);
    await page.evaluate("document.querySelector('.psv-description-button').focus()");
    await page.press(" ");
    const about = await page.until("document.querySelector('.psv-panel-content').textContent");
    for (const word of ["photo-sphere-viewer", "three", "MIT License", "full screen"]) assert.ok(about.includes(word), word);
    assert.ok(!about.includes("play, pause"));
    await page.screenshot(shot("about.png"));
    assertQuiet(page);
    await page.close();
  });

  test("has no switch for seams without them", async () => {
    const { page } = await openPicture("plain");
    assert.equal(await page.evaluate("document.querySelectorAll('[role=switch]').length"), 0);
    await page.close();
  });

  test("holds names of any kind", async () => {
    const folder = scratchFolder();
    const name = "<b>\"\u00e9\" & '<script>' @@TITLE@@ \\.png";
    makePicture(folder("panorama.png"));
    copyFileSync(folder("panorama.png"), folder(name));
    const page = await openPage(folder, folder(name));
    assert.equal(await page.evaluate("document.title"), name);
    assert.equal(await page.evaluate("document.querySelector('.psv-caption-content').textContent"), name);
    assertQuiet(page);
    await page.close();
  });
});

describe("the switch for bands and seams", () => {
  const checked = "document.querySelector('[role=switch]').getAttribute('aria-checked')";

  test("fades to the painted panorama, which lies exactly over the other, and back", async () => {
    const folder = scratchFolder();
    makePicture(folder("panorama.png"));
    makePicture(folder("painted.png"), cells(3));
    const page = await openPage(folder, folder("panorama.png"), "--show-seams", folder("painted.png"));
    const off = await page.screenshot(shot("painted-off.png"));
    await page.click("[role=switch]");
    assert.equal(await page.evaluate(checked), "true");
    const on = await page.screenshot(shot("painted-on.png"));
    await page.press("s");
    assert.equal(await page.evaluate(checked), "false");
    const again = await page.screenshot(shot("painted-again.png"));
    assert.ok(psnr(off, on) < OTHER);
    assert.ok(psnr(off, again) > SAME);
    assertQuiet(page);
    await page.close();

    const alone = await openPage(folder, folder("painted.png"));
    const truth = await alone.screenshot(shot("painted-alone.png"));
    assert.ok(psnr(truth, on) > OTHER);
    await alone.close();
  });

  test("lays the layer of a stitch over its panorama", async () => {
    const folder = scratchFolder();
    biseam("scene", "-o", folder("scene"), "--width", "960", "--fisheye-size", "480");
    const files = ["-o", folder("panorama.jpg"), "--seam-layer", folder("layer.png")];
    biseam("stitch", folder("scene/side_by_side.png"), "--camera", folder("scene/camera.toml"), ...files);
    const page = await openPage(folder, folder("panorama.jpg"), "--show-seams", folder("layer.png"));
    await page.drag([900, 300], [100, 300]);
    const off = await page.screenshot(shot("layer-off.png"));
    await page.click("[role=switch]");
    const on = await page.screenshot(shot("layer-on.png"));
    const alike = psnr(off, on);
    assert.ok(alike < OTHER + 5 && alike > 10, `${alike} dB`);
    assertQuiet(page);
    await page.close();
  });
});
