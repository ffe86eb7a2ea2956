// Tabs of which one shows its panel: arrow keys go from one to the next.

export class Tabs {
  constructor(list) {
    this.tabs = [...list.querySelectorAll('[role=tab]')];
    for (const tab of this.tabs) tab.addEventListener('click', () => this.#open(tab));
    list.addEventListener('keydown', (event) => {
      const at = this.tabs.indexOf(event.target);
      const last = this.tabs.length - 1;
      const to = {
        ArrowRight: at === last ? 0 : at + 1,
        ArrowLeft: at ? at - 1 : last,
        Home: 0,
        End: last,
      }[event.key];
      if (at < 0 || to === undefined) return;
      event.preventDefault();
      this.#open(this.tabs[to]);
      this.tabs[to].focus();
    });
  }

  /** Opens the tab of a panel by the panel's id. */
  open(panel) {
    this.#open(this.tabs.find((tab) => tab.getAttribute('aria-controls') === panel));
  }

  #open(chosen) {
    for (const tab of this.tabs) {
      const open = tab === chosen;
      tab.setAttribute('aria-selected', String(open));
      tab.tabIndex = open ? 0 : -1;
      document.getElementById(tab.getAttribute('aria-controls')).hidden = !open;
    }
  }
}
