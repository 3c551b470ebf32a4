// Bands and seams as a second sphere within the panorama's, faded in and out.
import { EquirectangularAdapter, utils } from "@photo-sphere-viewer/core";

const FADE_MS = matchMedia("(prefers-reduced-motion: reduce)").matches ? 1 : 250;

export class SeamSphere {
  #viewer;
  #adapter;
  #mesh;
  #opacity = 0;
  #fade;

  constructor(viewer) {
    this.#viewer = viewer;
    this.#adapter = new EquirectangularAdapter(viewer, { shader: true });
  }

  // Lies exactly as the panorama does, cropped and turned like it.
  async load(address) {
    const { panoData } = this.#viewer.state.textureData;
    const texture = await this.#adapter.loadTexture(address, false, panoData, false);
    this.#mesh = this.#adapter.createMesh(texture.panoData);
    this.#adapter.setTexture(this.#mesh, texture);
    this.#mesh.renderOrder = 100;
    this.#viewer.renderer.setPanoramaPose(panoData, this.#mesh);
    this.#setOpacity(0);
    this.#viewer.renderer.addObject(this.#mesh);
  }

  show(shown) {
    this.#fade?.cancel();
    this.#fade = new utils.Animation({
      properties: { opacity: { start: this.#opacity, end: shown ? 1 : 0 } },
      duration: FADE_MS,
      onTick: ({ opacity }) => this.#setOpacity(opacity),
    });
  }

  #setOpacity(opacity) {
    this.#opacity = opacity;
    this.#adapter.setTextureOpacity(this.#mesh, opacity);
    this.#mesh.visible = opacity > 0;
    this.#viewer.needsUpdate();
  }
}
