// Numbers and the model's facts and notices as words.

/** The size of the platform's avatar, in the units of exported files. */
export const AVATAR_SIZE = 600;

// Below the one on every axis, or above the other on any, the exporter calls a mesh's size
// unlikely.
const SMALLEST_SIZE = 100;
const LARGEST_SIZE = 5000;

const wholeFormat = new Intl.NumberFormat('en-US', { maximumFractionDigits: 0 });
const oneDigit = new Intl.NumberFormat('en-US', { maximumFractionDigits: 1 });
const twoFigures = new Intl.NumberFormat('en-US', {
  minimumSignificantDigits: 2,
  maximumSignificantDigits: 2,
});

/** "1,204" */
export const whole = (number) => wholeFormat.format(number);

/** "1 bone", "1,204 bones"; the plural is the noun with an s unless given. */
export function count(number, noun, plural = `${noun}s`) {
  return `${whole(number)} ${number === 1 ? noun : plural}`;
}

export const vertices = (number) => count(number, 'vertex', 'vertices');

/** Seconds with two decimals: what a time slider can tell apart. */
export const seconds = (time) => `${time.toFixed(2)} s`;

/** A length in units: one decimal below 1000. */
export const units = (length) => (Math.abs(length) < 1000 ? oneDigit : wholeFormat).format(length);

const sum = (list, key) => list.reduce((total, one) => total + one[key], 0);

/** One line under the model's name. */
export function summary({ bones, meshes, submeshes, animations }) {
  const parts = [];
  if (meshes.length) {
    parts.push(count(meshes.length, 'mesh', 'meshes'), vertices(sum(submeshes, 'vertices')));
    parts.push(count(sum(submeshes, 'faces'), 'face'));
  }
  if (bones.length) parts.push(count(bones.length, 'bone'));
  if (animations.length) parts.push(count(animations.length, 'animation'));
  return parts.length ? parts.join(', ') : 'An empty model';
}

/**
 * The model's size against the avatar, size being width, depth and height in units.
 * @returns {{text: string, ratio: number}} the sentence, and the largest side over the avatar's
 */
export function sizeAgainstAvatar(size) {
  const largest = Math.max(...size);
  const ratio = largest / AVATAR_SIZE;
  let text = `${twoFigures.format(ratio)} times the platform's avatar of ${AVATAR_SIZE} units`;
  if (size.every((side) => Math.trunc(side) < SMALLEST_SIZE)) text += '; may be too small';
  if (size.some((side) => Math.trunc(side) > LARGEST_SIZE)) text += '; may be too large';
  return { text, ratio };
}

/** Pairs of a label and a value. `size` is null for a model without any extent. */
export function facts(contents, manifest, size) {
  const { bones, meshes, submeshes, animations, morphs } = contents;
  const materials = new Set(submeshes.map((submesh) => submesh.material)).size;
  const list = [
    ['Meshes', `${whole(meshes.length)} in ${count(submeshes.length, 'submesh', 'submeshes')}`],
    ['Vertices', whole(sum(submeshes, 'vertices'))],
    ['Faces', whole(sum(submeshes, 'faces'))],
    ['Materials', whole(materials)],
    ['Bones', whole(bones.length)],
    ['Morphs', whole(morphs.length)],
    ['Animations', whole(animations.length)],
  ];
  const lights = bones.filter((bone) => bone.light).length;
  if (lights) list.push(['Lights', whole(lights)]);
  if (manifest.skeleton?.file) list.push(['Skeleton file', manifest.skeleton.file]);
  if (size) {
    const [width, depth, height] = size.map(units);
    list.push(['Size in units', `${width} wide, ${depth} deep, ${height} high`]);
    list.push(['Compared', sizeAgainstAvatar(size).text]);
  }
  if (manifest.generator) list.push(['Made by', manifest.generator]);
  return list;
}

/**
 * Everything that somebody should know before trusting the picture.
 * @param {object} contents as of contentsOf
 * @param {object} manifest the program's words on the files
 * @param {{maxSkinSets: number, brokenPictures: number}} shown what this page can draw, and
 *   couldn't
 * @returns {{kind: 'warning'|'missing'|'note', text: string}[]}
 */
export function notices(contents, manifest, shown) {
  const list = (manifest.warnings ?? []).map((text) => ({ kind: 'warning', text: String(text) }));
  const missing = new Map();
  const addMissing = (material, file) => missing.set(`${material}\n${file}`, { material, file });
  for (const { material, file } of manifest.missingTextures ?? []) addMissing(material, file);
  // The model's own list says the same things again when both were made by one program.
  for (const { materialName, missing: files } of contents.submeshes) {
    for (const file of files) {
      const known = [...missing.values()].some((one) => one.file === file);
      if (!known) addMissing(materialName, file);
    }
  }
  for (const { material, file } of missing.values()) {
    const text = `Material ${material}: the texture ${file} wasn't found; a checker stands in for it.`;
    list.push({ kind: 'missing', text });
  }
  if (shown.brokenPictures) {
    const pictures = count(shown.brokenPictures, 'embedded picture');
    list.push({ kind: 'warning', text: `${pictures} couldn't be read; nothing is shown instead.` });
  }
  const most = Math.max(0, ...contents.submeshes.map((submesh) => submesh.skinSets));
  if (most > shown.maxSkinSets) {
    const drawn = shown.maxSkinSets * 4;
    const text = `Some vertices may hang on more than ${drawn} bones; the ${drawn} that pull most bend them here.`;
    list.push({ kind: 'note', text });
  }
  if (contents.submeshes.length === 0) {
    list.push({ kind: 'note', text: 'There are no meshes in this model.' });
  }
  return list;
}
