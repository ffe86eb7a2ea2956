// How surfaces are drawn: the ways to colour them, and what lies over them. All of it bends and
// morphs on the graphics card along with the mesh itself.

import * as THREE from 'three';
import { COLOR_OF_ID } from './picker.js';
import { withMoreBones } from './skin_sets.js';
import { PICK_LAYER } from './stage.js';

/** The ways to colour a surface, in the order of their keys. */
export const SURFACES = {
  material: 'Materials',
  clay: 'Clay',
  colors: 'Vertex colours',
  weights: 'Bone weights',
  normals: 'Normal directions',
};

/** GLSL: the bent and morphed vertex in `transformed`, its normal in `objectNormal`. */
const MOVED_VERTEX = `
  #include <beginnormal_vertex>
  #include <morphnormal_vertex>
  #include <skinbase_vertex>
  #include <skinnormal_vertex>
  #include <begin_vertex>
  #include <morphtarget_vertex>
  #include <skinning_vertex>
`;
const MOVED_PARS = `
  #include <common>
  #include <morphtarget_pars_vertex>
  #include <skinning_pars_vertex>
`;

/** Colours of weights from 0 to 1, dark to bright: they differ without colour as well. */
export const HEAT = ['#4a5160', '#5b2a86', '#b8346c', '#ee6c3b', '#fbc14a', '#fdf6b5'];

function heatTexture() {
  const data = new Uint8Array(HEAT.length * 4);
  HEAT.forEach((hex, n) => {
    const value = parseInt(hex.slice(1), 16);
    data.set([value >> 16, (value >> 8) & 255, value & 255, 255], n * 4);
  });
  const texture = new THREE.DataTexture(data, HEAT.length, 1);
  texture.colorSpace = THREE.SRGBColorSpace;
  texture.magFilter = texture.minFilter = THREE.LinearFilter;
  texture.needsUpdate = true;
  return texture;
}

/** A matt surface coloured by each vertex's weight of the bone in `picked`; none is -1. */
function heatMaterial(picked, heat) {
  const material = new THREE.MeshLambertMaterial({ side: THREE.DoubleSide });
  material.onBeforeCompile = (shader) => {
    shader.uniforms.picked = picked;
    shader.uniforms.heat = heat;
    shader.vertexShader = shader.vertexShader
      .replace(
        '#include <common>',
        '#include <common>\nuniform float picked;\nvarying float vWeight;',
      )
      .replace(
        '#include <skinning_vertex>',
        `#include <skinning_vertex>
        #ifdef USE_SKINNING
          vWeight = weightOfBone(picked);
        #else
          vWeight = 0.0;
        #endif`,
      );
    shader.fragmentShader = shader.fragmentShader
      .replace(
        '#include <common>',
        '#include <common>\nuniform sampler2D heat;\nvarying float vWeight;',
      )
      .replace(
        '#include <map_fragment>',
        // From the middle of the first stop to the middle of the last.
        `const float stops = ${HEAT.length.toFixed(1)};
        float at = (clamp(vWeight, 0.0, 1.0) * (stops - 1.0) + 0.5) / stops;
        diffuseColor.rgb = texture2D(heat, vec2(at, 0.5)).rgb;`,
      );
  };
  return material;
}

/** Lines from the ends of normals, for the geometry of normalLines. */
function normalMaterial(length) {
  return new THREE.ShaderMaterial({
    uniforms: { extent: { value: length }, color: { value: new THREE.Color('#16b8c9') } },
    vertexShader: `
      uniform float extent;
      attribute float tip;
      ${MOVED_PARS}
      void main() {
        ${MOVED_VERTEX}
        transformed += normalize(objectNormal) * tip * extent;
        #include <project_vertex>
      }`,
    fragmentShader: `
      uniform vec3 color;
      void main() {
        gl_FragColor = vec4(color, 1.0);
        #include <colorspace_fragment>
      }`,
  });
}

/** Every vertex twice, one of the two marked as the tip of its normal, and a line between them. */
function normalLines(geometry) {
  const lines = new THREE.BufferGeometry();
  const number = geometry.attributes.position.count;
  const twice = (attribute) => {
    const plain = attribute.isInterleavedBufferAttribute ? attribute.clone() : attribute;
    const copy = new plain.array.constructor(plain.array.length * 2);
    copy.set(plain.array);
    copy.set(plain.array, plain.array.length);
    return new THREE.BufferAttribute(copy, plain.itemSize, plain.normalized);
  };
  for (const [name, attribute] of Object.entries(geometry.attributes)) {
    if (/^(position|normal|skin|joints_1|weights_1)/.test(name))
      lines.setAttribute(name, twice(attribute));
  }
  for (const [name, targets] of Object.entries(geometry.morphAttributes)) {
    if (name !== 'color') lines.morphAttributes[name] = targets.map(twice);
  }
  lines.morphTargetsRelative = geometry.morphTargetsRelative;
  const tip = new Float32Array(number * 2).fill(1, number);
  lines.setAttribute('tip', new THREE.BufferAttribute(tip, 1));
  const index = new Uint32Array(number * 2);
  for (let vertex = 0; vertex < number; vertex++) index.set([vertex, vertex + number], vertex * 2);
  lines.setIndex(new THREE.BufferAttribute(index, 1));
  return lines;
}

/** Lines that bend as a skinned mesh does: the renderer tells skins and lines by these marks. */
class SkinnedLines extends THREE.SkinnedMesh {
  isMesh = false;
  isLine = true;
  isLineSegments = true;
}

/** Another drawing of a mesh that bends and morphs along with it, or of other vertices of it. */
function twinOf(mesh, material, geometry = mesh.geometry, lines = false) {
  let twin;
  if (mesh.isSkinnedMesh) {
    twin = new (lines ? SkinnedLines : THREE.SkinnedMesh)(geometry, material);
    twin.bind(mesh.skeleton, mesh.bindMatrix);
  } else {
    twin = new (lines ? THREE.LineSegments : THREE.Mesh)(geometry, material);
  }
  // The same array, so that no copying is needed when weights change.
  twin.morphTargetInfluences = mesh.morphTargetInfluences;
  twin.frustumCulled = false;
  mesh.add(twin);
  return twin;
}

/** Colours of what a click hits: `id` in three bytes, or one above the bone that pulls most. */
function pickMaterial(source, id) {
  return new THREE.ShaderMaterial({
    side: source.side,
    uniforms: {
      id: { value: id },
      strongest: { value: false },
      map: { value: source.map ?? null },
      hasMap: { value: Boolean(source.map) },
    },
    vertexShader: `
      varying vec2 vPlace;
      flat varying float vBone;
      ${MOVED_PARS}
      void main() {
        vPlace = uv;
        vBone = -1.0;
        #ifdef USE_SKINNING
          float most = 0.0;
          for (int n = 0; n < 4; n++) {
            if (skinWeight[n] > most) { most = skinWeight[n]; vBone = skinIndex[n]; }
          }
        #endif
        ${MOVED_VERTEX}
        #include <project_vertex>
      }`,
    fragmentShader: `
      ${COLOR_OF_ID}
      uniform float id;
      uniform bool strongest;
      uniform bool hasMap;
      uniform sampler2D map;
      varying vec2 vPlace;
      flat varying float vBone;
      void main() {
        // One can click through the empty parts of leaves and hair.
        if (hasMap && texture2D(map, vPlace).a < 0.1) discard;
        gl_FragColor = colorOfId(strongest ? vBone + 1.0 : id);
      }`,
  });
}

export class Surface {
  #model;
  #ways;
  #heat = { value: heatTexture() };
  #wires = null;
  #normals = null;
  #marks = [];
  #markMaterials;
  #normalLength;

  /** @param {import('./model.js').Model} model */
  constructor(model) {
    this.#model = model;
    this.parts = model.submeshes.filter(({ object }) => object);
    this.way = 'material';
    const more = (material) => (model.hasMoreBones ? withMoreBones(material) : material);
    const clay = more(
      new THREE.MeshStandardMaterial({ color: '#b9b4ad', roughness: 0.9, side: THREE.DoubleSide }),
    );
    const normals = more(new THREE.MeshNormalMaterial({ side: THREE.DoubleSide }));
    const plain = more(new THREE.MeshLambertMaterial({ side: THREE.DoubleSide }));
    const colored = more(
      new THREE.MeshLambertMaterial({ side: THREE.DoubleSide, vertexColors: true }),
    );
    this.#ways = new Map();
    for (const { index, object, hasColors } of this.parts) {
      more(object.material);
      const picked = { value: -1 };
      this.#ways.set(index, {
        material: object.material,
        clay,
        normals,
        colors: hasColors ? colored : plain,
        weights: more(heatMaterial(picked, this.#heat)),
        pick: more(pickMaterial(object.material, index + 1)),
        picked,
      });
      object.layers.enable(PICK_LAYER);
    }
    const mark = {
      color: '#3b8cff',
      transparent: true,
      depthWrite: false,
      side: THREE.DoubleSide,
      polygonOffset: true,
      polygonOffsetFactor: -1,
      polygonOffsetUnits: -1,
    };
    this.#markMaterials = [
      more(new THREE.MeshBasicMaterial({ ...mark, opacity: 0.3 })),
      more(new THREE.MeshBasicMaterial({ ...mark, opacity: 0.5, wireframe: true })),
    ];
    this.wireMaterial = more(
      new THREE.MeshBasicMaterial({
        wireframe: true,
        transparent: true,
        opacity: 0.45,
        depthWrite: false,
      }),
    );
    this.#normalLength = model.restBox.isEmpty()
      ? 1
      : model.restBox.min.distanceTo(model.restBox.max) * 0.012;
    this.normalMaterial = more(normalMaterial(this.#normalLength));
  }

  /** Colours surfaces in one of SURFACES. */
  paint(way) {
    this.way = way;
    for (const { index, object } of this.parts) object.material = this.#ways.get(index)[way];
  }

  /** The bone whose weights are shown; -1 for none. */
  pickBone(bone) {
    for (const { index, object } of this.parts) {
      const { picked } = this.#ways.get(index);
      picked.value =
        bone < 0 || !object.isSkinnedMesh
          ? -1
          : object.skeleton.bones.indexOf(this.#model.skeleton.bones[bone]);
    }
  }

  showWires(shown) {
    this.#wires ??= shown
      ? this.parts.map(({ object }) => twinOf(object, this.wireMaterial))
      : null;
    for (const wire of this.#wires ?? []) wire.visible = shown;
  }

  showNormals(shown) {
    this.#normals ??= shown
      ? this.parts
          .filter(({ object }) => object.geometry.attributes.normal)
          .map(({ object }) =>
            twinOf(object, this.normalMaterial, normalLines(object.geometry), true),
          )
      : null;
    for (const lines of this.#normals ?? []) lines.visible = shown;
  }

  /** Marks one submesh, -1 for none: by a tint, and by lines for surfaces that have its colour. */
  mark(index) {
    for (const twin of this.#marks) twin.removeFromParent();
    const part = this.parts.find((one) => one.index === index);
    this.#marks = part ? this.#markMaterials.map((material) => twinOf(part.object, material)) : [];
    for (const twin of this.#marks) twin.renderOrder = 1;
  }

  /** Runs `draw` with surfaces in the colours of their ids, or of their strongest bones. */
  inPickColors(strongest, draw) {
    for (const { index, object } of this.parts) {
      const { pick } = this.#ways.get(index);
      pick.uniforms.strongest.value = strongest;
      object.material = pick;
    }
    try {
      draw();
    } finally {
      this.paint(this.way);
    }
  }

  dispose() {
    this.#heat.value.dispose();
    for (const ways of this.#ways.values()) {
      for (const way of Object.values(ways)) way.dispose?.();
    }
  }
}
