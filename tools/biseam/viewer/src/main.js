import { DEFAULTS, EquirectangularAdapter, Viewer, events } from "@photo-sphere-viewer/core";
import { EquirectangularVideoAdapter } from "@photo-sphere-viewer/equirectangular-video-adapter";
import { VideoPlugin } from "@photo-sphere-viewer/video-plugin";
import "@photo-sphere-viewer/core/index.css";
import "@photo-sphere-viewer/video-plugin/index.css";
import "./page.css";
import { markSwitch, nameButtons, seamSwitch } from "./buttons.js";
import { address, settings } from "./media.js";
import { SeamSphere } from "./seams.js";

const container = document.getElementById("viewer");
const isVideo = settings.panorama.type.startsWith("video/");

// The viewer takes texts as HTML.
function escaped(text) {
  const element = document.createElement("span");
  element.textContent = text;
  return element.innerHTML;
}

function about() {
  const text = document.getElementById("about").content.cloneNode(true);
  if (!isVideo) text.querySelectorAll(".for-video").forEach((element) => element.remove());
  if (!settings.seams) text.querySelectorAll(".for-seams").forEach((element) => element.remove());
  const element = document.createElement("div");
  element.append(text);
  return element.innerHTML;
}

function makeViewer(panorama, toggleSeams) {
  const video = isVideo ? ["videoPlay", "videoVolume", "videoTime"] : [];
  const seams = settings.seams ? [seamSwitch(toggleSeams)] : [];
  const keys = { f: (viewer) => viewer.toggleFullscreen() };
  return new Viewer({
    container,
    adapter: isVideo ? EquirectangularVideoAdapter.withConfig({ shader: true }) : EquirectangularAdapter.withConfig({ shader: true }),
    plugins: isVideo ? [VideoPlugin] : [],
    panorama: isVideo ? { source: panorama } : panorama,
    caption: escaped(settings.title),
    description: about(),
    navbar: [...video, "zoom", "caption", ...seams, "description", "fullscreen"],
    lang: { ...DEFAULTS.lang, description: "About", fullscreen: "Full screen (F)", loading: "Loading\u2026" },
    keyboard: "always",
    keyboardActions: { ...DEFAULTS.keyboardActions, ...keys, ...(settings.seams && { s: toggleSeams }) },
    minFov: 20,
    maxFov: 100,
    canvasBackground: "#14171c",
  });
}

async function start() {
  const panorama = await address("panorama");
  const seams = await address("seams");
  container.replaceChildren();

  let sphere;
  let shown = false;
  const toggle = () => {
    if (!sphere) return;
    shown = !shown;
    sphere.show(shown);
    markSwitch(viewer, shown);
  };
  const viewer = makeViewer(panorama, toggle);
  nameButtons(container);
  if (seams) markSwitch(viewer, shown);
  viewer.addEventListener(
    events.ReadyEvent.type,
    async () => {
      if (seams) {
        const loading = new SeamSphere(viewer);
        await loading.load(seams);
        sphere = loading;
      }
      document.documentElement.dataset.ready = "true";
    },
    { once: true },
  );
}

start();
