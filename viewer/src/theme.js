// Light and dark: as the system says, or as somebody has chosen on this computer.

const KEY = 'veltrum-look';
const LOOKS = ['auto', 'light', 'dark'];

const systemIsDark = matchMedia('(prefers-color-scheme: dark)');

// Pages from disk may not be allowed to keep anything.
function remembered() {
  try {
    return localStorage.getItem(KEY);
  } catch {
    return null;
  }
}

function remember(look) {
  try {
    localStorage.setItem(KEY, look);
  } catch {
    // Then it holds for this time only.
  }
}

export class Theme {
  /**
   * @param {HTMLSelectElement} select
   * @param {() => void} onChange called when colours have changed
   */
  constructor(select, onChange) {
    this.select = select;
    this.onChange = onChange;
    const look = remembered();
    select.value = LOOKS.includes(look) ? look : 'auto';
    select.addEventListener('change', () => this.#choose());
    systemIsDark.addEventListener('change', () => this.#apply());
    this.#mark();
  }

  /** Goes on to the next look and returns its name. */
  next() {
    this.select.selectedIndex = (this.select.selectedIndex + 1) % LOOKS.length;
    this.#choose();
    return this.select.selectedOptions[0].textContent;
  }

  /** A colour of the style sheet, by its name without dashes. */
  color(name) {
    return getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();
  }

  #choose() {
    remember(this.select.value);
    this.#apply();
  }

  #apply() {
    this.#mark();
    this.onChange();
  }

  #mark() {
    const { value } = this.select;
    const dark = value === 'dark' || (value === 'auto' && systemIsDark.matches);
    document.documentElement.dataset.theme = dark ? 'dark' : 'light';
  }
}
