// The panel with notices and facts, and the cards of what is selected.

import { byId, make } from './dom.js';
import { AVATAR_SIZE, count, facts, sizeAgainstAvatar, units, vertices, whole } from './words.js';

const KINDS = { warning: 'Warning', missing: 'Missing texture', note: 'Note' };

const pairs = (list) =>
  list.flatMap(([label, value]) => [make('dt', {}, label), make('dd', {}, value)]);

export function showNotices(list) {
  const items = list.map(({ kind, text }) => {
    const item = make('li', {}, make('b', {}, KINDS[kind]), text);
    item.dataset.kind = kind;
    return item;
  });
  byId('notices').replaceChildren(
    ...(items.length ? items : [make('li', {}, 'No warnings, and no texture is missing.')]),
  );
  const serious = list.filter(({ kind }) => kind !== 'note').length;
  byId('notice-count').hidden = serious === 0;
  byId('notice-count').replaceChildren(
    String(serious),
    make('span', { className: 'unseen' }, serious === 1 ? ' notice' : ' notices'),
  );
}

// Two bars side by side, as high as the avatar and the model are to each other.
function showScale(size) {
  const scale = byId('scale');
  scale.hidden = !size;
  if (!size) return;
  const highest = Math.max(AVATAR_SIZE, size[2]);
  const bars = [AVATAR_SIZE, size[2]].map((height) => {
    const bar = make('span', { className: 'bar' });
    bar.style.height = `${(height / highest) * 100}%`;
    return bar;
  });
  scale.replaceChildren(
    ...bars,
    make('span', {}, `avatar ${AVATAR_SIZE}`),
    make('span', {}, `model ${units(size[2])}`),
  );
}

export function showFacts(contents, manifest, size) {
  showScale(size);
  byId('facts').replaceChildren(...pairs(facts(contents, manifest, size)));
}

function fillCard(card, title, list, buttons) {
  card.hidden = false;
  const row = make('div', { className: 'buttons' });
  for (const [text, run] of buttons)
    row.append(make('button', { type: 'button', onclick: run }, text));
  card.replaceChildren(make('h2', {}, title), make('dl', {}, ...pairs(list)), row);
}

/** What there is to know of a bone. `reach` says how many vertices of which submesh it pulls at. */
export function showBoneCard(contents, index, reach, buttons) {
  const bone = contents.bones[index];
  const children = contents.bones.filter((one) => one.parent === index).length;
  const pulled = [...reach.values()].reduce((sum, number) => sum + number, 0);
  const list = [
    ['Number', String(index)],
    ['Parent', bone.parent < 0 ? 'none' : contents.bones[bone.parent].name],
    ['Children', String(children)],
    [
      'Pulls at',
      reach.size
        ? `${vertices(pulled)} of ${count(reach.size, 'submesh', 'submeshes')}`
        : 'nothing',
    ],
  ];
  if (bone.light) list.push(['Carries', `a ${bone.light} light`]);
  fillCard(byId('bone-card'), bone.name, list, buttons);
}

export function showSubmeshCard(contents, submesh, buttons) {
  const list = [
    ['Mesh', contents.meshes[submesh.mesh].name],
    [
      'Material',
      submesh.materialName + (submesh.materialId === null ? '' : `, number ${submesh.materialId}`),
    ],
  ];
  if (submesh.materialFile) list.push(['File', submesh.materialFile]);
  list.push(['Vertices', whole(submesh.vertices)], ['Faces', whole(submesh.faces)]);
  const kinds = [
    ['map', 'colours'],
    ['normalMap', 'normals'],
    ['specularColorMap', 'specular'],
  ];
  const maps = kinds.filter(([map]) => submesh.object?.material[map]).map(([, word]) => word);
  list.push(['Textures', maps.join(', ') || 'none']);
  if (submesh.missing.length) list.push(['Not found', submesh.missing.join(', ')]);
  list.push(['Vertex colours', submesh.hasColors ? 'yes' : 'no, or all white']);
  if (submesh.morphs.length) list.push(['Morphs', String(submesh.morphs.length)]);
  fillCard(byId('mesh-card'), `Submesh ${submesh.number}: ${submesh.materialName}`, list, buttons);
}

/** How size compares, for the first words on a model. */
export const sizeWords = (size) => (size ? sizeAgainstAvatar(size).text : '');
