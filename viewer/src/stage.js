// The 3D view: renderer, camera, lights, floor and ruler. A frame is drawn when something asks for
// one, and all the time only while an animation plays.

import * as THREE from 'three';
import { OrbitControls } from 'three/addons/controls/OrbitControls.js';
import { AVATAR_SIZE } from './words.js';

/** Objects that a click can hit are on this layer, besides the layer of everything. */
export const PICK_LAYER = 1;

/** Directions from the model to the camera, Y up, in the order of the key for the next view. */
export const VIEWS = {
  front: [0, 0, 1],
  right: [1, 0, 0],
  back: [0, 0, -1],
  left: [-1, 0, 0],
  top: [0, 1, 0.001],
};

// A little from the side and from above: a face seen straight on shows no depth.
const FIRST_VIEW = [0.45, 0.22, 1];

// Longer pauses between frames, as of a hidden page, don't make an animation jump.
const LONGEST_STEP = 0.1;

// Strengths of the three lights: together they show a white surface that faces the camera as about
// white.
const SKY = 1.9;
const KEY = 1.9;
const RIM = 0.9;

const ORBIT_STEP = Math.PI / 24;
const ZOOM_STEP = 0.9;
const PAN_PIXELS = 40;

/** Text as a picture that always faces the camera; height in units. */
function label(text, color, height) {
  const canvas = document.createElement('canvas');
  const context = canvas.getContext('2d');
  const font = '600 44px system-ui, sans-serif';
  context.font = font;
  canvas.width = Math.ceil(context.measureText(text).width) + 8;
  canvas.height = 56;
  context.font = font;
  context.fillStyle = color;
  context.textBaseline = 'middle';
  context.fillText(text, 4, 30);
  const map = new THREE.CanvasTexture(canvas);
  map.colorSpace = THREE.SRGBColorSpace;
  const sprite = new THREE.Sprite(new THREE.SpriteMaterial({ map, transparent: true }));
  sprite.scale.set((height * canvas.width) / canvas.height, height, 1);
  sprite.center.set(1.05, 0.5);
  return sprite;
}

/** A ladder as high as the avatar, a rung for each 100 units, its foot at the origin. */
function makeRuler(color) {
  const points = [0, 0, 0, 0, AVATAR_SIZE, 0];
  const ruler = new THREE.Group();
  for (let height = 0; height <= AVATAR_SIZE; height += 100) {
    points.push(0, height, 0, height % AVATAR_SIZE ? 12 : 30, height, 0);
    const text = height === AVATAR_SIZE ? `avatar ${height}` : String(height);
    const sprite = label(text, color, 22);
    sprite.position.set(-4, height, 0);
    ruler.add(sprite);
  }
  const geometry = new THREE.BufferGeometry();
  geometry.setAttribute('position', new THREE.Float32BufferAttribute(points, 3));
  ruler.add(new THREE.LineSegments(geometry, new THREE.LineBasicMaterial({ color })));
  return ruler;
}

function disposeTree(root) {
  root?.traverse((object) => {
    object.geometry?.dispose();
    object.material?.map?.dispose();
    object.material?.dispose();
  });
  root?.removeFromParent();
}

export class Stage {
  #pending = false;
  #last = 0;
  #box = new THREE.Box3();
  #grid = null;
  #ruler = null;
  #colors = { background: '#888888', line: '#666666', text: '#000000' };
  #shown = { grid: true, ruler: false };

  /**
   * @param {HTMLCanvasElement} canvas
   * @param {(step: number) => boolean} onFrame called before a frame is drawn with the seconds
   *   since the one before; true asks for another frame after it Throws an Error when the browser
   *   has no WebGL 2.
   */
  constructor(canvas, onFrame) {
    this.canvas = canvas;
    this.onFrame = onFrame;
    this.renderer = new THREE.WebGLRenderer({ canvas, antialias: true });
    this.renderer.setPixelRatio(Math.min(window.devicePixelRatio, 2));
    this.scene = new THREE.Scene();
    this.camera = new THREE.PerspectiveCamera(35, 1, 1, 1000);
    this.scene.add(this.camera);
    this.#addLights();
    this.controls = new OrbitControls(this.camera, canvas);
    this.controls.enableDamping = false;
    this.controls.addEventListener('change', () => this.invalidate());
    new ResizeObserver(() => this.#resize()).observe(canvas.parentElement);
    this.#resize();
  }

  // The key light goes along with the camera, so that what one looks at is lit from any side.
  #addLights() {
    this.sky = new THREE.HemisphereLight(0xffffff, 0x9a948c, SKY);
    this.key = new THREE.DirectionalLight(0xffffff, KEY);
    this.key.position.set(-0.5, 0.7, 1);
    this.rim = new THREE.DirectionalLight(0xdfe8ff, RIM);
    this.rim.position.set(0.6, 0.8, -1);
    this.camera.add(this.key, this.key.target, this.rim, this.rim.target);
    for (const light of [this.key, this.rim]) light.target.position.set(0, 0, 0);
    this.scene.add(this.sky);
  }

  /** Dims the view's own lights while the lights of the model are on. */
  dim(dimmed) {
    const share = dimmed ? 0.25 : 1;
    this.sky.intensity = SKY * share;
    this.key.intensity = KEY * share;
    this.rim.intensity = RIM * share;
    this.invalidate();
  }

  /** @param {{background: string, line: string, text: string}} colors as CSS writes them */
  setColors(colors) {
    this.#colors = colors;
    this.scene.background = new THREE.Color(colors.background);
    this.#furnish();
  }

  /** Takes the size of floor and ruler from a model's box, and turns the camera to it. */
  setSubject(box) {
    this.#box.copy(box);
    this.#furnish();
    this.frame(box, FIRST_VIEW);
  }

  show(what, shown) {
    this.#shown[what] = shown;
    this.#furnish();
  }

  #furnish() {
    disposeTree(this.#grid);
    disposeTree(this.#ruler);
    this.#grid = null;
    this.#ruler = null;
    const size = this.#box.getSize(new THREE.Vector3());
    const center = this.#box.getCenter(new THREE.Vector3());
    if (this.#shown.grid && !this.#box.isEmpty()) {
      // Squares of 100 units, or the power of ten that suits smaller and larger things.
      const extent = Math.max(size.x, size.y, size.z);
      const square = 10 ** Math.round(Math.log10(Math.max(extent, 1e-3) / 6));
      const squares = 2 * Math.ceil((0.8 * extent) / square);
      this.#grid = new THREE.GridHelper(
        squares * square,
        squares,
        this.#colors.line,
        this.#colors.line,
      );
      this.#grid.position.set(
        Math.round(center.x / square) * square,
        this.#box.min.y,
        Math.round(center.z / square) * square,
      );
      this.scene.add(this.#grid);
    }
    if (this.#shown.ruler) {
      this.#ruler = makeRuler(this.#colors.text);
      if (!this.#box.isEmpty()) {
        this.#ruler.position.set(this.#box.min.x - 40, this.#box.min.y, center.z);
      }
      this.scene.add(this.#ruler);
    }
    this.invalidate();
  }

  /** The model's box, together with the ruler while that is shown. */
  get wholeBox() {
    const box = this.#box.clone();
    return this.#ruler ? box.expandByObject(this.#ruler) : box;
  }

  /** Turns the camera to a box, from its present side or from the direction given. */
  frame(box, direction = null) {
    if (box.isEmpty()) return;
    const sphere = box.getBoundingSphere(new THREE.Sphere());
    const radius = Math.max(sphere.radius, 1e-3);
    const from = direction
      ? new THREE.Vector3(...direction)
      : this.camera.position.clone().sub(this.controls.target);
    const half = THREE.MathUtils.degToRad(this.camera.fov / 2);
    const narrower = Math.min(half, Math.atan(Math.tan(half) * this.camera.aspect));
    // What the camera sees from here of the box's width and height tells more than its sphere.
    const distance =
      this.#distanceFor(box, sphere.center, from.normalize()) ?? radius / Math.sin(narrower);
    this.controls.target.copy(sphere.center);
    this.camera.position.copy(sphere.center).addScaledVector(from, distance);
    // Wide enough for walking around the whole model after a small part was framed.
    const reach = Math.max(
      radius,
      this.#box.isEmpty() ? 0 : this.#box.getSize(new THREE.Vector3()).length(),
    );
    this.camera.near = Math.min(distance, radius) / 100;
    this.camera.far = distance + reach * 20;
    this.camera.updateProjectionMatrix();
    this.controls.update();
    this.invalidate();
  }

  // The distance along `from` at which all corners of the box are in the picture, with a margin.
  #distanceFor(box, center, from) {
    const probe = new THREE.Object3D();
    probe.position.copy(from);
    probe.lookAt(0, 0, 0);
    const turn = probe.quaternion.clone().invert();
    const tan = Math.tan(THREE.MathUtils.degToRad(this.camera.fov / 2)) * 0.88;
    let distance = 0;
    for (let corner = 0; corner < 8; corner++) {
      const point = new THREE.Vector3(
        corner & 1 ? box.max.x : box.min.x,
        corner & 2 ? box.max.y : box.min.y,
        corner & 4 ? box.max.z : box.min.z,
      ).sub(center);
      point.applyQuaternion(turn);
      const away = Math.max(
        Math.abs(point.y) / tan,
        Math.abs(point.x) / (tan * this.camera.aspect),
      );
      distance = Math.max(distance, away - point.z);
    }
    return distance > 0 ? distance : null;
  }

  orbit(left, up) {
    if (left) this.controls.rotateLeft(left * ORBIT_STEP);
    if (up) this.controls.rotateUp(up * ORBIT_STEP);
  }

  pan(right, up) {
    this.controls.pan(-right * PAN_PIXELS, up * PAN_PIXELS);
  }

  zoom(closer) {
    // The controls' own words are the other way round: "in" takes a scale that brings the camera
    // closer.
    if (closer) this.controls.dollyIn(ZOOM_STEP);
    else this.controls.dollyOut(ZOOM_STEP);
  }

  #resize() {
    const { clientWidth, clientHeight } = this.canvas.parentElement;
    if (!clientWidth || !clientHeight) return;
    this.renderer.setSize(clientWidth, clientHeight, false);
    this.camera.aspect = clientWidth / clientHeight;
    this.camera.updateProjectionMatrix();
    this.#draw(0);
  }

  /** Draws at once: what can be seen is then as the scene says. */
  draw() {
    this.#draw(0);
  }

  /** Asks for a frame. */
  invalidate() {
    if (this.#pending) return;
    this.#pending = true;
    requestAnimationFrame((now) => {
      this.#pending = false;
      const step = this.#last ? Math.min((now - this.#last) / 1000, LONGEST_STEP) : 0;
      this.#last = now;
      if (this.#draw(step)) this.invalidate();
      else this.#last = 0;
    });
  }

  #draw(step) {
    const more = this.onFrame(step);
    this.renderer.render(this.scene, this.camera);
    return more;
  }
}
