// A small model for the tests: a column of two materials on a chain of three bones, Z up, that
// bends by an animation and bulges by a morph.

import { readFileSync } from 'node:fs';
import { Matrix4 } from 'three';

const FLOAT = 5126;
const BYTE = 5121;
const SHORT = 5123;

/** Collects arrays into one buffer, each with an accessor. */
class Buffer3d {
  bytes = [];
  views = [];
  accessors = [];
  size = 0;

  view(array, target) {
    while (this.size % 4) this.#push(new Uint8Array(1));
    this.views.push({
      buffer: 0,
      byteOffset: this.size,
      byteLength: array.byteLength,
      ...(target && { target }),
    });
    this.#push(new Uint8Array(array.buffer, array.byteOffset, array.byteLength));
    return this.views.length - 1;
  }

  #push(bytes) {
    this.bytes.push(bytes);
    this.size += bytes.length;
  }

  add(values, type, { component = FLOAT, target, bounds = false, normalized } = {}) {
    const width = { SCALAR: 1, VEC2: 2, VEC3: 3, VEC4: 4, MAT4: 16 }[type];
    const Type = { [FLOAT]: Float32Array, [BYTE]: Uint8Array, [SHORT]: Uint16Array }[component];
    const array = Type.from(values);
    const accessor = {
      bufferView: this.view(array, target),
      componentType: component,
      count: array.length / width,
      type,
    };
    if (normalized) accessor.normalized = true;
    if (bounds) {
      const axes = Array.from({ length: width }, (_, n) =>
        [...array].filter((_, at) => at % width === n),
      );
      accessor.min = axes.map((axis) => Math.min(...axis));
      accessor.max = axes.map((axis) => Math.max(...axis));
    }
    return this.accessors.push(accessor) - 1;
  }
}

/** The bytes of a .glb of this JSON and buffer. */
export function packGlb(json, bytes) {
  const padded = (data, fill) =>
    Buffer.concat([data, Buffer.alloc((4 - (data.length % 4)) % 4, fill)]);
  const chunk = (kind, data) => {
    const head = Buffer.alloc(8);
    head.writeUInt32LE(data.length);
    head.write(kind, 4);
    return Buffer.concat([head, data]);
  };
  const text = chunk('JSON', padded(Buffer.from(JSON.stringify(json)), 32));
  const binary = bytes.length ? chunk('BIN\0', padded(bytes, 0)) : Buffer.alloc(0);
  const head = Buffer.alloc(12);
  head.write('glTF');
  head.writeUInt32LE(2, 4);
  head.writeUInt32LE(12 + text.length + binary.length, 8);
  return Buffer.concat([head, text, binary]);
}

const HEIGHT = 600;
const RADIUS = 70;
const LEVELS = 8;
const SIDES = 12;
const BONES = 3;

/** A ring of vertices per level from `from` to `to`, as shares of the height; outward normals. */
function tube(from, to) {
  const [positions, normals, uvs, joints, weights, colors, indices] = [[], [], [], [], [], [], []];
  for (let level = 0; level <= LEVELS; level++) {
    const at = from + ((to - from) * level) / LEVELS;
    for (let side = 0; side <= SIDES; side++) {
      const angle = (2 * Math.PI * side) / SIDES;
      const [x, y] = [Math.cos(angle), Math.sin(angle)];
      positions.push(RADIUS * x, RADIUS * y, HEIGHT * at);
      normals.push(x, y, 0);
      uvs.push(side / SIDES, 1 - at);
      const place = Math.min(at * BONES, BONES - 1.001);
      const bone = Math.floor(place);
      const share = place - bone;
      joints.push(bone, share ? bone + 1 : 0, 0, 0);
      weights.push(1 - share, share, 0, 0);
      colors.push(Math.round(255 * at), 128, Math.round(255 * (1 - at)), 255);
    }
  }
  for (let level = 0; level < LEVELS; level++) {
    for (let side = 0; side < SIDES; side++) {
      const first = level * (SIDES + 1) + side;
      const above = first + SIDES + 1;
      indices.push(first, first + 1, above + 1, first, above + 1, above);
    }
  }
  return { positions, normals, uvs, joints, weights, colors, indices };
}

/** The bytes of the model, whose upper half may hang on a second set of bones as well. */
export function sampleGlb({ moreBones = false } = {}) {
  const buffer = new Buffer3d();
  const step = HEIGHT / BONES;
  const primitive = (part, material, extras, bulge, second) => {
    const count = part.positions.length / 3;
    const vertices = { target: 34962 };
    const attributes = {
      POSITION: buffer.add(part.positions, 'VEC3', { ...vertices, bounds: true }),
      NORMAL: buffer.add(part.normals, 'VEC3', vertices),
      TEXCOORD_0: buffer.add(part.uvs, 'VEC2', vertices),
      JOINTS_0: buffer.add(part.joints, 'VEC4', { ...vertices, component: SHORT }),
      WEIGHTS_0: buffer.add(
        part.weights.map((weight) => (second ? weight / 2 : weight)),
        'VEC4',
        vertices,
      ),
      COLOR_0: buffer.add(part.colors, 'VEC4', { ...vertices, component: BYTE, normalized: true }),
    };
    if (second) {
      // The first bone, at which the upper half doesn't pull otherwise.
      const four = (first) => Array.from({ length: count }, () => [first, 0, 0, 0]).flat();
      attributes.JOINTS_1 = buffer.add(four(0), 'VEC4', { ...vertices, component: SHORT });
      attributes.WEIGHTS_1 = buffer.add(four(0.5), 'VEC4', vertices);
    }
    const moved = part.normals.map((value) => value * bulge);
    return {
      attributes,
      indices: buffer.add(part.indices, 'SCALAR', { component: SHORT, target: 34963 }),
      material,
      targets: [{ POSITION: buffer.add(moved, 'VEC3', { ...vertices, bounds: true }) }],
      extras: { submesh: material, ...extras },
    };
  };
  const primitives = [
    primitive(tube(0, 0.5), 0, { material: 'Skin', materialId: 0 }, 60, false),
    primitive(tube(0.5, 1), 1, { material: 'Cloth', materialId: 1 }, 30, moreBones),
  ];
  const image = buffer.view(
    readFileSync(new URL('../../samples/textures/shirt.png', import.meta.url)),
  );
  const inverse = Array.from({ length: BONES }, (_, n) =>
    new Matrix4().makeTranslation(0, 0, -n * step).toArray(),
  ).flat();
  const inverses = buffer.add(inverse, 'MAT4');
  const half = Math.SQRT1_2 / 2 ** 0.5;
  const times = buffer.add([0, 1, 2], 'SCALAR', { bounds: true });
  const turns = buffer.add(
    [0, 0, 0, 1, 0, half, 0, Math.sqrt(1 - half * half), 0, 0, 0, 1],
    'VEC4',
  );
  const morphTimes = buffer.add([0, 0.5, 1], 'SCALAR', { bounds: true });
  const weights = buffer.add([0, 1, 0], 'SCALAR');
  const first = 1;
  const joints = Array.from({ length: BONES }, (_, n) => first + n);
  const joint = (n) => ({
    name: n ? `Spine ${n}` : 'Hips',
    translation: [0, 0, n ? step : 0],
    ...(n + 1 < BONES && { children: [first + n + 1] }),
  });
  const mesh = first + BONES;
  const json = {
    asset: { version: '2.0', generator: 'test', extras: { upAxis: 'z' } },
    scene: 0,
    scenes: [{ nodes: [0, mesh] }],
    nodes: [
      { name: 'veltrum', rotation: [-Math.SQRT1_2, 0, 0, Math.SQRT1_2], children: [first] },
      ...joints.map((_, n) => joint(n)),
      { name: 'Column', mesh: 0, skin: 0 },
    ],
    meshes: [{ name: 'Column', primitives, extras: { targetNames: ['Bulge'] } }],
    skins: [{ joints, inverseBindMatrices: inverses, skeleton: first }],
    materials: [
      {
        name: 'Skin',
        pbrMetallicRoughness: {
          baseColorTexture: { index: 0 },
          metallicFactor: 0,
          roughnessFactor: 0.8,
        },
        extras: { file: 'Skin.xrf', id: 0 },
      },
      {
        name: 'Cloth',
        pbrMetallicRoughness: { baseColorFactor: [0.8, 0.8, 0.2, 1], metallicFactor: 0 },
        extras: { file: 'Cloth.xrf', id: 1, missing: ['cloth.png'] },
      },
    ],
    textures: [{ source: 0, sampler: 0 }],
    samplers: [{}],
    images: [{ bufferView: image, mimeType: 'image/png' }],
    animations: [
      {
        name: 'Bend',
        channels: joints.map((node) => ({ sampler: 0, target: { node, path: 'rotation' } })),
        samplers: [{ input: times, output: turns }],
        extras: { kind: 'skeletal' },
      },
      {
        name: 'Breathe',
        channels: [{ sampler: 0, target: { node: mesh, path: 'weights' } }],
        samplers: [{ input: morphTimes, output: weights }],
        extras: { kind: 'morph' },
      },
    ],
    accessors: buffer.accessors,
    bufferViews: buffer.views,
    buffers: [{ byteLength: buffer.size }],
  };
  return packGlb(json, Buffer.concat(buffer.bytes));
}
