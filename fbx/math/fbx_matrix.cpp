#include "fbx/math/fbx_matrix.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double kRadians = std::numbers::pi / 180.0;
constexpr double kDegrees = 180.0 / std::numbers::pi;

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

struct SinCos {
  double sin;
  double cos;
};

// Exact for whole quarter turns, of which exported scenes are full: the plain functions leave 6e-17
// where a 0 belongs, and every coordinate behind it carries the trace.
SinCos SinCosOfDegrees(double degrees) {
  if (std::fmod(degrees, 90.0) == 0.0) {
    static constexpr std::array<SinCos, 4> kQuarters = {{{0, 1}, {1, 0}, {0, -1}, {-1, 0}}};
    const int quarter = static_cast<int>(std::fmod(degrees, 360.0) / 90.0);
    return kQuarters[static_cast<size_t>((quarter + 4) % 4)];
  }
  return {std::sin(degrees * kRadians), std::cos(degrees * kRadians)};
}

void WriteRotation(FbxDouble4x4& m, const FbxVector4& degrees, const AxisOrder& order) {
  const auto [i, j, k] = order.axes;
  const double sense = order.odd ? -1.0 : 1.0;
  const auto [sx, cx] = SinCosOfDegrees(degrees[i] * sense);
  const auto [sy, cy] = SinCosOfDegrees(degrees[j] * sense);
  const auto [sz, cz] = SinCosOfDegrees(degrees[k] * sense);
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

// Takes the angles out of rows that are orthonormal, right-handed. Subtracting from 0 instead of
// negating keeps negative zeros out of the result.
FbxVector4 ReadRotation(const FbxDouble4x4& m, const AxisOrder& order) {
  constexpr double kPole = 1e-12;
  const auto [i, j, k] = order.axes;
  const double cy = std::hypot(m[At(i, i)], m[At(i, j)]);
  double x, z;
  if (cy <= kPole) {
    x = std::atan2(0.0 - m[At(k, j)], m[At(j, j)]);
    z = 0.0;
  } else {
    x = std::atan2(m[At(j, k)], m[At(k, k)]);
    z = std::atan2(m[At(i, j)], m[At(i, i)]);
  }
  const double y = std::atan2(0.0 - m[At(i, k)], cy);
  FbxVector4 degrees;
  degrees[i] = order.odd ? 0.0 - x * kDegrees : x * kDegrees;
  degrees[j] = order.odd ? 0.0 - y * kDegrees : y * kDegrees;
  degrees[k] = order.odd ? 0.0 - z * kDegrees : z * kDegrees;
  return degrees;
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
  if (x.CrossProduct(y).DotProduct(z) < 0.0) {
    s[0] = -s[0];
    s[1] = -s[1];
  }
  return s;
}

FbxVector4 FbxAMatrix::GetR() const {
  return ReadRotation(WithoutScale(m_, GetS()), kAxisTable[eEulerXYZ]);
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
  FbxAMatrix product;
  for (size_t row = 0; row < 3; ++row) {
    for (size_t col = 0; col < 3; ++col) {
      product.m_[At(row, col)] = b.m_[At(row, 0)] * a.m_[At(0, col)] +
                                 b.m_[At(row, 1)] * a.m_[At(1, col)] +
                                 b.m_[At(row, 2)] * a.m_[At(2, col)];
    }
  }
  product.SetTOnly(a.MultT(b.GetT()));
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
