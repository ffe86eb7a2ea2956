// Times on a timeline, in seconds.

/** Steps of one frame of the usual rate, for going through an animation picture by picture. */
export const FRAME_SECONDS = 1 / 30;

/**
 * The time after a step. A looping timeline starts over at its end; another one stays there.
 * @returns {{time: number, ended: boolean}} ended: a timeline without loop has reached its end
 */
export function advance(time, step, duration, loop) {
  const next = time + step;
  if (duration <= 0) return { time: 0, ended: true };
  if (loop) return { time: ((next % duration) + duration) % duration, ended: false };
  const clamped = Math.min(Math.max(next, 0), duration);
  return { time: clamped, ended: next >= duration };
}

/** The time within a clip that is shorter than the timeline: it repeats, or holds its last pose. */
export function timeInClip(time, clipDuration, loop) {
  if (time <= clipDuration || clipDuration <= 0) return Math.min(time, Math.max(clipDuration, 0));
  return loop ? time % clipDuration : clipDuration;
}
