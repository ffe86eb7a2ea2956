// A tree as the list of its visible rows, and what the keys of a tree do to it. Letters do nothing:
// they are the page's own keys, and a field beside each tree finds names.

export class Outline {
  /** @param {{label: string, parent: number}[]} items parent: an index into the list, or -1 */
  constructor(items) {
    this.items = items;
    this.children = items.map(() => []);
    this.roots = [];
    items.forEach((item, index) => {
      (this.children[item.parent] ?? this.roots).push(index);
    });
    this.collapsed = new Set();
    this.filter = '';
  }

  /** The visible rows from the top: index of the item, level from 1, place among its siblings. */
  rows() {
    const wanted = this.#wanted();
    const rows = [];
    const siblings = (list) => (wanted ? list.filter((index) => wanted.has(index)) : list);
    // A stack, not recursion: chains of bones can be long.
    const stack = [];
    const push = (list, level) => {
      const shown = siblings(list);
      for (let n = shown.length - 1; n >= 0; n--) {
        stack.push({ index: shown[n], level, position: n + 1, size: shown.length });
      }
    };
    push(this.roots, 1);
    while (stack.length) {
      const row = stack.pop();
      const hasChildren = siblings(this.children[row.index]).length > 0;
      const expanded = hasChildren && (wanted !== null || !this.collapsed.has(row.index));
      rows.push({ ...row, hasChildren, expanded });
      if (expanded) push(this.children[row.index], row.level + 1);
    }
    return rows;
  }

  /** Items that match the filter and all above them; null when nothing is filtered. */
  #wanted() {
    const text = this.filter.trim().toLowerCase();
    if (!text) return null;
    const wanted = new Set();
    this.items.forEach((item, index) => {
      if (!item.label.toLowerCase().includes(text)) return;
      for (let up = index; up >= 0 && !wanted.has(up); up = this.items[up].parent) wanted.add(up);
    });
    return wanted;
  }

  /** Opens everything above an item, so that it has a row. */
  reveal(index) {
    for (let up = this.items[index].parent; up >= 0; up = this.items[up].parent) {
      this.collapsed.delete(up);
    }
  }

  /**
   * What a key does at a row: opens or closes the row in place, and tells the item to go to.
   * @returns {number|null} the item that has the focus then; null when the key means nothing here
   */
  key(key, focused) {
    const rows = this.rows();
    const at = rows.findIndex((row) => row.index === focused);
    if (at < 0) return rows.length ? rows[0].index : null;
    const row = rows[at];
    const last = rows.length - 1;
    switch (key) {
      case 'ArrowDown':
        return rows[Math.min(at + 1, last)].index;
      case 'ArrowUp':
        return rows[Math.max(at - 1, 0)].index;
      case 'PageDown':
        return rows[Math.min(at + 10, last)].index;
      case 'PageUp':
        return rows[Math.max(at - 10, 0)].index;
      case 'Home':
        return rows[0].index;
      case 'End':
        return rows[last].index;
      case 'ArrowRight':
        if (row.hasChildren && !row.expanded) this.collapsed.delete(focused);
        else if (row.expanded) return rows[at + 1].index;
        return focused;
      case 'ArrowLeft':
        if (row.expanded && !this.filter) this.collapsed.add(focused);
        else if (this.items[focused].parent >= 0) return this.items[focused].parent;
        return focused;
      case '*':
        this.collapsed.clear();
        return focused;
      default:
        return null;
    }
  }
}
