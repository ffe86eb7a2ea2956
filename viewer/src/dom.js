// The few things that the page needs of the document.

/** The element with an id; the page's own ids are always there. */
export const byId = (id) => document.getElementById(id);

/** An element with properties and children; names with a dash or role are attributes. */
export function make(tag, properties = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) {
    if (name in element && !name.includes('-')) element[name] = value;
    else element.setAttribute(name, value);
  }
  element.append(...children);
  return element;
}

// How long words stay in the view; a screen reader can go back to them ever after.
const FADE_MS = 6000;
let fading = 0;

/** Says something to screen readers, and for a while in a corner of the view. */
export function say(text) {
  const status = byId('status');
  status.textContent = text;
  status.classList.remove('faded');
  clearTimeout(fading);
  fading = setTimeout(() => status.classList.add('faded'), FADE_MS);
}
