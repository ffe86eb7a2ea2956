// What the tests of the page share: pages made of the template, a browser, and pictures as numbers.

import { mkdtemp, rm, writeFile } from 'node:fs/promises';
import { existsSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';
import { deflateSync } from 'node:zlib';
import { chromium } from 'playwright-core';

// A large model takes its time without a graphics card.
const LOAD_MS = 120_000;

/** A page of a model as the program makes it. Throws when the template lacks one of its places. */
export function pageOf(template, glb, manifest = {}) {
  const put = (page, place, filled) => {
    if (!page.includes(place)) throw new Error(`no ${place}`);
    return page.replace(place, () => filled);
  };
  const element = (id, type, text = '') => `<script id="${id}" type="${type}">${text}</script>`;
  const model = ['veltrum-model', 'application/gltf-binary;deflate;base64'];
  const words = ['veltrum-manifest', 'application/json'];
  let page = put(
    template,
    element(...model),
    element(...model, deflateSync(glb).toString('base64')),
  );
  page = put(
    page,
    element(...words),
    element(...words, JSON.stringify(manifest).replace(/</g, '\\u003c')),
  );
  return put(
    page,
    '<title>veltrum</title>',
    `<title>${manifest.name ?? 'model'} - veltrum</title>`,
  );
}

/** Debian's Chromium, or the one that CHROMIUM names; it draws on the processor. */
function chromiumPath() {
  const path = process.env.CHROMIUM ?? '/usr/bin/chromium';
  if (!existsSync(path))
    throw new Error(`${path} isn't there: scripts/setup --viewer installs Chromium`);
  return path;
}

export class Browser {
  static async open() {
    const browser = new Browser();
    browser.folder = await mkdtemp(join(tmpdir(), 'veltrum-page-'));
    browser.chromium = await chromium.launch({
      executablePath: chromiumPath(),
      args: [
        '--no-sandbox',
        '--use-gl=angle',
        '--use-angle=swiftshader',
        '--enable-unsafe-swiftshader',
      ],
    });
    browser.eye = await browser.chromium.newPage();
    return browser;
  }

  async close() {
    await this.chromium.close();
    await rm(this.folder, { recursive: true });
  }

  /** Writes a page to disk and opens it from there. */
  async show(html, options) {
    const file = join(this.folder, `page-${Math.random().toString(36).slice(2)}.html`);
    await writeFile(file, html);
    return this.visit(file, options);
  }

  /**
   * Opens a page from disk and waits until its model stands or can't be shown. `page.faults`
   * collects errors on the console, exceptions, and requests that leave the page.
   */
  async visit(file, { hash = '', ...options } = {}) {
    const context = await this.chromium.newContext({
      viewport: { width: 1100, height: 720 },
      // Drawing on the processor takes its time by the pixel.
      deviceScaleFactor: 0.5,
      ...options,
    });
    const page = await context.newPage();
    page.faults = [];
    page.on('console', (message) => message.type() === 'error' && page.faults.push(message.text()));
    page.on('pageerror', (error) => page.faults.push(String(error)));
    page.on(
      'request',
      (request) => /^(file|blob|data):/.test(request.url()) || page.faults.push(request.url()),
    );
    await page.goto(pathToFileURL(file).href + hash);
    await page.waitForSelector(
      'body:is([data-state=ready], [data-state=empty], [data-state=trouble])',
      { state: 'attached', timeout: LOAD_MS },
    );
    return page;
  }

  /** The 3D view as bytes of red, green, blue and alpha, 64 by 64. What lies over it is hidden. */
  async look(page) {
    await page.evaluate(
      () => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))),
    );
    const style = '#status, #legend { visibility: hidden } #view3d { outline: none !important }';
    const png = await page.locator('#view3d').screenshot({ style });
    return this.eye.evaluate(async (data) => {
      const image = new Image();
      image.src = `data:image/png;base64,${data}`;
      await image.decode();
      const context = new OffscreenCanvas(64, 64).getContext('2d');
      context.drawImage(image, 0, 0, 64, 64);
      return [...context.getImageData(0, 0, 64, 64).data];
    }, png.toString('base64'));
  }
}

/** How many of two pictures' points differ visibly. */
export function difference(one, other) {
  let points = 0;
  for (let at = 0; at < one.length; at += 4) {
    if ([0, 1, 2].some((n) => Math.abs(one[at + n] - other[at + n]) > 12)) points++;
  }
  return points;
}

/** How many points differ visibly from the left top corner, where only background is. */
export function inkOf(picture) {
  return difference(
    picture,
    picture.map((_, at) => picture[at % 4]),
  );
}
