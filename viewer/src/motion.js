// Playback: the lists of animations, the sliders of morphs and the bar with the time.

import { byId, make, say } from './dom.js';
import { FRAME_SECONDS } from './clock.js';
import { SPEEDS } from './player.js';
import { seconds } from './words.js';

// The slider and the sliders of morphs follow an animation this often; each frame would cost more
// than it shows.
const FOLLOW_SECONDS = 1 / 15;

const KINDS = [
  ['skeletal', 'Animations', 'Rest pose'],
  ['morph', 'Morph animations', 'None'],
];

export class Motion {
  #player = null;
  #sliders = new Map();
  #sinceFollow = 0;

  /** @param {() => void} redraw asks for a frame */
  constructor(redraw) {
    this.redraw = redraw;
    for (const speed of SPEEDS)
      byId('speed').append(make('option', { value: String(speed) }, `${speed}×`));
    byId('speed').value = '1';
    byId('play').addEventListener('click', () => this.toggle());
    byId('loop').addEventListener('click', () => this.toggleLoop());
    byId('speed').addEventListener('change', () => this.#setSpeed(Number(byId('speed').value)));
    byId('time').addEventListener('input', () => {
      this.#player.pause();
      this.seek(Number(byId('time').value));
    });
    byId('release').addEventListener('click', () => {
      this.#player.releaseAll();
      this.#refresh();
      say('All morphs released.');
    });
  }

  /** @param {import('./player.js').Player} player */
  setPlayer(player) {
    this.#player = player;
    player.loop = byId('loop').getAttribute('aria-pressed') === 'true';
    player.speed = Number(byId('speed').value);
    const { clips } = player.model;
    byId('transport').hidden = clips.length === 0;
    byId('animations').replaceChildren(...KINDS.flatMap((kind) => this.#choices(clips, ...kind)));
    if (!clips.length) byId('animations').append(make('p', {}, 'There are no animations.'));
    this.#makeSliders();
    this.#refresh();
  }

  #choices(clips, kind, title, none) {
    const own = clips.filter((one) => one.kind === kind);
    if (!own.length) return [];
    const group = make('fieldset', {}, make('legend', {}, title));
    const add = (index, text, note) => {
      const input = make('input', {
        type: 'radio',
        name: kind,
        value: String(index),
        checked: index < 0,
      });
      input.addEventListener('change', () => this.choose(kind, index));
      group.append(
        make(
          'label',
          { className: 'choice' },
          input,
          make('span', {}, text),
          make('small', {}, note),
        ),
      );
    };
    add(-1, none, '');
    for (const { index, name, clip, start } of own) {
      add(index, name, seconds(clip.duration) + (start ? `, from ${seconds(start)}` : ''));
    }
    return [group];
  }

  #makeSliders() {
    this.#sliders.clear();
    const names = [...this.#player.morphs.keys()];
    const rows = names.map((name, n) => {
      const id = `morph-${n}`;
      const input = make('input', {
        type: 'range',
        id,
        min: '0',
        max: '1',
        step: '0.01',
        value: '0',
      });
      const output = make('output', { htmlFor: id }, '0');
      const row = make(
        'div',
        { className: 'morph' },
        make('label', { htmlFor: id }, name),
        output,
        input,
      );
      input.addEventListener('input', () => {
        this.#player.hold(name, Number(input.value));
        this.#refresh();
      });
      this.#sliders.set(name, { row, input, output });
      return row;
    });
    byId('morphs').replaceChildren(
      ...(rows.length ? rows : [make('p', {}, 'There are no morphs.')]),
    );
  }

  choose(kind, index) {
    this.#player.choose(kind, index);
    const name = index < 0 ? '' : this.#player.model.clips[index].name;
    say(name ? `${name} chosen.` : kind === 'morph' ? 'No morph animation.' : 'Rest pose.');
    this.#refresh();
  }

  toggle() {
    const player = this.#player;
    if (!player?.model.clips.length) return say('There are no animations.');
    if (player.playing) player.pause();
    else player.play();
    this.#refresh();
    say(player.playing ? `Playing ${this.#names()}.` : `Paused at ${seconds(player.time)}.`);
  }

  toggleLoop() {
    const loop = byId('loop').getAttribute('aria-pressed') !== 'true';
    byId('loop').setAttribute('aria-pressed', String(loop));
    if (this.#player) this.#player.loop = loop;
    say(loop ? 'Loop on.' : 'Loop off.');
  }

  /** Takes the next speed up or down. */
  changeSpeed(by) {
    const at = SPEEDS.indexOf(Number(byId('speed').value)) + by;
    if (SPEEDS[at] === undefined) return;
    byId('speed').value = String(SPEEDS[at]);
    this.#setSpeed(SPEEDS[at]);
  }

  #setSpeed(speed) {
    if (this.#player) this.#player.speed = speed;
    say(`Speed ${speed}.`);
  }

  step(frames) {
    if (!this.#player?.duration) return;
    this.#player.pause();
    this.seek(this.#player.time + frames * FRAME_SECONDS);
    say(seconds(this.#player.time));
  }

  seek(time) {
    this.#player.seek(time);
    this.#refresh();
  }

  /** Goes on by a step of the display. @returns {boolean} whether another frame is due */
  tick(step) {
    if (!this.#player?.playing) return false;
    const playing = this.#player.tick(step);
    this.#sinceFollow += step;
    if (!playing) this.#showState();
    else if (this.#sinceFollow >= FOLLOW_SECONDS) this.#follow();
    return playing;
  }

  #names() {
    const { chosen, model } = this.#player;
    return [chosen.skeletal, chosen.morph]
      .filter((index) => index >= 0)
      .map((index) => model.clips[index].name)
      .join(' and ');
  }

  #refresh() {
    this.#showState();
    this.redraw();
  }

  // All that changes only when somebody does something.
  #showState() {
    const { playing, duration, chosen } = this.#player;
    byId('play').setAttribute('aria-label', playing ? 'Pause' : 'Play');
    byId('play').toggleAttribute('data-playing', playing);
    byId('time').max = String(duration || 1);
    byId('time').disabled = duration === 0;
    byId('playing').textContent = this.#names() || 'Rest pose';
    for (const kind of Object.keys(chosen)) {
      const radio = document.querySelector(
        `#animations input[name=${kind}][value="${chosen[kind]}"]`,
      );
      if (radio) radio.checked = true;
    }
    this.#follow();
    const frame = Math.round(this.#player.time / FRAME_SECONDS);
    byId('time').setAttribute(
      'aria-valuetext',
      `${seconds(this.#player.time)} of ${seconds(duration)}, frame ${frame}`,
    );
    let held = false;
    for (const [name, { row }] of this.#sliders) {
      row.toggleAttribute('data-held', this.#player.isHeld(name));
      held ||= this.#player.isHeld(name);
    }
    byId('release').hidden = !held;
  }

  // What follows the time.
  #follow() {
    this.#sinceFollow = 0;
    byId('time').value = String(this.#player.time);
    byId('clock').textContent = `${seconds(this.#player.time)} / ${seconds(this.#player.duration)}`;
    if (byId('motion').hidden) return;
    for (const [name, { input, output }] of this.#sliders) {
      const weight = this.#player.morphWeight(name);
      input.value = String(weight);
      output.textContent = weight.toFixed(2).replace(/\.?0+$/, '') || '0';
    }
  }
}
