// A tree with one stop for the Tab key, moved through by the keys of a tree.

import { make } from './dom.js';
import { Outline } from './outline.js';

// Larger trees begin with their first levels only: nobody reads two thousand open rows.
const OPEN_AT_ONCE = 400;

export class TreeView {
  #outline = new Outline([]);
  #items = [];
  #rows = new Map();
  #focused = -1;
  #selected = -1;

  /**
   * @param {HTMLElement} element with the role of a tree
   * @param {HTMLInputElement} filter a field whose text narrows the tree
   * @param {(index: number) => void} onSelect called for a click or Enter on an item
   */
  constructor(element, filter, onSelect) {
    this.element = element;
    this.filter = filter;
    this.onSelect = onSelect;
    element.addEventListener('click', (event) => this.#click(event));
    element.addEventListener('keydown', (event) => this.#key(event));
    filter.addEventListener('input', () => {
      this.#outline.filter = filter.value;
      this.#draw();
    });
    filter.addEventListener('keydown', (event) => {
      if (event.key === 'ArrowDown' && this.#focused >= 0) {
        event.preventDefault();
        this.#rows.get(this.#focused)?.focus();
      }
    });
  }

  /** @param {{label: string, parent: number, note?: string, crossed?: boolean}[]} items */
  setItems(items) {
    this.#items = items;
    this.#outline = new Outline(items);
    if (items.length > OPEN_AT_ONCE) {
      items.forEach((item, index) => item.parent >= 0 && this.#outline.collapsed.add(index));
    }
    this.filter.value = '';
    this.#selected = -1;
    this.#focused = items.length ? 0 : -1;
    this.#draw();
  }

  /** Marks an item, -1 for none, and brings it into sight. */
  select(index) {
    this.#selected = index;
    if (index >= 0) {
      if (this.filter.value && !this.#rows.has(index)) {
        this.filter.value = '';
        this.#outline.filter = '';
      }
      this.#outline.reveal(index);
      this.#focused = index;
    }
    this.#draw();
    if (index >= 0) this.#rows.get(index)?.scrollIntoView({ block: 'nearest' });
  }

  /** Crosses out exactly the items that `isCrossed` is true for. */
  cross(isCrossed) {
    this.#items.forEach((item, index) => (item.crossed = isCrossed(index)));
    this.#draw();
  }

  #draw() {
    const hadFocus = this.element.contains(document.activeElement);
    const rows = this.#outline.rows();
    if (!rows.some((row) => row.index === this.#focused)) this.#focused = rows[0]?.index ?? -1;
    this.#rows = new Map(rows.map((row) => [row.index, this.#row(row)]));
    const nothing = this.#items.length ? 'Nothing has this in its name.' : 'There are none.';
    this.element.replaceChildren(...this.#rows.values());
    if (!rows.length) this.element.append(make('p', {}, nothing));
    if (hadFocus) this.#rows.get(this.#focused)?.focus();
  }

  #row({ index, level, position, size, hasChildren, expanded }) {
    const { label, note, crossed } = this.#items[index];
    const row = make('div', {
      className: crossed ? 'row hidden-part' : 'row',
      role: 'treeitem',
      tabIndex: index === this.#focused ? 0 : -1,
      'aria-level': level,
      'aria-posinset': position,
      'aria-setsize': size,
      'aria-selected': String(index === this.#selected),
    });
    row.dataset.index = index;
    row.style.setProperty('--level', Math.min(level - 1, 14));
    if (hasChildren) row.setAttribute('aria-expanded', String(expanded));
    row.append(make('span', {}, label));
    if (crossed) row.append(make('span', { className: 'unseen' }, ', hidden'));
    if (note) row.append(' ', make('small', {}, note));
    return row;
  }

  #click(event) {
    const row = event.target.closest('.row');
    if (!row) return;
    const index = Number(row.dataset.index);
    this.#focused = index;
    const sign = row.hasAttribute('aria-expanded') && this.#onSign(event, row);
    if (sign) {
      this.#outline.key(
        row.getAttribute('aria-expanded') === 'true' ? 'ArrowLeft' : 'ArrowRight',
        index,
      );
      this.#draw();
    } else {
      this.onSelect(index);
    }
    this.#rows.get(index)?.focus();
  }

  // The sign that opens and closes stands before the label.
  #onSign(event, row) {
    return event.clientX < row.querySelector('span').getBoundingClientRect().left;
  }

  #key(event) {
    if (event.ctrlKey || event.altKey || event.metaKey || this.#focused < 0) return;
    if (event.key === 'Enter' || event.key === ' ') {
      this.onSelect(this.#focused);
    } else {
      const next = this.#outline.key(event.key, this.#focused);
      if (next === null) return;
      this.#focused = next;
      this.#draw();
    }
    event.preventDefault();
    this.#rows.get(this.#focused)?.focus();
  }
}
