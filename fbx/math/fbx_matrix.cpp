#include "fbx/math/fbx_matrix.h"

#include <algorithm>
#include <cmath>

#include "fbx/math/fbx_trigonometry.h"

double FbxVector4::Length() const { return std::sqrt(DotProduct(*this)); }

void FbxVector4::Normalize() {
  const double length = Length();
  if (length == 0.0) return;
  for (size_t i = 0; i < 3; ++i) data[i] /= length;
}

FbxQuaternion FbxQuaternion::FromEulerXYZ(const FbxVector4& degrees) {
  FbxDouble3 sines, cosines;
  for (size_t i = 0; i < 3; ++i) {
    const SinCos half = SinCosOfDegrees(degrees[i] * 0.5);
    sines[i] = half.sin;
    cosines[i] = half.cos;
  }
  return FromHalfAnglesXYZ(sines, cosines);
}

FbxQuaternion FbxQuaternion::FromHalfAnglesXYZ(const FbxDouble3& sines, const FbxDouble3& cosines) {
  const auto [sx, sy, sz] = sines;
  const auto [cx, cy, cz] = cosines;
  return {sx * cy * cz - cx * sy * sz, cx * sy * cz + sx * cy * sz, cx * cy * sz - sx * sy * cz,
          cx * cy * cz + sx * sy * sz};
}

namespace {

// The volume of three rows of length 1 below which they lie in a plane, but for rounding.
constexpr double kFlatness = 1e-12;

// The axes in the order in which they rotate. All orders share the formulas of XYZ with the axes
// renamed; renaming by an odd permutation mirrors the frame, which turns the sense of the angles.
struct AxisOrder {
  std::array<size_t, 3> axes;
  bool odd;
};

constexpr std::array<AxisOrder, 7> kAxisTable = {{{{0, 1, 2}, false},
                                                  {{0, 2, 1}, true},
                                                  {{1, 2, 0}, false},
                                                  {{1, 0, 2}, true},
                                                  {{2, 0, 1}, false},
                                                  {{2, 1, 0}, true},
                                                  {{0, 1, 2}, false}}};

size_t At(size_t row, size_t col) { return row * 4 + col; }

// Of parts of unit rows, which are too small to overflow.
double Length(const SinCos& turn) { return std::sqrt(turn.sin * turn.sin + turn.cos * turn.cos); }

// The turns about an order's axes, in its sequence.
using Turns = std::array<SinCos, 3>;

void WriteTurns(FbxDouble4x4& m, const Turns& turns, const AxisOrder& order) {
  const auto [i, j, k] = order.axes;
  const auto [sx, cx] = turns[0];
  const auto [sy, cy] = turns[1];
  const auto [sz, cz] = turns[2];
  m[At(i, i)] = cy * cz;
  m[At(i, j)] = cy * sz;
  m[At(i, k)] = -sy;
  m[At(j, i)] = sx * sy * cz - cx * sz;
  m[At(j, j)] = sx * sy * sz + cx * cz;
  m[At(j, k)] = sx * cy;
  m[At(k, i)] = cx * sy * cz + sx * sz;
  m[At(k, j)] = cx * sy * sz - sx * cz;
  m[At(k, k)] = cx * cy;
}

void WriteRotation(FbxDouble4x4& m, const FbxVector4& degrees, const AxisOrder& order) {
  const double sense = order.odd ? -1.0 : 1.0;
  Turns turns;
  for (size_t i = 0; i < 3; ++i) turns[i] = SinCosOfDegrees(degrees[order.axes[i]] * sense);
  WriteTurns(m, turns, order);
}

// The turns out of rows that are orthonormal, right-handed; of any length. Subtracting from 0
// instead of negating keeps negative zeros out of the result.
Turns ReadTurns(const FbxDouble4x4& m, const AxisOrder& order) {
  constexpr double kPole = 1e-12;
  const auto [i, j, k] = order.axes;
  const double cy = Length({m[At(i, i)], m[At(i, j)]});
  const SinCos y = {0.0 - m[At(i, k)], cy};
  if (cy <= kPole) return {{{0.0 - m[At(k, j)], m[At(j, j)]}, y, {0.0, 1.0}}};
  return {{{m[At(j, k)], m[At(k, k)]}, y, {m[At(i, j)], m[At(i, i)]}}};
}

FbxVector4 ReadRotation(const FbxDouble4x4& m, const AxisOrder& order) {
  const Turns turns = ReadTurns(m, order);
  FbxVector4 degrees;
  for (size_t i = 0; i < 3; ++i) {
    const double angle = DegreesOf(turns[i]);
    degrees[order.axes[i]] = order.odd ? 0.0 - angle : angle;
  }
  return degrees;
}

// No turn where neither sine nor cosine is left.
SinCos Unit(const SinCos& turn) {
  const double length = Length(turn);
  return length == 0.0 ? SinCos{0.0, 1.0} : SinCos{turn.sin / length, turn.cos / length};
}

// Half of a turn of -180 to 180 degrees, by the half-angle formula that loses no digits.
SinCos Half(const SinCos& turn) {
  const auto [sin, cos] = Unit(turn);
  if (cos >= 0.0) {
    const double half = std::sqrt((1.0 + cos) / 2.0);
    return {sin / (2.0 * half), half};
  }
  const double half = std::copysign(std::sqrt((1.0 - cos) / 2.0), sin);
  return {half, sin / (2.0 * half)};
}

FbxVector4 Row(const FbxDouble4x4& m, size_t row) {
  return {m[row * 4], m[row * 4 + 1], m[row * 4 + 2], 0.0};
}

// The rows divided by the scale that the matrix reports.
FbxDouble4x4 WithoutScale(const FbxDouble4x4& m, const FbxVector4& scale) {
  FbxDouble4x4 unit = m;
  for (size_t row = 0; row < 3; ++row) {
    for (size_t col = 0; col < 3; ++col) {
      const size_t at = At(row, col);
      unit[at] = scale[row] == 0.0 ? (row == col ? 1.0 : 0.0) : m[at] / scale[row];
    }
  }
  return unit;
}

}  // namespace

FbxAMatrix::FbxAMatrix(const FbxDouble4x4& rows) : m_(rows) {
  m_[3] = m_[7] = m_[11] = 0.0;
  m_[15] = 1.0;
}

FbxAMatrix::FbxAMatrix(const FbxVector4& t, const FbxVector4& r, const FbxVector4& s) {
  SetROnly(r);
  for (size_t row = 0; row < 3; ++row) {
    for (size_t col = 0; col < 3; ++col) m_[At(row, col)] *= s[row];
  }
  SetTOnly(t);
}

bool FbxAMatrix::IsIdentity(double threshold) const {
  const FbxAMatrix identity;
  // The comparison is written so that NaN fails it.
  return std::equal(m_.begin(), m_.end(), identity.m_.begin(),
                    [&](double a, double b) { return std::abs(a - b) <= threshold; });
}

void FbxAMatrix::SetTOnly(const FbxVector4& t) {
  m_[12] = t[0];
  m_[13] = t[1];
  m_[14] = t[2];
}

void FbxAMatrix::SetROnly(const FbxVector4& degrees) {
  WriteRotation(m_, degrees, kAxisTable[eEulerXYZ]);
}

void FbxAMatrix::SetQOnly(const FbxQuaternion& q) {
  const auto [x, y, z, w] = q.data;
  const double n = x * x + y * y + z * z + w * w;
  const double s = n == 0.0 ? 0.0 : 2.0 / n;
  m_[0] = 1.0 - s * (y * y + z * z);
  m_[1] = s * (x * y + w * z);
  m_[2] = s * (x * z - w * y);
  m_[4] = s * (x * y - w * z);
  m_[5] = 1.0 - s * (x * x + z * z);
  m_[6] = s * (y * z + w * x);
  m_[8] = s * (x * z + w * y);
  m_[9] = s * (y * z - w * x);
  m_[10] = 1.0 - s * (x * x + y * y);
}

void FbxAMatrix::SetS(const FbxVector4& s) {
  for (size_t row = 0; row < 3; ++row) {
    for (size_t col = 0; col < 3; ++col) m_[At(row, col)] = row == col ? s[row] : 0.0;
  }
}

FbxVector4 FbxAMatrix::GetS() const {
  const FbxVector4 x = Row(m_, 0), y = Row(m_, 1), z = Row(m_, 2);
  FbxVector4 s(x.Length(), y.Length(), z.Length());
  // Of a flat matrix the sign of the volume is rounding.
  if (x.CrossProduct(y).DotProduct(z) < -kFlatness * s[0] * s[1] * s[2]) {
    s[0] = -s[0];
    s[1] = -s[1];
  }
  return s;
}

FbxVector4 FbxAMatrix::GetR() const {
  return ReadRotation(WithoutScale(m_, GetS()), kAxisTable[eEulerXYZ]);
}

FbxQuaternion FbxAMatrix::GetQ() const {
  const Turns turns = ReadTurns(WithoutScale(m_, GetS()), kAxisTable[eEulerXYZ]);
  FbxDouble3 sines, cosines;
  for (size_t i = 0; i < 3; ++i) {
    const SinCos half = Half(turns[i]);
    sines[i] = half.sin;
    cosines[i] = half.cos;
  }
  return FbxQuaternion::FromHalfAnglesXYZ(sines, cosines);
}

FbxAMatrix FbxAMatrix::GetPureRotation() const {
  Turns turns = ReadTurns(WithoutScale(m_, GetS()), kAxisTable[eEulerXYZ]);
  for (SinCos& turn : turns) turn = Unit(turn);
  FbxAMatrix rotation;
  WriteTurns(rotation.m_, turns, kAxisTable[eEulerXYZ]);
  return rotation;
}

bool FbxAMatrix::IsFlat() const {
  const FbxVector4 x = Row(m_, 0), y = Row(m_, 1), z = Row(m_, 2);
  const double volume = std::abs(x.CrossProduct(y).DotProduct(z));
  return volume <= kFlatness * x.Length() * y.Length() * z.Length();
}

FbxAMatrix FbxAMatrix::Inverse() const {
  const FbxVector4 x = Row(m_, 0), y = Row(m_, 1), z = Row(m_, 2);
  // The columns of the inverse are the cross products of the rows over the determinant.
  const std::array<FbxVector4, 3> columns = {y.CrossProduct(z), z.CrossProduct(x),
                                             x.CrossProduct(y)};
  const double determinant = x.DotProduct(columns[0]);
  const double factor = 1.0 / determinant;
  FbxAMatrix inverse;
  if (determinant == 0.0 || !std::isfinite(factor)) return inverse;
  for (size_t row = 0; row < 3; ++row) {
    for (size_t col = 0; col < 3; ++col) inverse.m_[At(row, col)] = columns[col][row] * factor;
  }
  const FbxVector4 t = inverse.MultT(GetT());
  inverse.SetTOnly({0.0 - t[0], 0.0 - t[1], 0.0 - t[2]});
  return inverse;
}

FbxAMatrix operator*(const FbxAMatrix& a, const FbxAMatrix& b) {
  // Whole rows at a time, the last column with them, so that it goes into vector registers.
  FbxAMatrix product;
  for (size_t row = 0; row < 4; ++row) {
    for (size_t col = 0; col < 4; ++col) {
      product.m_[At(row, col)] = b.m_[At(row, 0)] * a.m_[At(0, col)] +
                                 b.m_[At(row, 1)] * a.m_[At(1, col)] +
                                 b.m_[At(row, 2)] * a.m_[At(2, col)];
    }
  }
  for (size_t col = 0; col < 3; ++col) product.m_[At(3, col)] += a.m_[At(3, col)];
  for (size_t row = 0; row < 3; ++row) product.m_[At(row, 3)] = 0.0;
  product.m_[15] = 1.0;
  return product;
}

FbxRotationOrder::FbxRotationOrder(EFbxRotationOrder order)
    : order_(order >= eEulerXYZ && order <= eSphericXYZ ? order : eEulerXYZ) {}

void FbxRotationOrder::V2M(FbxAMatrix& out, const FbxVector4& degrees) const {
  if (order_ == eSphericXYZ) {
    out.SetQOnly(FbxQuaternion::FromEulerXYZ(degrees));
  } else {
    WriteRotation(out.m_, degrees, kAxisTable[static_cast<size_t>(order_)]);
  }
}

FbxVector4 FbxRotationOrder::M2V(const FbxAMatrix& matrix) const {
  return ReadRotation(WithoutScale(matrix.m_, matrix.GetS()),
                      kAxisTable[static_cast<size_t>(order_)]);
}
