// The tool under test, and what it is shown.
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

export function scratchFolder() {
  const folder = mkdtempSync(join(tmpdir(), "biseam-view-"));
  process.on("exit", () => rmSync(folder, { recursive: true }));
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

// Squares all over, others in every frame.
export function cells(seed, size = "1024x512") {
  return `cellauto=size=64x32:rate=25:rule=30:random_seed=${seed},scale=${size.replace("x", ":")}:flags=neighbor`;
}

// Frames that all differ; with sound.
export function makeClip(path, encoder) {
  ffmpeg(
    ...["-f", "lavfi", "-i", cells(1, "512x256")],
    ...["-f", "lavfi", "-i", "sine=frequency=440"],
    ...["-t", "4", "-pix_fmt", "yuv420p", "-c:v", ...encoder, path],
  );
}

export const H264 = ["libx264", "-preset", "ultrafast", "-g", "25"];
export const VP9 = ["libvpx-vp9", "-deadline", "realtime", "-cpu-used", "8", "-g", "25", "-c:a", "libopus"];

export function makePicture(path, source = cells(2)) {
  ffmpeg("-f", "lavfi", "-i", source, "-frames:v", "1", path);
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
