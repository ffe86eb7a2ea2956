// Plays a skeletal and a morph animation on one timeline, and keeps the morphs that somebody holds.

import { AnimationMixer } from 'three';
import { advance, timeInClip } from './clock.js';

export const SPEEDS = [0.1, 0.25, 0.5, 1, 1.5, 2, 4];

export class Player {
  #mixer;
  #actions = new Map();
  #held = new Map();

  /** @param {import('./model.js').Model} model */
  constructor(model) {
    this.model = model;
    this.#mixer = new AnimationMixer(model.scene);
    /** Index of the chosen clip for each kind, or -1. */
    this.chosen = { skeletal: -1, morph: -1 };
    this.time = 0;
    this.playing = false;
    this.loop = true;
    this.speed = 1;
    /** Where each morph has its weight: its name to pairs of a mesh and an index. */
    this.morphs = new Map(model.contents.morphs.map((name) => [name, []]));
    for (const { object, morphs } of model.submeshes) {
      morphs.forEach((name, index) => {
        if (object?.morphTargetInfluences) this.morphs.get(name).push([object, index]);
      });
    }
  }

  get duration() {
    let longest = 0;
    for (const action of this.#actions.values())
      longest = Math.max(longest, action.getClip().duration);
    return longest;
  }

  /** Chooses the clip of its kind that takes part, -1 for none. */
  choose(kind, index) {
    this.#actions.get(kind)?.stop();
    this.#actions.delete(kind);
    this.chosen[kind] = index;
    if (index >= 0)
      this.#actions.set(kind, this.#mixer.clipAction(this.model.clips[index].clip).play());
    if (!this.#actions.size) this.playing = false;
    this.seek(Math.min(this.time, this.duration));
  }

  play() {
    if (!this.#actions.size && this.model.clips.length) this.choose(this.model.clips[0].kind, 0);
    if (!this.#actions.size) return;
    if (!this.loop && this.time >= this.duration) this.seek(0);
    this.playing = true;
  }

  pause() {
    this.playing = false;
  }

  /** Shows the pose of a time in seconds. */
  seek(time) {
    this.time = Math.min(Math.max(time, 0), this.duration);
    for (const action of this.#actions.values()) {
      action.time = timeInClip(this.time, action.getClip().duration, this.loop);
    }
    // The times are set: a step of nothing only makes the poses.
    this.#mixer.update(0);
    this.#applyHeld();
  }

  /** Goes on by a step of the display. @returns {boolean} whether it still plays */
  tick(step) {
    if (!this.playing) return false;
    const { time, ended } = advance(this.time, step * this.speed, this.duration, this.loop);
    this.seek(time);
    if (ended) this.playing = false;
    return this.playing;
  }

  morphWeight(name) {
    const [place] = this.morphs.get(name);
    return place ? place[0].morphTargetInfluences[place[1]] : 0;
  }

  isHeld(name) {
    return this.#held.has(name);
  }

  /** Sets a morph's weight against any animation. */
  hold(name, weight) {
    this.#held.set(name, weight);
    this.#applyHeld();
  }

  /** Gives all morphs back to the animation, or to none. */
  releaseAll() {
    this.#held.clear();
    // A stopped animation brings back what it found, and a running one writes only what changes:
    // both would keep a held weight. So all begin anew on zeros.
    for (const action of this.#actions.values()) action.stop();
    for (const places of this.morphs.values()) {
      for (const [mesh, index] of places) mesh.morphTargetInfluences[index] = 0;
    }
    for (const action of this.#actions.values()) action.play();
    this.seek(this.time);
  }

  #applyHeld() {
    for (const [name, weight] of this.#held) {
      for (const [mesh, index] of this.morphs.get(name)) mesh.morphTargetInfluences[index] = weight;
    }
  }

  dispose() {
    this.#mixer.stopAllAction();
    this.#mixer.uncacheRoot(this.model.scene);
  }
}
