// The page in a real browser, opened from disk.

import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import axe from 'axe-core';
import { buildPage } from '../build.mjs';
import { packGlb, sampleGlb } from './sample.mjs';
import { Browser, difference, inkOf, pageOf } from './support.mjs';

// What changes more points than this of 64 by 64 can be seen.
const VISIBLE = 20;

const manifest = {
  name: 'Column & <friends>',
  warnings: ['Animation Walk.xaf names the bone Tail.'],
  missingTextures: [{ material: 'Cloth', file: 'cloth.png' }],
};

let browser;
let template;
before(async () => {
  template = await buildPage();
  browser = await Browser.open();
});
after(() => browser?.close());

const showSample = (options = {}, model = {}) =>
  browser.show(pageOf(template, sampleGlb(model), manifest), options);

/** Sets a slider as a hand does. */
const slide = (page, selector, value) => page.locator(selector).fill(String(value));

async function withPage(page, run) {
  await run(page);
  assert.deepEqual(page.faults, []);
  await page.context().close();
}

/** A test of the sample's page. */
const shown = (title, options, run) =>
  test(title, async () => withPage(await showSample(options), run));

shown('the model stands lit and framed, with all notices in words', {}, async (page) => {
  const picture = await browser.look(page);
  const ink = inkOf(picture);
  assert.ok(ink > 200 && ink < 3000, `${ink} of 4096 points`);
  assert.equal(await page.title(), 'Column & <friends> - veltrum');
  assert.equal(await page.textContent('h1'), 'Column & <friends>');
  assert.match(
    await page.textContent('#summary'),
    /1 mesh, 234 vertices, 384 faces, 3 bones, 2 animations/,
  );
  const notices = await page.locator('#notices li').allTextContents();
  assert.equal(notices.length, 2);
  assert.match(notices[0], /Walk\.xaf names the bone Tail/);
  assert.match(notices[1], /Material Cloth: the texture cloth\.png wasn't found/);
  assert.match(
    await page.textContent('#facts'),
    /140 wide, 140 deep, 600 high.*1\.0 times the platform's avatar/,
  );
});

shown('an animation moves the picture, and goes on when played', {}, async (page) => {
  const rest = await browser.look(page);
  await page.click('#tab-motion');
  await page.getByLabel('Bend').check();
  await slide(page, '#time', 0.5);
  const half = await browser.look(page);
  await slide(page, '#time', 1);
  const full = await browser.look(page);
  assert.ok(difference(rest, half) > VISIBLE);
  assert.ok(difference(half, full) > VISIBLE);
  await page.getByLabel('Rest pose').check();
  assert.ok(difference(rest, await browser.look(page)) <= VISIBLE, 'back at rest');
  await page.getByLabel('Bend').check();
  await slide(page, '#time', 0);
  await page.click('#play');
  assert.equal(await page.getAttribute('#play', 'aria-label'), 'Pause');
  await page.waitForFunction(() => parseFloat(document.getElementById('time').value) > 0.2);
  await page.click('#play');
  const stopped = await page.inputValue('#time');
  await page.waitForTimeout(200);
  assert.equal(await page.inputValue('#time'), stopped);
});

shown('a morph slider moves the picture, holds, and is released', {}, async (page) => {
  const rest = await browser.look(page);
  await page.click('#tab-motion');
  await slide(page, '#morph-0', 1);
  const bulged = await browser.look(page);
  assert.ok(difference(rest, bulged) > VISIBLE);
  await page.getByLabel('Breathe').check();
  await slide(page, '#time', 0.25);
  assert.ok(difference(bulged, await browser.look(page)) <= VISIBLE, 'held');
  await page.click('#release');
  assert.equal(await page.inputValue('#morph-0'), '0.5');
  await page.locator('#animations').getByLabel('None').check();
  assert.equal(await page.inputValue('#morph-0'), '0');
  assert.ok(difference(rest, await browser.look(page)) <= VISIBLE);
});

shown('each way to show the surface and what lies over it is seen', {}, async (page) => {
  const rest = await browser.look(page);
  const seen = [rest];
  for (const way of ['clay', 'colors', 'normals', 'weights']) {
    await page.selectOption('#surface', way);
    const picture = await browser.look(page);
    for (const other of seen) assert.ok(difference(other, picture) > VISIBLE, way);
    seen.push(picture);
  }
  await page.click('#tab-bones');
  await page.getByRole('treeitem', { name: 'Spine 1' }).click();
  // The mark of the bone itself is thin; the skin around it is not.
  const skin = difference(seen.at(-1), await browser.look(page));
  assert.ok(skin > 200, `weights of a bone: ${skin} points`);
  await page.keyboard.press('Escape');
  await page.selectOption('#surface', 'material');
  for (const toggle of ['skeleton', 'names', 'wireframe', 'normals', 'grid', 'ruler']) {
    const button = page.locator(`[data-toggle=${toggle}]`);
    const before = await button.getAttribute('aria-pressed');
    await button.click();
    assert.ok(difference(rest, await browser.look(page)) > 2, toggle);
    assert.notEqual(await button.getAttribute('aria-pressed'), before);
    await button.click();
  }
  // The ruler is framed as well when it comes.
  await page.click('#frame');
  assert.ok(difference(rest, await browser.look(page)) <= VISIBLE, 'all off again');
});

shown('a click in the view selects the submesh or the bone in the lists', {}, async (page) => {
  const box = await page.locator('#view3d').boundingBox();
  const click = (share) => page.mouse.click(box.x + box.width / 2, box.y + box.height * share);
  const selected = () =>
    page.locator('[role=treeitem][aria-selected=true]:visible').allTextContents();
  await click(0.7);
  assert.deepEqual(await selected(), ['0 Skin 192 faces']);
  await click(0.3);
  assert.deepEqual(await selected(), ['1 Cloth 192 faces']);
  await page.click('text=Hide');
  await click(0.3);
  assert.deepEqual(await selected(), [], 'a hidden submesh is not hit');
  await page.click('[data-toggle=skeleton]');
  await click(0.41);
  assert.deepEqual(await selected(), ['Spine 1']);
  await page.click('[data-toggle=skeleton]');
  await page.keyboard.press('4');
  await click(0.9);
  assert.deepEqual(await selected(), ['Hips'], 'the bone that pulls most at the skin');
  await page.mouse.click(box.x + 5, box.y + 60);
  assert.deepEqual(await selected(), []);
});

shown('everything can be done by the keyboard alone', {}, async (page) => {
  const focused = () =>
    page.evaluate(() => document.activeElement.id || document.activeElement.textContent);
  const press = (...keys) =>
    keys.reduce((done, key) => done.then(() => page.keyboard.press(key)), Promise.resolve());
  // An animation has to be chosen for the time to mean something.
  await press('k', 'k');
  const reached = [];
  for (let n = 0; n < 40 && !(n && reached[0] === reached.at(-1) && n > 1); n++) {
    await press('Tab');
    reached.push(await focused());
  }
  const stops = 'theme help-button surface view frame view3d play time loop speed tab-overview';
  for (const id of stops.split(' ')) assert.ok(reached.includes(id), `${id} by Tab`);
  await press('g');
  const rest = await browser.look(page);
  await page.focus('#view3d');
  await press('ArrowLeft', 'ArrowLeft', 'ArrowUp');
  const turned = await browser.look(page);
  assert.ok(difference(rest, turned) > VISIBLE, 'orbit');
  await press('-', '-', '-');
  assert.ok(inkOf(await browser.look(page)) < inkOf(turned), 'farther');
  await press('Space');
  assert.equal(await page.getAttribute('#play', 'aria-label'), 'Pause');
  await press('k', '.');
  assert.match(await page.textContent('#status'), /^0\.\d\d s$/);
  await page.focus('#tab-overview');
  await press('ArrowRight', 'ArrowRight');
  assert.equal(await focused(), 'tab-bones');
  await press('Tab', 'Tab', 'ArrowDown', 'Enter');
  assert.equal(await page.textContent('#bone-card h2'), 'Spine 1');
  assert.equal(await page.textContent('#status'), 'Bone Spine 1 selected.');
  await press('ArrowLeft', 'ArrowLeft', 'ArrowLeft');
  const rows = page.getByRole('treeitem').filter({ visible: true });
  assert.equal(await rows.count(), 1, 'the tree is closed');
  await page.focus('#view3d');
  await press('?');
  assert.ok(await page.locator('#help').isVisible());
  await page.uncheck('#single-keys');
  await press('Escape', 's');
  const pressed = await page.getAttribute('[data-toggle=skeleton]', 'aria-pressed');
  assert.equal(pressed, 'false', 'keys are off');
});

test('eight bones a vertex bend it, and leave it in place at rest', async () => {
  const [rest, bent] = [[], []];
  for (const moreBones of [false, true]) {
    await withPage(await showSample({}, { moreBones }), async (page) => {
      rest.push(await browser.look(page));
      await page.click('#tab-motion');
      await page.getByLabel('Bend').check();
      await slide(page, '#time', 1);
      bent.push(await browser.look(page));
    });
  }
  assert.ok(difference(...rest) <= VISIBLE);
  assert.ok(difference(...bent) > VISIBLE);
});

test('nothing stands in the way of a screen reader, in light and in dark', async () => {
  for (const colorScheme of ['light', 'dark']) {
    await withPage(await showSample({ colorScheme }), async (page) => {
      await page.evaluate(axe.source);
      const audit = async (place) => {
        const { violations } = await page.evaluate(() => globalThis.axe.run());
        const found = violations.flatMap(({ id, nodes }) => nodes.map((n) => `${id}: ${n.html}`));
        assert.deepEqual(found, [], `${place}, ${colorScheme}`);
      };
      await audit('overview');
      await page.click('#tab-motion');
      await page.getByLabel('Bend').check();
      await audit('motion');
      await page.click('#tab-bones');
      await page.getByRole('treeitem', { name: 'Spine 1' }).click();
      await audit('bones');
      await page.click('#tab-meshes');
      await page.getByRole('treeitem', { name: '0 Skin' }).click();
      await page.click('text=Hide');
      await audit('meshes');
      await page.click('#help-button');
      await audit('help');
    });
  }
});

shown('light and dark follow the system and the switch', { colorScheme: 'dark' }, async (page) => {
  const [dark] = await browser.look(page);
  await page.selectOption('#theme', 'light');
  const [light] = await browser.look(page);
  assert.ok(light - dark > 100, `${dark} and ${light}`);
  assert.equal(await page.getAttribute('html', 'data-theme'), 'light');
});

const NARROW = { viewport: { width: 380, height: 760 } };
shown('a narrow page shows all of it without scrolling sideways', NARROW, async (page) => {
  assert.ok(inkOf(await browser.look(page)) > 200);
  const width = await page.evaluate(() => document.documentElement.scrollWidth);
  assert.ok(width <= NARROW.viewport.width, `${width}`);
});

test('without a model the page asks for one, and shows what it is given', async () => {
  const page = await browser.show(template);
  assert.ok(await page.locator('#drop').isVisible());
  const file = { name: 'Dropped.glb', mimeType: 'model/gltf-binary', buffer: sampleGlb() };
  await page.setInputFiles('#file', file);
  await page.waitForSelector('body[data-state=ready]');
  assert.equal(await page.textContent('h1'), 'Dropped.glb');
  assert.ok(inkOf(await browser.look(page)) > 200);
  await withPage(page, () => {});
});

test('damaged models and models of bones only are told in words', async () => {
  const cut = await browser.show(pageOf(template, sampleGlb().subarray(0, 900)));
  assert.equal(await cut.getAttribute('body', 'data-state'), 'trouble');
  assert.match(await cut.textContent('#trouble'), /isn't a whole glTF model/);
  await cut.context().close();
  const json = {
    asset: { version: '2.0' },
    scene: 0,
    scenes: [{ nodes: [0] }],
    nodes: [
      { children: [1] },
      { name: 'Root', children: [2] },
      { name: 'Tip', translation: [0, 0, 200] },
    ],
    skins: [{ joints: [1, 2] }],
  };
  const bones = await browser.show(pageOf(template, packGlb(json, Buffer.alloc(0))));
  await withPage(bones, async (page) => {
    assert.equal(await page.getAttribute('body', 'data-state'), 'ready');
    assert.match(await page.textContent('#notices'), /There are no meshes/);
    const bare = await browser.look(page);
    await page.keyboard.press('s');
    assert.ok(difference(bare, await browser.look(page)) > VISIBLE);
  });
});

const PICTURE = { hash: '#picture', viewport: { width: 320, height: 240 } };
shown('only the picture is shown for whoever photographs pages', PICTURE, async (page) => {
  assert.equal(await page.locator('button:visible, aside:visible, header:visible').count(), 0);
  const box = await page.locator('#view3d').boundingBox();
  assert.deepEqual(box, { x: 0, y: 0, ...PICTURE.viewport });
});
