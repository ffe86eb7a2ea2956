// Shows what the page holds, or says why there is nothing to see.

import { byId } from './dom.js';
import { takeEmbedded } from './embedded.js';
import { Page } from './page.js';
import { teachSkinSets } from './skin_sets.js';

async function start() {
  document.body.classList.toggle('picture', location.hash === '#picture');
  teachSkinSets();
  let page;
  try {
    page = new Page();
  } catch (error) {
    document.body.dataset.state = 'trouble';
    byId('trouble').hidden = false;
    byId('trouble-text').textContent =
      `This browser can't draw in three dimensions (WebGL 2): ${error.message}`;
    return;
  }
  let embedded;
  try {
    embedded = await takeEmbedded(document);
  } catch (error) {
    page.showTrouble(`The page is damaged: ${error.message}`);
    return;
  }
  if (!embedded.bytes) page.waitForFile();
  else
    await page.show(
      embedded.bytes,
      embedded.manifest,
      embedded.manifest.name ?? document.title.replace(/ - veltrum$/, ''),
    );
}

start();
