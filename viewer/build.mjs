// Makes the page as one HTML file: script and style inlined, nothing loaded from elsewhere.
//
//   node build.mjs [OUT]      OUT is dist/viewer.html when not given
//
// The two empty elements veltrum-model and veltrum-manifest and the title are filled in by the
// program that makes the page of a model.

import { mkdir, readFile, writeFile } from 'node:fs/promises';
import { dirname, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';

const here = dirname(fileURLToPath(import.meta.url));

// What a model's page may cost on top of the model, in bytes.
const MAX_BYTES = 1_400_000;

// Each of these stands in the page exactly once, since the program replaces its one occurrence.
const PLACES = [
  '<title>veltrum</title>',
  '<script id="veltrum-model" type="application/gltf-binary;deflate;base64"></script>',
  '<script id="veltrum-manifest" type="application/json"></script>',
];

async function bundle(entry, options) {
  const result = await build({
    entryPoints: [resolve(here, 'src', entry)],
    bundle: true,
    minify: true,
    write: false,
    target: ['chrome100', 'firefox113', 'safari16.4'],
    charset: 'ascii',
    // The notices of the libraries' licences have to stay in the copy.
    legalComments: 'inline',
    ...options,
  });
  return result.outputFiles[0].text;
}

export async function buildPage() {
  const [template, style, script] = await Promise.all([
    readFile(resolve(here, 'src/viewer.html'), 'utf8'),
    bundle('style.css', {}),
    bundle('main.js', { format: 'iife' }),
  ]);
  // Either text would end the script element, or hide its end.
  if (/<\/script|<!--/i.test(script))
    throw new Error('the script holds a text that ends it in HTML');
  const page = template
    .replace('<link rel="stylesheet" href="style.css" />', () => `<style>${style}</style>`)
    .replace('<script type="module" src="main.js"></script>', () => `<script>${script}</script>`);
  for (const place of PLACES) {
    if (page.split(place).length !== 2) throw new Error(`the page must hold ${place} once`);
  }
  if (/(?:src|href)="(?!#|data:)/.test(page.replace(script, ''))) {
    throw new Error('the page refers to another file');
  }
  if (page.length > MAX_BYTES) throw new Error(`the page has ${page.length} bytes`);
  return page;
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
  const out = resolve(process.argv[2] ?? resolve(here, 'dist/viewer.html'));
  const page = await buildPage();
  await mkdir(dirname(out), { recursive: true });
  await writeFile(out, page);
  console.log(`${out}: ${page.length} bytes`);
}
