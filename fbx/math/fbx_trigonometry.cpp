#include "fbx/math/fbx_trigonometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace {

// A number as the sum of two doubles, the second much smaller than the first.
struct Pair {
  double high;
  double low;
};

struct SinCosPairs {
  Pair sin;
  Pair cos;
};

// The upper half of a double's digits (Veltkamp). Products of two such halves are exact.
double UpperHalf(double x) {
  const double shifted = x * 134217729.0;  // 2^27 + 1
  return shifted - (shifted - x);
}

// A product without rounding (Dekker).
Pair Product(double a, double b) {
  const double product = a * b;
  const double ah = UpperHalf(a), bh = UpperHalf(b);
  const double al = a - ah, bl = b - bh;
  return {product, ((ah * bh - product) + ah * bl + al * bh) + al * bl};
}

template <size_t N>
double Horner(const std::array<double, N>& coefficients, double z) {
  double sum = coefficients[N - 1];
  for (size_t i = N - 1; i-- > 0;) sum = sum * z + coefficients[i];
  return sum;
}

// The Taylor coefficients of sine from x^5 and of cosine from x^4 on, in powers of x^2. Up to a
// quarter of pi, what is left out stays below 2^-62 of either.
constexpr double kFactorial8 = 40320.0, kFactorial12 = 479001600.0;
constexpr double kFactorial16 = 20922789888000.0;
constexpr std::array<double, 7> kSine = {1.0 / 120.0,
                                         -1.0 / 5040.0,
                                         1.0 / (kFactorial8 * 9.0),
                                         -1.0 / (kFactorial8 * 990.0),
                                         1.0 / (kFactorial12 * 13.0),
                                         -1.0 / (kFactorial12 * 2730.0),
                                         1.0 / (kFactorial16 * 17.0)};
constexpr std::array<double, 8> kCosine = {1.0 / 24.0,         -1.0 / 720.0,
                                           1.0 / kFactorial8,  -1.0 / (kFactorial8 * 90.0),
                                           1.0 / kFactorial12, -1.0 / (kFactorial12 * 182.0),
                                           1.0 / kFactorial16, -1.0 / (kFactorial16 * 306.0)};

// Of at most an eighth of a turn. The angle is carried with more digits than a double has, its
// upper half so that its square is exact; only the last sum, of a large and a small part, rounds
// noticeably.
SinCosPairs OfSmallAngle(double degrees) {
  // pi / 180 in two parts, the first of 26 digits.
  constexpr double kRadiansHigh = 0x1.1df46ap-6;
  constexpr double kRadiansLow = 0x1.294e9c8ae0ec6p-33;
  const double upper = UpperHalf(degrees);
  const double product = upper * kRadiansHigh;  // exact
  const double rest = (degrees - upper) * kRadiansHigh + degrees * kRadiansLow;
  const double x = product + rest;
  const double xh = UpperHalf(x);
  const double xl = (product - xh) + rest;
  const double z = x * x;
  const double square = xh * xh;  // exact
  const double sineRest = xl * (1.0 - xh * x * 0.5) - xh * square / 6.0;
  const double cosine = 1.0 - square * 0.5;
  const double cosineRest = (1.0 - cosine) - square * 0.5 - xl * (xh + xl * 0.5);
  return {{xh, sineRest + z * z * x * Horner(kSine, z)},
          {cosine, cosineRest + z * z * Horner(kCosine, z)}};
}

Pair Negative(const Pair& pair) { return {0.0 - pair.high, 0.0 - pair.low}; }

SinCosPairs OfFiniteAngle(double degrees) {
  constexpr double kFewTurns = 1e9;
  if (std::abs(degrees) >= kFewTurns) degrees = std::fmod(degrees, 360.0);  // exact
  const int quarters = static_cast<int>(degrees / 90.0 + std::copysign(0.5, degrees));
  // Exact. Adding 0 makes a negative zero positive.
  const auto [sin, cos] = OfSmallAngle(degrees - quarters * 90.0 + 0.0);
  switch (static_cast<unsigned>(quarters) % 4U) {
    case 0:
      return {sin, cos};
    case 1:
      return {cos, Negative(sin)};
    case 2:
      return {Negative(sin), Negative(cos)};
    default:
      return {Negative(cos), sin};
  }
}

}  // namespace

SinCos SinCosOfDegrees(double degrees) {
  if (!std::isfinite(degrees)) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    return {kNaN, kNaN};
  }
  const auto [sin, cos] = OfFiniteAngle(degrees);
  return {sin.high + sin.low, cos.high + cos.low};
}

double DegreesOf(const SinCos& turn) {
  constexpr double kDegrees = 0x1.ca5dc1a63c1f8p+5;  // 180 / pi
  const auto [y, x] = turn;
  if (std::isnan(x) || std::isnan(y)) return std::numeric_limits<double>::quiet_NaN();
  const double larger = std::max(std::abs(x), std::abs(y));
  const double smaller = std::min(std::abs(x), std::abs(y));
  const double t = larger == 0.0 ? 0.0 : smaller / larger;
  // An estimate within 0.3 degrees, taken to the octant.
  double estimate = t / (1.0 + 0.28 * (t * t)) * kDegrees;
  if (std::abs(y) > std::abs(x)) estimate = 90.0 - estimate;
  if (std::signbit(x)) estimate = 180.0 - estimate;
  estimate = std::copysign(estimate, y);
  // What is left is the angle of the turn taken back by the estimate: one step is enough, as that
  // small angle's arctangent is a short series.
  const auto [sin, cos] = OfFiniteAngle(estimate);
  const Pair a = Product(y, cos.high), b = Product(x, sin.high);
  const double numerator = (a.high - b.high) + ((a.low - b.low) + (y * cos.low - x * sin.low));
  const double denominator = x * (cos.high + cos.low) + y * (sin.high + sin.low);
  if (numerator == 0.0 || denominator == 0.0) return estimate;
  const double tangent = numerator / denominator;
  const double square = tangent * tangent;
  const double left = tangent - tangent * square * (1.0 / 3.0 - square * (0.2 - square / 7.0));
  return estimate + left * kDegrees;
}
