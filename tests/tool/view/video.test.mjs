// The page of a video, from a file and served.
import assert from "node:assert/strict";
import { after, before, describe, test } from "node:test";
import { pathToFileURL } from "node:url";
import { Browser } from "./browser.mjs";
import { H264, VP9, biseam, makeClip, makePicture, psnr, run, scratchFolder, screenshotFolder, startServer } from "./tool.mjs";

const OTHER = 25; // dB

const shot = screenshotFolder();
let browser;
before(() => (browser = new Browser()));
after(() => browser.close());

const seconds = (page) => page.evaluate("Number(document.querySelector('.psv-video-time strong').textContent.split(':')[1])");

async function assertPlays(page, name) {
  const start = await page.screenshot(shot(`${name}-start.png`));
  assert.equal(await seconds(page), 0);
  await page.click(".psv-video-bigbutton");
  await page.until("document.querySelector('.psv-video-time strong').textContent === '0:02'");
  await page.press(" ");
  await page.until("document.querySelector('.psv-video-bigbutton--pause')");
  const paused = await page.screenshot(shot(`${name}-paused.png`));
  assert.ok(psnr(start, paused) < OTHER, "the picture moves");
  const again = await page.screenshot(shot(`${name}-rest.png`));
  assert.ok(psnr(paused, again) > OTHER, "and rests when paused");
  await page.drag([600, 300], [300, 250]);
  const turned = await page.screenshot(shot(`${name}-turned.png`));
  assert.ok(psnr(paused, turned) < OTHER, "the view turns");
  assert.deepEqual(page.complaints, []);
}

describe("the page of a video", () => {
  for (const [file, encoder] of [["clip.mp4", H264], ["clip.webm", VP9]]) {
    test(`plays ${file}`, async () => {
      const folder = scratchFolder();
      makeClip(folder(file), encoder);
      biseam("view", folder(file), "-o", folder("page.html"));
      const page = await browser.open(pathToFileURL(folder("page.html")).href);
      await assertPlays(page, file);
      for (const address of page.requests) assert.match(address, /^(file|blob|data):/);
      await page.close();
    });
  }

  test("lays transparent seams over a video, and refuses others", async () => {
    const folder = scratchFolder();
    makeClip(folder("clip.mp4"), H264);
    makePicture(folder("layer.png"), "color=color=red@0.5:size=512x256,format=rgba");
    makePicture(folder("painted.png"));
    biseam("view", folder("clip.mp4"), "--show-seams", folder("layer.png"), "-o", folder("page.html"));
    const page = await browser.open(pathToFileURL(folder("page.html")).href);
    const off = await page.screenshot(shot("video-seams-off.png"));
    await page.press("s");
    const on = await page.screenshot(shot("video-seams-on.png"));
    assert.ok(psnr(off, on) < OTHER);
    assert.deepEqual(page.complaints, []);
    await page.close();

    const refused = run("view", folder("clip.mp4"), "--show-seams", folder("painted.png"), "-o", folder("other.html"));
    assert.equal(refused.status, 3);
    assert.match(refused.stderr, /painted\.png: would hide the video/);
  });
});

describe("a served video", () => {
  test("plays, and is fetched in ranges from this machine alone", async () => {
    const folder = scratchFolder();
    makeClip(folder("clip.mp4"), H264);
    const { address, stop } = await startServer(folder("clip.mp4"), "--serve");
    const page = await browser.open(address);
    await assertPlays(page, "served");
    for (const request of page.requests) assert.ok(request.startsWith(address) || /^(data|blob):/.test(request), request);
    assert.ok(page.requests.includes(`${address}panorama.mp4`));
    assert.ok(page.statuses.includes(206), `${page.statuses}`);
    await page.close();
    assert.equal(await stop(), 0);
  });
});
