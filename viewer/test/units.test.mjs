// The parts of the page that need no browser.

import assert from 'node:assert/strict';
import { test } from 'node:test';
import { faultsOf, openGlb } from './check-glb.mjs';
import { advance, timeInClip } from '../src/clock.js';
import { contentsOf } from '../src/contents.js';
import { bytesOfBase64 } from '../src/embedded.js';
import { Outline } from '../src/outline.js';
import { SHORTCUTS, actionOf } from '../src/shortcuts.js';
import { count, notices, sizeAgainstAvatar, summary, units } from '../src/words.js';
import { packGlb, sampleGlb } from './sample.mjs';

test('time starts over or stays at the end', () => {
  const cases = [
    // time, step, duration, loop: time, ended
    [1.9, 0.2, 2, true, 0.1, false],
    [0.5, -1, 2, true, 1.5, false],
    [1.9, 0.2, 2, false, 2, true],
    [1, 0.5, 2, false, 1.5, false],
    [0, 0.1, 0, true, 0, true],
  ];
  for (const [time, step, duration, loop, next, ended] of cases) {
    const result = advance(time, step, duration, loop);
    assert.ok(Math.abs(result.time - next) < 1e-9, `${time} + ${step}`);
    assert.equal(result.ended, ended);
  }
  assert.equal(timeInClip(2.5, 1, true), 0.5);
  assert.equal(timeInClip(2.5, 1, false), 1);
  assert.equal(timeInClip(1, 1, true), 1, 'the end of a clip is its last pose, not its first');
});

test('what the file holds is told by its own names', () => {
  const { json } = openGlb(sampleGlb({ moreBones: true }));
  json.nodes[2].extensions = { KHR_lights_punctual: { light: 0 } };
  json.extensions = { KHR_lights_punctual: { lights: [{ type: 'spot' }] } };
  const contents = contentsOf(json);
  assert.deepEqual(
    contents.bones.map(({ name, parent, light }) => [name, parent, light].join()),
    ['Hips,-1,', 'Spine 1,0,spot', 'Spine 2,1,'],
  );
  assert.deepEqual(
    contents.animations.map(({ name, kind }) => [name, kind].join()),
    ['Bend,skeletal', 'Breathe,morph'],
  );
  assert.deepEqual(contents.morphs, ['Bulge']);
  const [skin, cloth] = contents.submeshes;
  assert.deepEqual(
    [skin.vertices, skin.faces, skin.materialFile, skin.skinSets],
    [117, 192, 'Skin.xrf', 1],
  );
  assert.deepEqual(
    [cloth.materialName, cloth.missing, cloth.skinSets],
    ['Cloth', ['cloth.png'], 2],
  );
  assert.equal(summary(contents), '1 mesh, 234 vertices, 384 faces, 3 bones, 2 animations');
  assert.equal(summary(contentsOf({ asset: {} })), 'An empty model');
});

test('joints hang on the nearest joint above, and that of vertices without bones is no bone', () => {
  const parents = (json) => contentsOf(json).bones.map(({ name, parent }) => `${name} ${parent}`);
  const nodes = [{ name: 'A', children: [1] }, { children: [2] }, { name: 'B' }];
  assert.deepEqual(parents({ nodes, skins: [{ joints: [2, 0] }] }), ['B 1', 'A -1']);
  const { json } = openGlb(sampleGlb());
  json.skins[0].joints.push(0);
  assert.deepEqual(parents(json), ['Hips -1', 'Spine 1 0', 'Spine 2 1']);
});

test('numbers and sizes in words', () => {
  assert.equal(count(1, 'mesh', 'meshes'), '1 mesh');
  assert.equal(count(1204, 'bone'), '1,204 bones');
  assert.equal(units(612.34), '612.3');
  const words = (...size) =>
    sizeAgainstAvatar(size).text.replace(" the platform's avatar of 600 units", '');
  assert.equal(words(100, 50, 612), '1.0 times');
  assert.equal(words(99.9, 20, 3), '0.17 times; may be too small');
  assert.equal(words(100, 20, 3), '0.17 times');
  assert.equal(words(5000.5, 20, 3), '8.3 times');
  assert.equal(words(6000, 5001, 3), '10 times; may be too large');
});

test('every warning and missing texture once', () => {
  const contents = contentsOf(openGlb(sampleGlb({ moreBones: true })).json);
  const manifest = {
    warnings: ['A bone is missing.'],
    missingTextures: [{ material: 'Cloth', file: 'cloth.png' }],
  };
  const all = notices(contents, manifest, { maxSkinSets: 1, brokenPictures: 2 });
  assert.deepEqual(
    all.map(({ kind, text }) => `${kind}: ${text}`),
    [
      'warning: A bone is missing.',
      "missing: Material Cloth: the texture cloth.png wasn't found; a checker stands in for it.",
      "warning: 2 embedded pictures couldn't be read; nothing is shown instead.",
      'note: Some vertices may hang on more than 4 bones; the 4 that pull most bend them here.',
    ],
  );
  // A model without manifest tells the same of textures.
  const alone = notices(contents, {}, { maxSkinSets: 2, brokenPictures: 0 });
  assert.deepEqual(alone, [all[1]]);
});

test('a tree is gone through, closed and narrowed by keys', () => {
  const names = ['hips', 'spine', 'arm', 'hand', 'leg', 'tail'];
  const parents = [-1, 0, 1, 2, 0, -1];
  const outline = new Outline(names.map((label, n) => ({ label, parent: parents[n] })));
  const shown = () =>
    outline
      .rows()
      .map((row) => `${row.level}${names[row.index]}`)
      .join(' ');
  assert.equal(shown(), '1hips 2spine 3arm 4hand 2leg 1tail');
  const leg = { index: 4, level: 2, position: 2, size: 2, hasChildren: false, expanded: false };
  assert.deepEqual(outline.rows()[4], leg);
  const keys = [
    ['ArrowDown', 3, 4],
    ['ArrowUp', 0, 0],
    ['End', 0, 5],
    ['ArrowLeft', 3, 2],
    ['ArrowRight', 0, 1],
    ['t', 0, null],
  ];
  for (const [key, from, to] of keys)
    assert.equal(outline.key(key, from), to, `${key} at ${names[from]}`);
  assert.equal(outline.key('ArrowLeft', 1), 1);
  assert.equal(shown(), '1hips 2spine 2leg 1tail');
  outline.reveal(3);
  assert.equal(shown(), '1hips 2spine 3arm 4hand 2leg 1tail');
  outline.filter = 'AR';
  assert.equal(shown(), '1hips 2spine 3arm');
});

test('keys work where they mean nothing else', () => {
  const none = { shiftKey: false, ctrlKey: false, altKey: false, metaKey: false };
  const press = (key, more = {}) => ({ key, ...none, ...more });
  assert.equal(actionOf(press(' '), 'page'), 'togglePlay');
  assert.equal(actionOf(press(' '), 'button'), null);
  assert.equal(actionOf(press('W', { shiftKey: true }), 'button'), 'toggleWireframe');
  assert.equal(actionOf(press('w'), 'letters'), null);
  assert.equal(actionOf(press('Escape'), 'letters'), 'clearSelection');
  assert.equal(actionOf(press('s', { ctrlKey: true }), 'page'), null);
  assert.equal(actionOf(press('?', { shiftKey: true }), 'page'), 'showHelp');
  assert.equal(actionOf(press('?'), 'text'), null);
  assert.equal(actionOf(press('ArrowLeft'), 'page'), null);
  assert.equal(actionOf(press('ArrowLeft', { shiftKey: true }), 'view'), 'panLeft');
  const keys = SHORTCUTS.flatMap((one) => one.keys);
  assert.equal(new Set(keys).size, keys.length, 'no key does two things');
});

test('base64 of any length, in pieces', () => {
  for (const size of [0, 1, 2, 3, 1_000_003]) {
    const bytes = Buffer.from(Array.from({ length: size }, (_, n) => (n * 7) & 255));
    assert.ok(
      Buffer.from(bytesOfBase64(`\n${bytes.toString('base64')} `.trim())).equals(bytes),
      `${size} bytes`,
    );
  }
  assert.throws(() => bytesOfBase64('no base64!'));
});

test('the check of models finds what is wrong with them', async () => {
  assert.deepEqual(await faultsOf(sampleGlb()), []);
  assert.deepEqual(await faultsOf(sampleGlb({ moreBones: true })), []);
  const { json, binary } = openGlb(sampleGlb());
  json.scenes[0].nodes = [0];
  json.nodes[0].children.push(4);
  assert.match(
    (await faultsOf(packGlb(json, Buffer.from(binary)))).join(),
    /NODE_SKINNED_MESH_NON_ROOT/,
  );
});
