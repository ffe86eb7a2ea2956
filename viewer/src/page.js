// Everything of the page wired together: the view, the lists, the tools and the keys.

import { Color } from 'three';
import { byId, make, say } from './dom.js';
import { fillHelp } from './help.js';
import { Model } from './model.js';
import { Motion } from './motion.js';
import { showBoneCard, showFacts, showNotices, showSubmeshCard, sizeWords } from './overview.js';
import { Picker } from './picker.js';
import { Player } from './player.js';
import { actionOf } from './shortcuts.js';
import { SkeletonView } from './skeleton_view.js';
import { MAX_SKIN_SETS } from './skin_sets.js';
import { Stage, VIEWS } from './stage.js';
import { HEAT, SURFACES, Surface } from './surface.js';
import { Tabs } from './tabs.js';
import { Theme } from './theme.js';
import { TreeView } from './tree.js';
import { count, notices, summary } from './words.js';

// A press that moves farther than this, in pixels, orbits and doesn't pick.
const CLICK_SLACK = 5;

const NOTHING = { kind: 'none', index: -1 };

export class Page {
  constructor() {
    this.stage = new Stage(byId('view3d'), (step) => this.motion?.tick(step) ?? false);
    this.picker = new Picker(this.stage);
    this.motion = new Motion(() => this.stage.invalidate());
    this.tabs = new Tabs(document.querySelector('[role=tablist]'));
    this.boneTree = new TreeView(byId('bone-tree'), byId('bone-filter'), (index) =>
      this.select('bone', index),
    );
    this.meshTree = new TreeView(byId('mesh-tree'), byId('mesh-filter'), (index) =>
      this.#selectMeshRow(index),
    );
    this.theme = new Theme(byId('theme'), () => this.#applyColors());
    this.toggles = {
      skeleton: false,
      names: false,
      wireframe: false,
      normals: false,
      grid: true,
      ruler: false,
      lights: false,
    };
    this.model = null;
    this.selection = NOTHING;
    this.#wireTools();
    this.#wireView();
    this.#wireKeys();
    this.#wireFiles();
    this.#applyColors();
  }

  #state(state) {
    document.body.dataset.state = state;
    byId('drop').hidden = state !== 'empty';
    byId('trouble').hidden = state !== 'trouble';
  }

  /** Waits for a file. */
  waitForFile() {
    this.#state('empty');
    byId('summary').textContent = 'No model yet';
  }

  /** Says in words why there is nothing to see. */
  showTrouble(text) {
    this.#state('trouble');
    byId('trouble-text').textContent = text;
  }

  /** Shows a .glb in place of what was shown before. */
  async show(bytes, manifest, name) {
    this.#state('loading');
    say('Loading the model.');
    let model;
    try {
      model = await Model.load(
        bytes.buffer.slice(bytes.byteOffset, bytes.byteOffset + bytes.byteLength),
      );
    } catch (error) {
      this.showTrouble(`The file isn't a whole glTF model: ${error.message}`);
      return;
    }
    this.#close();
    this.model = model;
    const { contents } = model;
    const size = model.size ?? manifest.size ?? null;
    byId('name').textContent = name;
    byId('summary').textContent = summary(contents);
    this.stage.canvas.setAttribute('aria-label', `3D view of ${name}`);
    this.stage.scene.add(model.scene);
    this.surface = new Surface(model);
    this.skeletonView = new SkeletonView(model, model.submeshes.length + 1);
    this.player = new Player(model);
    this.motion.setPlayer(this.player);
    this.boneTree.setItems(
      contents.bones.map(({ name: label, parent, light }) => ({
        label,
        parent,
        note: light && 'light',
      })),
    );
    this.#fillMeshTree();
    showNotices(
      notices(contents, manifest, {
        maxSkinSets: MAX_SKIN_SETS,
        brokenPictures: model.brokenPictures,
      }),
    );
    showFacts(contents, manifest, size);
    document.querySelector('[data-toggle=lights]').hidden = model.lights.length === 0;
    this.select('none', -1);
    this.#applyColors();
    for (const name of Object.keys(this.toggles)) this.toggle(name, this.toggles[name], false);
    this.paint(byId('surface').value, false);
    this.stage.setSubject(model.restBox);
    this.stage.draw();
    this.#state('ready');
    say(`${name}: ${summary(contents)}. ${sizeWords(size)}`);
  }

  #close() {
    if (!this.model) return;
    this.player.dispose();
    this.surface.dispose();
    this.skeletonView.dispose();
    this.model.dispose();
  }

  // --- Lists -------------------------------------------------------------------------------------

  // Meshes with their submeshes below; a row knows the submesh it stands for.
  #fillMeshTree() {
    this.meshRows = [];
    for (const mesh of this.model.contents.meshes) {
      const parent = this.meshRows.length;
      this.meshRows.push({ label: mesh.name, parent: -1, submesh: mesh.submeshes[0] ?? -1 });
      for (const submesh of mesh.submeshes) {
        const { number, materialName, faces } = this.model.submeshes[submesh];
        this.meshRows.push({
          label: `${number} ${materialName}`,
          parent,
          submesh,
          note: count(faces, 'face'),
        });
      }
    }
    this.meshTree.setItems(this.meshRows);
  }

  #rowOfSubmesh(submesh) {
    return this.meshRows.findIndex((row) => row.parent >= 0 && row.submesh === submesh);
  }

  #selectMeshRow(row) {
    if (this.meshRows[row].submesh >= 0) this.select('submesh', this.meshRows[row].submesh);
  }

  // --- Selection ---------------------------------------------------------------------------------

  /** Selects a bone or a submesh by its index, in the lists and in the view. */
  select(kind, index) {
    this.selection = { kind, index };
    const bone = kind === 'bone' ? index : -1;
    const submesh = kind === 'submesh' ? index : -1;
    this.surface.mark(submesh);
    this.skeletonView.pick(bone);
    // The weights of the last bone stay while one looks at submeshes.
    if (bone >= 0 || kind === 'none') this.surface.pickBone(bone);
    if (bone >= 0) this.heatBone = bone;
    if (kind === 'none') this.heatBone = -1;
    this.boneTree.select(bone);
    this.meshTree.select(submesh >= 0 ? this.#rowOfSubmesh(submesh) : -1);
    byId('bone-card').hidden = bone < 0;
    byId('mesh-card').hidden = submesh < 0;
    if (bone >= 0) this.#showBone(bone);
    if (submesh >= 0) this.#showSubmesh(submesh);
    this.#showLegend();
    this.stage.invalidate();
  }

  #showBone(index) {
    this.tabs.open('bones');
    showBoneCard(this.model.contents, index, this.model.reachOf(index), [
      ['Frame', () => this.frameSelection()],
      ['Show its weights', () => this.paint('weights')],
      ['Select nothing', () => this.clearSelection()],
    ]);
    say(`Bone ${this.model.contents.bones[index].name} selected.`);
  }

  #showSubmesh(index) {
    this.tabs.open('meshes');
    const submesh = this.model.submeshes[index];
    const hidden = submesh.object?.visible === false;
    showSubmeshCard(this.model.contents, submesh, [
      ['Frame', () => this.frameSelection()],
      [hidden ? 'Show' : 'Hide', () => this.toggleHidden()],
      ['Show only this', () => this.#hide((one) => one !== index)],
      ['Show all', () => this.#hide(() => false)],
      ['Select nothing', () => this.clearSelection()],
    ]);
    say(
      `Submesh ${submesh.number} with material ${submesh.materialName} selected${hidden ? ', hidden' : ''}.`,
    );
  }

  clearSelection() {
    if (this.selection.kind === 'none') return;
    const { kind } = this.selection;
    this.select('none', -1);
    // The card with the button that was pressed is gone.
    if (document.activeElement === document.body) {
      byId(kind === 'bone' ? 'bone-tree' : 'mesh-tree')
        .querySelector('[tabindex="0"]')
        ?.focus();
    }
    say('Nothing selected.');
  }

  // Hides exactly the submeshes that `isHidden` is true for.
  #hide(isHidden) {
    for (const { index, object } of this.surface.parts) object.visible = !isHidden(index);
    this.meshTree.cross((row) => this.#isHiddenRow(this.meshRows[row]));
    this.#refocusCard('mesh-card', () => this.#showSubmesh(this.selection.index));
    this.stage.invalidate();
  }

  #isHiddenRow({ parent, submesh }) {
    return parent >= 0 && this.model.submeshes[submesh].object?.visible === false;
  }

  toggleHidden() {
    const { kind, index } = this.selection;
    if (kind !== 'submesh') return say('Select a submesh first.');
    const isHidden = (one) => this.model.submeshes[one].object.visible === false;
    this.#hide((one) => isHidden(one) !== (one === index));
  }

  // Making a card anew must not lose the button that has the focus.
  #refocusCard(card, makeAnew) {
    const at = [...byId(card).querySelectorAll('button')].indexOf(document.activeElement);
    makeAnew();
    if (at >= 0) byId(card).querySelectorAll('button')[at]?.focus();
  }

  // In the weights of a skin; joints behind the bones are none.
  #selectStrongest(bone) {
    if (bone < this.model.contents.bones.length) this.select('bone', bone);
    else say('No bone pulls there.');
  }

  #pickAt(x, y) {
    if (!this.model) return;
    const weights = this.surface.way === 'weights';
    const id = this.picker.idAt(x, y, (draw) =>
      this.surface.inPickColors(weights, () => this.skeletonView.inPickColors(draw)),
    );
    const first = this.model.submeshes.length + 1;
    if (id === 0) this.clearSelection();
    else if (weights && id < first) this.#selectStrongest(id - 1);
    else if (id >= first) this.select('bone', id - first);
    else this.select('submesh', id - 1);
  }

  // --- View --------------------------------------------------------------------------------------

  toggle(name, on, aloud = true) {
    this.toggles[name] = on;
    const button = document.querySelector(`[data-toggle=${name}]`);
    button.setAttribute('aria-pressed', String(on));
    if (name === 'grid' || name === 'ruler') this.stage.show(name, on);
    if (this.model) {
      if (name === 'skeleton') this.skeletonView.showBones(on);
      if (name === 'names') this.skeletonView.showNames(on);
      if (name === 'wireframe') this.surface.showWires(on);
      if (name === 'normals') this.surface.showNormals(on);
      if (name === 'lights') {
        for (const light of this.model.lights) light.visible = on;
        this.stage.dim(on && this.model.lights.length > 0);
      }
    }
    this.stage.invalidate();
    // The ruler may be higher than what is in the picture.
    if (name === 'ruler' && on && aloud) this.frameAll();
    if (aloud) say(`${button.textContent.trim()} ${on ? 'on' : 'off'}.`);
  }

  paint(way, aloud = true) {
    byId('surface').value = way;
    this.surface?.paint(way);
    this.#showLegend();
    this.stage.invalidate();
    if (aloud) say(`Surface: ${SURFACES[way]}.`);
  }

  #showLegend() {
    byId('legend').hidden = this.surface?.way !== 'weights';
    const bone = this.model?.contents.bones[this.heatBone];
    byId('legend-text').textContent = bone
      ? `Weights of ${bone.name}`
      : 'Pick a bone in the list or on the skin';
  }

  frameAll() {
    if (this.model) this.stage.frame(this.stage.wholeBox);
  }

  frameSelection() {
    const { kind, index } = this.selection;
    if (!this.model || kind === 'none') this.frameAll();
    else if (kind === 'submesh') this.stage.frame(this.model.boxOf([this.model.submeshes[index]]));
    else this.stage.frame(this.model.boxOfBone(index));
  }

  view(name) {
    if (!this.model || !name) return;
    this.viewName = name;
    this.stage.frame(this.stage.wholeBox, VIEWS[name]);
    say(`View from ${byId('view').querySelector(`[value=${name}]`).textContent}.`);
  }

  #applyColors() {
    const colors = {
      background: this.theme.color('view'),
      line: this.theme.color('line'),
      text: this.theme.color('text'),
    };
    this.stage.setColors(colors);
    if (!this.model) return;
    this.skeletonView.setColors(colors.text, this.theme.color('halo'));
    this.surface.wireMaterial.color = new Color(colors.text);
  }

  // --- Wiring ------------------------------------------------------------------------------------

  #wireTools() {
    for (const [way, text] of Object.entries(SURFACES))
      byId('surface').append(make('option', { value: way }, text));
    byId('surface').addEventListener('change', () => this.paint(byId('surface').value));
    for (const button of document.querySelectorAll('[data-toggle]')) {
      button.addEventListener('click', () =>
        this.toggle(button.dataset.toggle, !this.toggles[button.dataset.toggle]),
      );
    }
    byId('view').addEventListener('change', () => {
      this.view(byId('view').value);
      byId('view').value = '';
    });
    byId('frame').addEventListener('click', () => this.frameAll());
    byId('help-button').addEventListener('click', () => byId('help').showModal());
    document.querySelector('#legend .ramp').style.background =
      `linear-gradient(to right, ${HEAT.join(', ')})`;
    fillHelp(byId('keys'));
  }

  #wireView() {
    const { canvas } = this.stage;
    let down = null;
    canvas.addEventListener('pointerdown', (event) => {
      down = event.button === 0 && !event.shiftKey ? { x: event.clientX, y: event.clientY } : null;
    });
    canvas.addEventListener('pointerup', (event) => {
      const moved = down ? Math.hypot(event.clientX - down.x, event.clientY - down.y) : Infinity;
      down = null;
      if (moved > CLICK_SLACK) return;
      const corner = canvas.getBoundingClientRect();
      this.#pickAt(event.clientX - corner.left, event.clientY - corner.top);
    });
    canvas.addEventListener('webglcontextlost', () =>
      say('The graphics card has dropped the view; waiting for it.'),
    );
    canvas.addEventListener('webglcontextrestored', () => this.stage.invalidate());
  }

  #wireKeys() {
    const flip = (name) => () => this.toggle(name, !this.toggles[name]);
    const names = Object.keys(VIEWS);
    const actions = {
      togglePlay: () => this.motion.toggle(),
      previousFrame: () => this.motion.step(-1),
      nextFrame: () => this.motion.step(1),
      toggleLoop: () => this.motion.toggleLoop(),
      slower: () => this.motion.changeSpeed(-1),
      faster: () => this.motion.changeSpeed(1),
      toggleSkeleton: flip('skeleton'),
      toggleNames: flip('names'),
      toggleWireframe: flip('wireframe'),
      toggleNormals: flip('normals'),
      toggleGrid: flip('grid'),
      toggleRuler: flip('ruler'),
      surfaceMaterial: () => this.paint('material'),
      surfaceClay: () => this.paint('clay'),
      surfaceColors: () => this.paint('colors'),
      surfaceWeights: () => this.paint('weights'),
      surfaceNormals: () => this.paint('normals'),
      frameSelection: () => this.frameSelection(),
      frameAll: () => this.frameAll(),
      nextView: () => this.view(names[(names.indexOf(this.viewName) + 1) % names.length]),
      toggleHidden: () => this.toggleHidden(),
      clearSelection: () => this.clearSelection(),
      nextTheme: () => say(`Look: ${this.theme.next()}.`),
      showHelp: () => byId('help').showModal(),
      orbitLeft: () => this.stage.orbit(1, 0),
      orbitRight: () => this.stage.orbit(-1, 0),
      orbitUp: () => this.stage.orbit(0, 1),
      orbitDown: () => this.stage.orbit(0, -1),
      panLeft: () => this.stage.pan(-1, 0),
      panRight: () => this.stage.pan(1, 0),
      panUp: () => this.stage.pan(0, 1),
      panDown: () => this.stage.pan(0, -1),
      zoomIn: () => this.stage.zoom(true),
      zoomOut: () => this.stage.zoom(false),
    };
    document.addEventListener('keydown', (event) => {
      if (event.defaultPrevented || !this.model || byId('help').open) return;
      const action = actionOf(event, focusOf(document.activeElement));
      // Arrow keys and Escape are no signs that speech or a cat types by chance.
      if (!action || (event.key.length === 1 && !byId('single-keys').checked)) return;
      event.preventDefault();
      actions[action]();
    });
  }

  #wireFiles() {
    const open = async (file) => {
      if (!file) return;
      document.title = `${file.name} - veltrum`;
      await this.show(new Uint8Array(await file.arrayBuffer()), {}, file.name);
    };
    byId('file').addEventListener('change', () => open(byId('file').files[0]));
    document.addEventListener('dragover', (event) => event.preventDefault());
    document.addEventListener('drop', (event) => {
      event.preventDefault();
      open(event.dataTransfer.files[0]);
    });
  }
}

/** What kind of thing has the focus, as actionOf wants it. */
function focusOf(element) {
  if (!element || element === document.body) return 'page';
  if (element.id === 'view3d') return 'view';
  if (element.matches('select')) return 'letters';
  if (element.matches('input[type=range]')) return 'page';
  if (
    element.matches(
      'button, [role=treeitem], [role=tabpanel], input[type=radio], input[type=checkbox]',
    )
  )
    return 'button';
  return element.matches('input, textarea') ? 'text' : 'page';
}
