// The two numeric rules that all animation code shares. Both compute in 32-bit floats throughout:
// listings and duplicate tests compare texts made from their results.
#pragma once

// Rounds to thousandths by adding 0.0005 and truncating toward zero, for negative values too, which
// land up to a thousandth nearer zero: -1.0004 gives -0.999.
float clampKeyValue(float value);

// The time in seconds of a frame in the global time mode. Modes without a rate of their own, a
// custom one among them, count 30 frames a second.
float frameToSeconds(float frame);
