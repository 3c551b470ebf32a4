// The report of a calibration, opened as a double click opens it.
import assert from "node:assert/strict";
import { copyFileSync, existsSync, readFileSync } from "node:fs";
import { after, before, describe, test } from "node:test";
import { pathToFileURL } from "node:url";
import { Browser } from "../../view/browser.mjs";
import { biseam, run, scratchFolder, screenshotFolder } from "../../view/tool.mjs";

const shot = screenshotFolder();
const folder = scratchFolder();
const picture = folder("scene/side_by_side.png");
const calibrate = (input) => biseam("calibrate", input, "-o", folder("found.toml"), "--report", folder("report.html"));
let browser;
before(() => {
  browser = new Browser();
  biseam("scene", "-o", folder("scene"), "--width", "960", "--fisheye-size", "480");
  calibrate(picture);
});
after(() => browser.close());

async function openReport(scheme = "light") {
  const page = await browser.open(pathToFileURL(folder("report.html")).href, "document.readyState === 'complete'");
  await page.send("Emulation.setEmulatedMedia", { features: [{ name: "prefers-color-scheme", value: scheme }] });
  return page;
}

function assertQuiet(page) {
  assert.deepEqual(page.complaints, []);
  for (const address of page.requests) assert.match(address, /^(file|data):/);
  assert.equal(page.requests.filter((address) => address.startsWith("file:")).length, 1);
}

// Lens by lens, key by key; the profile writes one a line.
function profileValues(text) {
  const values = {};
  for (const [, lens, lines] of text.matchAll(/^\[lens([01])\]\n((?:.+\n?)*)/gm)) {
    for (const [, key, value] of lines.matchAll(/^(\w+) = (.+)$/gm)) values[`${key}${lens}`] = value;
  }
  return values;
}

describe("the report of a calibration", () => {
  test("shows its pictures and asks for nothing", async () => {
    const page = await openReport();
    const widths = await page.evaluate("[...document.images].map((image) => image.complete && image.naturalWidth)");
    assert.equal(widths.length, 12);
    for (const width of widths) assert.ok(width > 100, `${width}`);
    assert.ok(await page.evaluate("[...document.images].every((image) => image.alt)"));
    assert.equal(await page.evaluate("document.title"), "Calibration of side_by_side.png");
    assert.ok((await page.evaluate("document.querySelectorAll('.over path').length")) > 4);
    await page.screenshot(shot("report.png"));
    assertQuiet(page);
    await page.close();
  });

  test("shows the seams pixel by pixel", async () => {
    const page = await openReport();
    const seams = await page.evaluate(
      "[...document.querySelectorAll('.full img')].map((image) => [image.naturalWidth, image.getBoundingClientRect().width])",
    );
    assert.equal(seams.length, 2);
    for (const [natural, shown] of seams) assert.equal(natural, shown);
    await page.close();
  });

  test("has the profile's numbers", async () => {
    const page = await openReport();
    const profile = readFileSync(folder("found.toml"), "utf8");
    assert.equal(await page.evaluate("document.querySelector('pre').textContent"), profile);
    const rows = await page.evaluate(`[...document.querySelectorAll(".parameters tbody tr")].map((row) =>
      [row.querySelector("th").textContent, ...[...row.querySelectorAll("b")].map((cell) => cell.textContent)])`);
    const values = profileValues(profile);
    const terms = [0, 1].map((lens) => values[`k${lens}`].slice(1, -1).split(", "));
    const expected = [
      ...["cx", "cy", "p"].map((key) => [values[`${key}0`], values[`${key}1`]]),
      ...[0, 1, 2].map((term) => [terms[0][term], terms[1][term]]),
      ...["fov", "mount"].map((key) => [values[`${key}0`], values[`${key}1`]]),
      ...["yaw", "pitch", "roll"].map((key) => ["\u2013", values[`${key}1`]]),
    ];
    assert.deepEqual(rows.map((row) => row.slice(1)), expected);
    await page.close();
  });

  test("is dark where that is preferred, and fits a narrow screen", async () => {
    const light = await openReport();
    const colour = "getComputedStyle(document.body).backgroundColor";
    const before = await light.evaluate(colour);
    await light.close();
    const page = await openReport("dark");
    assert.notEqual(await page.evaluate(colour), before);
    await page.send("Emulation.setDeviceMetricsOverride", { width: 380, height: 800, deviceScaleFactor: 1, mobile: true });
    assert.ok((await page.evaluate("document.documentElement.scrollWidth")) <= 380);
    await page.screenshot(shot("report-narrow.png"));
    await page.close();
  });

  test("holds names of any kind", async () => {
    const name = "<b>\"\u00e9\" & '<script>' \\.png";
    copyFileSync(picture, folder(name));
    calibrate(folder(name));
    const page = await openReport();
    assert.equal(await page.evaluate("document.title"), `Calibration of ${name}`);
    assert.equal(await page.evaluate("document.querySelector('.files li').textContent"), name);
    assertQuiet(page);
    await page.close();
  });

  test("is not there when the camera isn't found", () => {
    const { status } = run("calibrate", folder("scene/truth.png"), "-o", folder("no.toml"), "--report", folder("no.html"));
    assert.equal(status, 3);
    assert.ok(!existsSync(folder("no.toml")) && !existsSync(folder("no.html")));
  });
});
