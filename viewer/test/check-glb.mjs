// Checks .glb files: the official validator has neither an error nor a warning. Where the skin lies
// at rest the tests of the program check.
//
//   node test/check-glb.mjs MODEL.glb...

import { readFile } from 'node:fs/promises';
import { fileURLToPath } from 'node:url';
import { validateBytes } from 'gltf-validator';

/** The JSON and the buffer of a .glb. Throws an Error when it is no such file. */
export function openGlb(bytes) {
  const view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
  if (view.getUint32(0, true) !== 0x46546c67) throw new Error('not a .glb file');
  const length = view.getUint32(12, true);
  const json = JSON.parse(new TextDecoder().decode(bytes.subarray(20, 20 + length)));
  return { json, binary: bytes.subarray(28 + length) };
}

/** What is wrong with a .glb, as lines; none for a good one. */
export async function faultsOf(bytes) {
  const report = await validateBytes(new Uint8Array(bytes), { maxIssues: 100 });
  return report.issues.messages
    .filter(({ severity }) => severity <= 1)
    .map(
      ({ severity, code, message, pointer }) =>
        `${severity ? 'warning' : 'error'} ${code} at ${pointer}: ${message}`,
    );
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
  for (const file of process.argv.slice(2)) {
    const faults = await readFile(file)
      .then(faultsOf)
      .catch((error) => [error.message ?? String(error)]);
    console.log(`${file}: ${faults.length ? 'bad' : 'good'}`);
    for (const fault of faults) console.log(`  ${fault}`);
    if (faults.length) process.exitCode = 1;
  }
}
