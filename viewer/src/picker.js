// What lies under a point of the 3D view: one pixel is drawn in the colours of ids. The graphics
// card has the vertices where they really are, bent and morphed; on the processor that would take
// long.

import * as THREE from 'three';
import { PICK_LAYER } from './stage.js';

/** GLSL: an id as a colour, the lowest byte in red. */
export const COLOR_OF_ID = `
  vec4 colorOfId(float id) {
    return vec4(mod(id, 256.0), mod(floor(id / 256.0), 256.0), floor(id / 65536.0), 255.0) / 255.0;
  }
`;

export class Picker {
  #target = new THREE.WebGLRenderTarget(1, 1);
  #bytes = new Uint8Array(4);

  /** @param {import('./stage.js').Stage} stage */
  constructor(stage) {
    this.stage = stage;
  }

  /**
   * @param {number} x, y in CSS pixels from the view's left top corner
   * @param {(draw: () => void) => void} inColors runs `draw` while everything has the colour of its
   *   id
   * @returns {number} the id, 0 for nothing
   */
  idAt(x, y, inColors) {
    const { renderer, camera, scene, canvas } = this.stage;
    camera.setViewOffset(
      canvas.clientWidth,
      canvas.clientHeight,
      Math.floor(x),
      Math.floor(y),
      1,
      1,
    );
    const layers = camera.layers.mask;
    const { background } = scene;
    camera.layers.set(PICK_LAYER);
    scene.background = null;
    renderer.setRenderTarget(this.#target);
    renderer.setClearColor(0x000000, 0);
    renderer.clear();
    try {
      inColors(() => renderer.render(scene, camera));
      renderer.readRenderTargetPixels(this.#target, 0, 0, 1, 1, this.#bytes);
    } finally {
      renderer.setRenderTarget(null);
      scene.background = background;
      camera.layers.mask = layers;
      camera.clearViewOffset();
    }
    const [red, green, blue] = this.#bytes;
    return red + 256 * green + 65536 * blue;
  }
}
