// Checks .glb files: the official validator has neither an error nor a warning, and the skin at
// rest lies where the mesh's own positions do.
//
//   node test/check-glb.mjs MODEL.glb...

import { readFile } from 'node:fs/promises';
import { fileURLToPath } from 'node:url';
import { validateBytes } from 'gltf-validator';
import { Matrix4, Quaternion, Vector3 } from 'three';

// How far a vertex at rest may lie off, as a share of the model's size.
const REST_TOLERANCE = 1e-4;

/** The JSON and the buffer of a .glb. Throws an Error when it is no such file. */
export function openGlb(bytes) {
  const view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
  if (view.getUint32(0, true) !== 0x46546c67) throw new Error('not a .glb file');
  const length = view.getUint32(12, true);
  const json = JSON.parse(new TextDecoder().decode(bytes.subarray(20, 20 + length)));
  return { json, binary: bytes.subarray(28 + length) };
}

const COMPONENTS = {
  5120: ['getInt8', 1],
  5121: ['getUint8', 1],
  5122: ['getInt16', 2],
  5123: ['getUint16', 2],
  5125: ['getUint32', 4],
  5126: ['getFloat32', 4],
};
const WIDTHS = { SCALAR: 1, VEC2: 2, VEC3: 3, VEC4: 4, MAT4: 16 };

// Written anew, not by the page's loader, which scales weights itself.
function readAccessor({ json, binary }, index) {
  const accessor = json.accessors[index];
  const width = WIDTHS[accessor.type];
  const [read, size] = COMPONENTS[accessor.componentType];
  const view = json.bufferViews[accessor.bufferView];
  const start = (view.byteOffset ?? 0) + (accessor.byteOffset ?? 0);
  const stride = view.byteStride ?? width * size;
  const data = new DataView(binary.buffer, binary.byteOffset, binary.byteLength);
  const scale = accessor.normalized ? 1 / (2 ** (8 * size) - 1) : 1;
  return Array.from({ length: accessor.count }, (_, n) =>
    Array.from(
      { length: width },
      (_, at) => data[read](start + n * stride + at * size, true) * scale,
    ),
  );
}

function globalMatrices(nodes) {
  const local = nodes.map(
    ({ matrix, translation = [0, 0, 0], rotation = [0, 0, 0, 1], scale = [1, 1, 1] }) => {
      if (matrix) return new Matrix4().fromArray(matrix);
      return new Matrix4().compose(
        new Vector3(...translation),
        new Quaternion(...rotation),
        new Vector3(...scale),
      );
    },
  );
  const global = new Array(nodes.length);
  const children = new Set(nodes.flatMap((node) => node.children ?? []));
  const stack = nodes.flatMap((_, n) => (children.has(n) ? [] : [[n, new Matrix4()]]));
  while (stack.length) {
    const [node, parent] = stack.pop();
    global[node] = parent.clone().multiply(local[node]);
    for (const child of nodes[node].children ?? []) stack.push([child, global[node]]);
  }
  return global;
}

/**
 * The farthest that a skinned vertex at rest lies from where node 0, which turns the axes, takes
 * the mesh's own position, as a share of the diagonal of all meshes. 0 without any skin.
 */
export function restPoseError(bytes) {
  const glb = openGlb(bytes);
  const { nodes = [], meshes, skins = [] } = glb.json;
  const global = globalMatrices(nodes);
  let farthest = 0;
  const [low, high] = [
    new Vector3(Infinity, Infinity, Infinity),
    new Vector3(-Infinity, -Infinity, -Infinity),
  ];
  for (const node of nodes) {
    const skin = skins[node.skin];
    if (!skin) continue;
    const inverses = readAccessor(glb, skin.inverseBindMatrices);
    const matrices = skin.joints.map((joint, n) =>
      global[joint].clone().multiply(new Matrix4().fromArray(inverses[n])),
    );
    for (const { attributes } of meshes[node.mesh].primitives) {
      const positions = readAccessor(glb, attributes.POSITION);
      const sets = [];
      for (let set = 0; attributes[`JOINTS_${set}`] !== undefined; set++) {
        sets.push([
          readAccessor(glb, attributes[`JOINTS_${set}`]),
          readAccessor(glb, attributes[`WEIGHTS_${set}`]),
        ]);
      }
      positions.forEach((position, vertex) => {
        const own = new Vector3(...position);
        low.min(own);
        high.max(own);
        const skinned = new Vector3();
        for (const [joints, weights] of sets) {
          joints[vertex].forEach((joint, n) => {
            skinned.addScaledVector(own.clone().applyMatrix4(matrices[joint]), weights[vertex][n]);
          });
        }
        farthest = Math.max(farthest, skinned.distanceTo(own.applyMatrix4(global[0])));
      });
    }
  }
  // Not a number stays one, so that no comparison takes it for good.
  return farthest === 0 ? 0 : farthest / low.distanceTo(high);
}

/** What is wrong with a .glb, as lines; none for a good one. */
export async function faultsOf(bytes) {
  const report = await validateBytes(new Uint8Array(bytes), { maxIssues: 100 });
  const faults = report.issues.messages
    .filter(({ severity }) => severity <= 1)
    .map(
      ({ severity, code, message, pointer }) =>
        `${severity ? 'warning' : 'error'} ${code} at ${pointer}: ${message}`,
    );
  if (report.issues.numErrors) return faults;
  const error = restPoseError(bytes);
  if (!(error <= REST_TOLERANCE))
    faults.push(`at rest a vertex lies ${error} of the model's size off`);
  return faults;
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
  for (const file of process.argv.slice(2)) {
    const faults = await readFile(file)
      .then(faultsOf)
      .catch((error) => [error.message]);
    console.log(`${file}: ${faults.length ? 'bad' : 'good'}`);
    for (const fault of faults) console.log(`  ${fault}`);
    if (faults.length) process.exitCode = 1;
  }
}
