// The keys, in the order of the help. `run` names an action of the page; `view` marks what only
// works while the 3D view has the focus, where the arrow keys are free.

export const SHORTCUTS = [
  { keys: ['Space', 'k'], run: 'togglePlay', text: 'Play or pause' },
  { keys: [','], run: 'previousFrame', text: 'One frame back' },
  { keys: ['.'], run: 'nextFrame', text: 'One frame on' },
  { keys: ['l'], run: 'toggleLoop', text: 'Loop on or off' },
  { keys: ['['], run: 'slower', text: 'Slower' },
  { keys: [']'], run: 'faster', text: 'Faster' },
  { keys: ['s'], run: 'toggleSkeleton', text: 'Skeleton on or off' },
  { keys: ['n'], run: 'toggleNames', text: 'Bone names on or off' },
  { keys: ['w'], run: 'toggleWireframe', text: 'Wireframe on or off' },
  { keys: ['i'], run: 'toggleNormals', text: 'Normals as lines on or off' },
  { keys: ['g'], run: 'toggleGrid', text: 'Floor grid on or off' },
  { keys: ['r'], run: 'toggleRuler', text: 'Ruler of the avatar on or off' },
  { keys: ['1'], run: 'surfaceMaterial', text: 'Surface: materials' },
  { keys: ['2'], run: 'surfaceClay', text: 'Surface: clay' },
  { keys: ['3'], run: 'surfaceColors', text: 'Surface: vertex colours' },
  { keys: ['4'], run: 'surfaceWeights', text: 'Surface: weights of the picked bone' },
  { keys: ['5'], run: 'surfaceNormals', text: 'Surface: direction of normals' },
  { keys: ['f'], run: 'frameSelection', text: 'Frame the selection, or all' },
  { keys: ['a'], run: 'frameAll', text: 'Frame all' },
  { keys: ['v'], run: 'nextView', text: 'Next view: front, side, back, top' },
  { keys: ['h'], run: 'toggleHidden', text: 'Hide or show the selected submesh' },
  { keys: ['Escape'], run: 'clearSelection', text: 'Select nothing' },
  { keys: ['t'], run: 'nextTheme', text: 'Next look: as the system, light, dark' },
  { keys: ['?'], run: 'showHelp', text: 'This help' },
  { keys: ['ArrowLeft'], run: 'orbitLeft', text: 'Orbit left', view: true },
  { keys: ['ArrowRight'], run: 'orbitRight', text: 'Orbit right', view: true },
  { keys: ['ArrowUp'], run: 'orbitUp', text: 'Orbit up', view: true },
  { keys: ['ArrowDown'], run: 'orbitDown', text: 'Orbit down', view: true },
  { keys: ['Shift+ArrowLeft'], run: 'panLeft', text: 'Move left', view: true },
  { keys: ['Shift+ArrowRight'], run: 'panRight', text: 'Move right', view: true },
  { keys: ['Shift+ArrowUp'], run: 'panUp', text: 'Move up', view: true },
  { keys: ['Shift+ArrowDown'], run: 'panDown', text: 'Move down', view: true },
  { keys: ['+', '='], run: 'zoomIn', text: 'Closer', view: true },
  { keys: ['-'], run: 'zoomOut', text: 'Farther', view: true },
];

// Shift is part of what a sign is typed with, so that only named keys tell it apart.
function nameOf({ key, shiftKey }) {
  const name = key === ' ' ? 'Space' : key.length === 1 ? key.toLowerCase() : key;
  return shiftKey && key.length > 1 ? `Shift+${name}` : name;
}

/**
 * The action of a key press, or null.
 * @param {{key: string, shiftKey: boolean, ctrlKey: boolean, altKey: boolean, metaKey: boolean}}
 *   event
 * @param {'view'|'button'|'letters'|'text'|'page'} focus what has the focus: the 3D view; a control
 *   that the space bar presses; one that jumps to typed letters; a field for text; anything else
 */
export function actionOf(event, focus) {
  if (event.ctrlKey || event.altKey || event.metaKey || focus === 'text') return null;
  const name = nameOf(event);
  const shortcut = SHORTCUTS.find((one) => one.keys.includes(name));
  if (!shortcut || (shortcut.view && focus !== 'view')) return null;
  if (focus === 'button' && name === 'Space') return null;
  if (focus === 'letters' && name !== 'Escape' && name !== '?') return null;
  return shortcut.run;
}
