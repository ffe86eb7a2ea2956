// The bones and their names over the model. Their vertices hang on the bones like those of a skin,
// so that the graphics card moves them along.

import * as THREE from 'three';
import { COLOR_OF_ID } from './picker.js';
import { PICK_LAYER } from './stage.js';

// A spindle from a bone to its child: the widest place, and its width, as shares of its length.
const WAIST = 0.15;
const WIDTH = 0.1;

// The font of names, in pixels of the screen.
const NAME_PIXELS = 13;
const NAME_ROW = 18;
const ATLAS_WIDTH = 1024;

/** Collects triangles whose vertices hang on one bone each, from points of the scene at rest. */
class BoneTriangles {
  positions = [];
  bones = [];
  ids = [];

  /** @param {THREE.Matrix4[]} toSkin from the scene at rest to what each bone bends */
  constructor(toSkin) {
    this.toSkin = toSkin;
  }

  /** A double pyramid with a square waist; `top` hangs on `topBone`, the rest on `bone`. */
  spindle(bottom, waist, top, side, forward, bone, topBone) {
    const corners = [
      waist.clone().add(side),
      waist.clone().add(forward),
      waist.clone().sub(side),
      waist.clone().sub(forward),
    ];
    for (let n = 0; n < 4; n++) {
      const [from, to] = [corners[n], corners[(n + 1) % 4]];
      this.#triangle([bottom, to, from], [bone, bone, bone], bone);
      this.#triangle([from, to, top], [bone, bone, topBone], bone);
    }
  }

  #triangle(points, bones, id) {
    points.forEach((point, n) => {
      this.positions.push(...point.clone().applyMatrix4(this.toSkin[bones[n]]));
      this.bones.push(bones[n], 0, 0, 0);
      this.ids.push(id);
    });
  }
}

/** Attributes of a skin whose vertices hang on one bone each. */
function skinnedGeometry(positions, bones) {
  const geometry = new THREE.BufferGeometry();
  geometry.setAttribute('position', new THREE.Float32BufferAttribute(positions, 3));
  geometry.setAttribute('skinIndex', new THREE.Uint16BufferAttribute(bones, 4));
  const weights = new Float32Array(bones.length).map((_, n) => (n % 4 ? 0 : 1));
  geometry.setAttribute('skinWeight', new THREE.BufferAttribute(weights, 4));
  return geometry;
}

function bonesGeometry(places, toSkin, parents, size) {
  const triangles = new BoneTriangles(toSkin);
  const nearest = places.map(() => Infinity);
  parents.forEach((parent, child) => {
    if (parent < 0) return;
    const [from, to] = [places[parent], places[child]];
    const along = to.clone().sub(from);
    const length = along.length();
    if (length < size * 1e-4) return;
    nearest[parent] = Math.min(nearest[parent], length);
    nearest[child] = Math.min(nearest[child], length);
    const side = new THREE.Vector3(1, 0, 0).cross(along);
    if (side.length() < 0.1 * length) side.set(0, 1, 0).cross(along);
    const width = Math.min(WIDTH * length, size * 0.016);
    side.setLength(width);
    const forward = along.clone().cross(side).setLength(width);
    const waist = from.clone().addScaledVector(along, WAIST);
    triangles.spindle(from, waist, to, side, forward, parent, child);
  });
  places.forEach((place, bone) => {
    const radius = Math.min(size * 0.008, 0.15 * nearest[bone]);
    const axis = (x, y, z) => new THREE.Vector3(x, y, z).multiplyScalar(radius);
    const up = axis(0, 0, 1);
    const [top, bottom] = [place.clone().add(up), place.clone().sub(up)];
    triangles.spindle(bottom, place, top, axis(1, 0, 0), axis(0, 1, 0), bone, bone);
  });
  const geometry = skinnedGeometry(triangles.positions, triangles.bones);
  geometry.setAttribute('bone', new THREE.Float32BufferAttribute(triangles.ids, 1));
  return geometry;
}

const BONES_VERTEX = `
  #include <common>
  #include <skinning_pars_vertex>
  attribute float bone;
  uniform float picked;
  uniform bool all;
  varying vec3 vView;
  flat varying float vBone;
  void main() {
    #include <skinbase_vertex>
    #include <begin_vertex>
    #include <skinning_vertex>
    #include <project_vertex>
    vView = mvPosition.xyz;
    vBone = bone;
    // Beyond the far plane: not drawn.
    if (!all && bone != picked) gl_Position = vec4(2.0, 2.0, 2.0, 1.0);
  }`;

const BONES_FRAGMENT = `
  ${COLOR_OF_ID}
  uniform float picked;
  uniform bool ids;
  uniform float firstId;
  uniform vec3 color;
  uniform vec3 pickedColor;
  varying vec3 vView;
  flat varying float vBone;
  void main() {
    if (ids) {
      gl_FragColor = colorOfId(firstId + vBone);
      return;
    }
    vec3 normal = normalize(cross(dFdx(vView), dFdy(vView)));
    float light = 0.55 + 0.45 * abs(normal.z);
    gl_FragColor = vec4((vBone == picked ? pickedColor : color) * light, 1.0);
    #include <colorspace_fragment>
  }`;

const NAMES_VERTEX = `
  #include <common>
  #include <skinning_pars_vertex>
  attribute float bone;
  attribute vec2 corner;
  uniform float picked;
  uniform bool all;
  uniform vec2 pixel;
  varying vec2 vPlace;
  void main() {
    #include <skinbase_vertex>
    #include <begin_vertex>
    #include <skinning_vertex>
    #include <project_vertex>
    vPlace = uv;
    gl_Position.xy += corner * pixel * gl_Position.w;
    if (!all && bone != picked) gl_Position = vec4(2.0, 2.0, 2.0, 1.0);
  }`;

const NAMES_FRAGMENT = `
  uniform sampler2D map;
  varying vec2 vPlace;
  void main() {
    gl_FragColor = texture2D(map, vPlace);
    if (gl_FragColor.a < 0.02) discard;
    #include <colorspace_fragment>
  }`;

/** All names in one picture: its canvas, and the place of each name in pixels of the screen. */
function drawNames(names, text, halo) {
  const scale = Math.min(window.devicePixelRatio, 2);
  const canvas = document.createElement('canvas');
  const context = canvas.getContext('2d');
  const font = `600 ${NAME_PIXELS}px system-ui, sans-serif`;
  context.font = font;
  let [x, y] = [0, 0];
  const places = names.map((name) => {
    const width = Math.min(Math.ceil(context.measureText(name).width) + 8, ATLAS_WIDTH);
    if (x + width > ATLAS_WIDTH) [x, y] = [0, y + NAME_ROW];
    const place = { x, y, width };
    x += width;
    return place;
  });
  canvas.width = ATLAS_WIDTH * scale;
  canvas.height = (y + NAME_ROW) * scale;
  context.scale(scale, scale);
  context.font = font;
  context.textBaseline = 'middle';
  context.lineJoin = 'round';
  context.lineWidth = 4;
  context.strokeStyle = halo;
  context.fillStyle = text;
  names.forEach((name, n) => {
    const at = [places[n].x + 4, places[n].y + NAME_ROW / 2 + 0.5, ATLAS_WIDTH - 8];
    context.strokeText(name, ...at);
    context.fillText(name, ...at);
  });
  return { canvas, places, height: y + NAME_ROW };
}

function namesGeometry(places, toSkin, atlas) {
  const [positions, bones, ids, corners, uvs, index] = [[], [], [], [], [], []];
  places.forEach((place, bone) => {
    const { x, y, width } = atlas.places[bone];
    // To the right of the joint, a little above it; in pixels.
    const [left, bottom] = [6, 2];
    const anchor = place.clone().applyMatrix4(toSkin[bone]);
    const first = positions.length / 3;
    for (const [right, up] of [
      [0, 0],
      [1, 0],
      [1, 1],
      [0, 1],
    ]) {
      positions.push(...anchor);
      bones.push(bone, 0, 0, 0);
      ids.push(bone);
      corners.push(left + right * width, bottom + up * NAME_ROW);
      uvs.push((x + right * width) / ATLAS_WIDTH, 1 - (y + (1 - up) * NAME_ROW) / atlas.height);
    }
    index.push(first, first + 1, first + 2, first, first + 2, first + 3);
  });
  const geometry = skinnedGeometry(positions, bones);
  geometry.setAttribute('bone', new THREE.Float32BufferAttribute(ids, 1));
  geometry.setAttribute('corner', new THREE.Float32BufferAttribute(corners, 2));
  geometry.setAttribute('uv', new THREE.Float32BufferAttribute(uvs, 2));
  geometry.setIndex(index);
  return geometry;
}

export class SkeletonView {
  #picked = { value: -1 };
  #allBones = { value: false };
  #allNames = { value: false };
  #pixel = { value: new THREE.Vector2() };
  #places;
  #toSkin;

  /**
   * @param {import('./model.js').Model} model in its rest pose
   * @param {number} firstId what a click on the first bone reads
   */
  constructor(model, firstId) {
    this.model = model;
    const { skeleton, contents } = model;
    const joints = skeleton.bones.slice(0, contents.bones.length);
    this.#places = joints.map((bone) =>
      new THREE.Vector3().setFromMatrixPosition(bone.matrixWorld),
    );
    this.#toSkin = joints.map((bone, n) =>
      bone.matrixWorld.clone().multiply(skeleton.boneInverses[n]).invert(),
    );
    // Of the meshes, where there are some: a bone of a lamp or camera may be far away.
    const size = model.restBox.getSize(new THREE.Vector3()).length() || 1;
    const material = new THREE.ShaderMaterial({
      uniforms: {
        picked: this.#picked,
        all: this.#allBones,
        ids: { value: false },
        firstId: { value: firstId },
        color: { value: new THREE.Color('#d9c27a') },
        pickedColor: { value: new THREE.Color('#3b8cff') },
      },
      vertexShader: BONES_VERTEX,
      fragmentShader: BONES_FRAGMENT,
      side: THREE.DoubleSide,
      transparent: true,
    });
    const parents = contents.bones.map((bone) => bone.parent);
    this.bones = this.#add(
      new THREE.SkinnedMesh(bonesGeometry(this.#places, this.#toSkin, parents, size), material),
      10,
    );
    this.bones.layers.enable(PICK_LAYER);
    // In front of the model, and yet hiding one another.
    this.bones.onBeforeRender = (renderer) => renderer.clearDepth();
    this.names = null;
    this.#update();
  }

  #add(mesh, order) {
    mesh.bind(this.model.skeleton, new THREE.Matrix4());
    mesh.frustumCulled = false;
    mesh.renderOrder = order;
    this.model.scene.add(mesh);
    return mesh;
  }

  /** Draws the names anew in these colours, as CSS writes them. */
  setColors(text, halo) {
    this.#removeNames();
    if (!this.#places.length) return;
    const atlas = drawNames(
      this.model.contents.bones.map((bone) => bone.name),
      text,
      halo,
    );
    const map = new THREE.CanvasTexture(atlas.canvas);
    map.colorSpace = THREE.SRGBColorSpace;
    const material = new THREE.ShaderMaterial({
      uniforms: {
        map: { value: map },
        picked: this.#picked,
        all: this.#allNames,
        pixel: this.#pixel,
      },
      vertexShader: NAMES_VERTEX,
      fragmentShader: NAMES_FRAGMENT,
      transparent: true,
      depthTest: false,
      depthWrite: false,
    });
    this.names = this.#add(
      new THREE.SkinnedMesh(namesGeometry(this.#places, this.#toSkin, atlas), material),
      11,
    );
    const size = new THREE.Vector2();
    this.names.onBeforeRender = (renderer) => {
      renderer.getSize(size);
      this.#pixel.value.set(2 / size.x, 2 / size.y);
    };
    this.#update();
  }

  showBones(shown) {
    this.#allBones.value = shown;
    this.#update();
  }

  showNames(shown) {
    this.#allNames.value = shown;
    this.#update();
  }

  /** Marks a bone, which is shown with its name even when the others aren't; -1 for none. */
  pick(bone) {
    this.#picked.value = bone;
    this.#update();
  }

  #update() {
    const one = this.#picked.value >= 0;
    this.bones.visible = this.#allBones.value || one;
    if (this.names) this.names.visible = this.#allNames.value || one;
  }

  /** Runs `draw` with the bones in the colours of their ids. */
  inPickColors(draw) {
    this.bones.material.uniforms.ids.value = true;
    try {
      draw();
    } finally {
      this.bones.material.uniforms.ids.value = false;
    }
  }

  #removeNames() {
    if (!this.names) return;
    this.names.material.uniforms.map.value.dispose();
    this.names.material.dispose();
    this.names.geometry.dispose();
    this.names.removeFromParent();
    this.names = null;
  }

  dispose() {
    this.#removeNames();
    this.bones.geometry.dispose();
    this.bones.material.dispose();
    this.bones.removeFromParent();
  }
}
