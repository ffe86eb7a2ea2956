// The table of keys.

import { make } from './dom.js';
import { SHORTCUTS } from './shortcuts.js';

const nameOf = (key) => (key.length === 1 ? key.toUpperCase() : key);

/** Fills the body of a table with a row for each shortcut. */
export function fillHelp(body) {
  const rows = SHORTCUTS.map(({ keys, text, view }) => {
    const names = keys.flatMap((key, n) => [n ? ' or ' : '', make('kbd', {}, nameOf(key))]);
    const where = view ? ' (in the 3D view)' : '';
    return make('tr', {}, make('td', {}, ...names), make('td', {}, text + where));
  });
  body.replaceChildren(...rows);
}
