// Opens pages of models in Chromium: nothing is wrong on the console, the picture isn't blank, an
// animation moves it, and so does a morph.
//
//   node test/check-page.mjs PAGE.html...

import { resolve } from 'node:path';
import { Browser, difference, inkOf } from './support.mjs';

// What changes more points than this of 64 by 64 can be seen; a morph may move no more than lips.
const BLANK = 40;
const MOVED = 0;

// A page is opened until this many of its animations and morphs have been tried; some do nothing
// visible.
const TRIES = 10;

async function anyMoves(browser, page, inputs, move) {
  for (const input of inputs.slice(0, TRIES)) {
    const before = await browser.look(page);
    await move(input);
    if (difference(before, await browser.look(page)) > MOVED) return true;
  }
  return inputs.length === 0;
}

async function faultsOf(browser, file) {
  const page = await browser.visit(resolve(file));
  const state = await page.getAttribute('body', 'data-state');
  if (state !== 'ready') return [`the page says: ${await page.innerText('#stage')}`];
  const faults = [];
  if (inkOf(await browser.look(page)) < BLANK) faults.push('the picture is blank');
  await page.click('#tab-motion');
  const clips = await page.locator('#animations input:not([value="-1"])').all();
  const morphs = await page.locator('#morphs input').all();
  const play = async (clip) => {
    await clip.check();
    const duration = Number(await page.getAttribute('#time', 'max'));
    await page.locator('#time').fill(String(Math.round(duration * 400) / 1000));
  };
  if (!(await anyMoves(browser, page, clips, play))) faults.push('no animation moves the picture');
  for (const none of await page.locator('#animations input[value="-1"]').all()) await none.check();
  if (!(await anyMoves(browser, page, morphs, (morph) => morph.fill('1'))))
    faults.push('no morph moves the picture');
  faults.push(...page.faults);
  await page.context().close();
  return faults;
}

const browser = await Browser.open();
try {
  for (const file of process.argv.slice(2)) {
    const faults = await faultsOf(browser, file).catch((error) => [error.message]);
    console.log(`${file}: ${faults.length ? 'bad' : 'good'}`);
    for (const fault of faults) console.log(`  ${fault}`);
    if (faults.length) process.exitCode = 1;
  }
} finally {
  await browser.close();
}
