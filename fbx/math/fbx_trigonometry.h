// Sine, cosine and angle in degrees, the same to the last bit on every machine. The functions of C
// libraries differ between processors, with and without fused multiply-add; these are a fixed
// sequence of additions, multiplications, divisions and exact steps on doubles, which must not be
// contracted or reordered by the compiler. Degrees also reduce exactly, so that whole quarter
// turns, of which scenes are full, leave no 6e-17 where a 0 belongs.
#pragma once

// The sine and cosine of an angle, or a multiple of both.
struct SinCos {
  double sin;
  double cos;
};

// Both within 0.75 units in the last place; exact, and without negative zeros, for whole quarter
// turns. NaN for infinite angles and NaN.
SinCos SinCosOfDegrees(double degrees);

// The angle whose sine and cosine these are multiples of, from -180 to 180, within 0.75 units in
// the last place and exact for whole quarter turns. Signs of zeros count as in std::atan2. The
// larger of the two must lie between 1e-100 and 1e100 in magnitude for that, or be 0; NaN gives
// NaN.
double DegreesOf(const SinCos& turn);
