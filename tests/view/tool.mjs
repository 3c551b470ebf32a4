// The tool under test, and what it is tested with.
import { execFileSync, spawn, spawnSync } from "node:child_process";
import { mkdirSync, mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { createInterface } from "node:readline";

const TOOL = process.env.BISEAM_TOOL;

export const run = (...words) => spawnSync(TOOL, words, { encoding: "utf8" });

export function biseam(...words) {
  const { status, stdout, stderr } = run(...words);
  if (status !== 0) throw new Error(`biseam ${words.join(" ")}: ${stderr}`);
  return stdout;
}

// How alike two screenshots are: dB, 99 for equal ones.
export function psnr(first, second) {
  return JSON.parse(biseam("compare", "--json", first, second)).whole.psnr ?? 99;
}

export function scratchFolder(test) {
  const folder = mkdtempSync(join(tmpdir(), "biseam-view-"));
  test.after(() => rmSync(folder, { recursive: true }));
  return (name) => join(folder, name);
}

// Kept, to be looked at.
export function screenshotFolder() {
  const folder = process.env.BISEAM_SCREENSHOTS;
  mkdirSync(folder, { recursive: true });
  return (name) => join(folder, name);
}

function ffmpeg(...words) {
  execFileSync("ffmpeg", ["-nostdin", "-v", "error", "-y", ...words], { stdio: "inherit" });
}

// Frames that all differ, the second second green throughout; with sound.
export function makeClip(path, encoder) {
  const [width, seconds] = [512, 4];
  ffmpeg(
    ...["-f", "lavfi", "-i", `testsrc2=size=${width}x${width / 2}:rate=25:duration=${seconds}`],
    ...["-f", "lavfi", "-i", `sine=frequency=440:duration=${seconds}`],
    ...["-pix_fmt", "yuv420p", "-c:v", ...encoder, path],
  );
}

export const H264 = ["libx264", "-preset", "ultrafast", "-g", "25"];
export const VP9 = ["libvpx-vp9", "-deadline", "realtime", "-cpu-used", "8", "-g", "25", "-c:a", "libopus"];

export function makePicture(path, source = "testsrc2", size = "1024x512") {
  ffmpeg("-f", "lavfi", "-i", `${source}=size=${size}`, "-frames:v", "1", path);
}

// A server on a free port; stop() gives its exit code.
export async function startServer(...words) {
  const server = spawn(TOOL, ["view", ...words], { stdio: ["ignore", "pipe", "inherit"] });
  const ended = new Promise((resolve) => server.on("exit", (code) => resolve(code)));
  const address = await new Promise((resolve, reject) => {
    createInterface(server.stdout).once("line", resolve);
    server.on("exit", (code) => reject(new Error(`the server ended with ${code}`)));
  });
  const stop = (signal = "SIGINT") => {
    server.kill(signal);
    return ended;
  };
  return { address, stop };
}
