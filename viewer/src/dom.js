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

/** Says something to screen readers, and in a corner of the view. */
export function say(text) {
  byId('status').textContent = text;
}
