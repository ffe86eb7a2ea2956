// 4x4 matrices and the rotation orders that angles are read in. Sixteen doubles are stored row
// after row, where row r is the image of axis r and row 3 the translation: the transpose of a
// textbook column-vector matrix, and the order that scene files hold. Products are in the textbook
// sense all the same: A * B applies B first, then A. Angles are in degrees.
#pragma once

#include <array>
#include <cstddef>

#include "fbx/math/fbx_vector.h"

// The general form, as files hold it.
struct FbxMatrix {
  FbxDouble4x4 data{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

  constexpr double Get(int row, int col) const { return data[static_cast<size_t>(row * 4 + col)]; }
  constexpr double& At(int row, int col) { return data[static_cast<size_t>(row * 4 + col)]; }
  friend constexpr bool operator==(const FbxMatrix&, const FbxMatrix&) = default;
};

// An affine transform: the last column is always 0, 0, 0, 1.
class FbxAMatrix {
 public:
  constexpr FbxAMatrix() = default;
  // The last column of the argument is dropped.
  explicit FbxAMatrix(const FbxMatrix& matrix) : FbxAMatrix(matrix.data) {}
  explicit FbxAMatrix(const FbxDouble4x4& rows);
  // Scales by s, then rotates by r (X first, then Y, then Z), then moves by t.
  FbxAMatrix(const FbxVector4& t, const FbxVector4& r, const FbxVector4& s);

  constexpr double Get(int row, int col) const { return m_[static_cast<size_t>(row * 4 + col)]; }
  constexpr operator const double*() const { return m_.data(); }
  constexpr FbxMatrix ToMatrix() const { return FbxMatrix{m_}; }

  void SetIdentity() { *this = FbxAMatrix(); }
  // Whether no element is further than `threshold` from the identity's; false with NaN in it.
  bool IsIdentity(double threshold = 0.0) const;

  // Each writes its own part and leaves the other: the translation is row 3, rotation and scaling
  // are both the upper 3x3, so that setting one of those replaces the other.
  void SetTOnly(const FbxVector4& t);
  void SetROnly(const FbxVector4& degrees);  // X first, then Y, then Z
  // A quaternion of any length; the zero quaternion gives no rotation.
  void SetQOnly(const FbxQuaternion& q);
  void SetT(const FbxVector4& t) { SetTOnly(t); }
  void SetR(const FbxVector4& degrees) { SetROnly(degrees); }
  void SetQ(const FbxQuaternion& q) { SetQOnly(q); }
  void SetS(const FbxVector4& s);

  FbxVector4 GetT() const { return {m_[12], m_[13], m_[14]}; }
  // The lengths of the rows; the first two are negated when the matrix mirrors.
  FbxVector4 GetS() const;
  // The angles for X first, then Y, then Z, of the matrix without its scale. At the pole the Z
  // angle is 0. A row of length 0 counts as its axis.
  FbxVector4 GetR() const;
  // The same angles as a quaternion and as a rotation matrix, without the way through degrees.
  FbxQuaternion GetQ() const;
  FbxAMatrix GetPureRotation() const;

  // Whether the images of the axes lie in one plane, but for rounding: what the inverse of such a
  // matrix holds, if it has one, is noise.
  bool IsFlat() const;
  // The inverse; the identity for a matrix that has none.
  FbxAMatrix Inverse() const;
  // The image of a point; its w is 1.
  constexpr FbxVector4 MultT(const FbxVector4& point) const {
    FbxVector4 image;
    for (size_t i = 0; i < 3; ++i) {
      image[i] = point[0] * m_[i] + point[1] * m_[4 + i] + point[2] * m_[8 + i] + m_[12 + i];
    }
    return image;
  }

  friend FbxAMatrix operator*(const FbxAMatrix& a, const FbxAMatrix& b);
  FbxAMatrix& operator*=(const FbxAMatrix& b) { return *this = *this * b; }
  friend constexpr bool operator==(const FbxAMatrix&, const FbxAMatrix&) = default;

 private:
  friend class FbxRotationOrder;

  FbxDouble4x4 m_{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
};

// The type is fixed, so that any number that a file holds may be cast to it.
enum EFbxRotationOrder : int {
  eEulerXYZ = 0,
  eEulerXZY,
  eEulerYZX,
  eEulerYXZ,
  eEulerZXY,
  eEulerZYX,
  eSphericXYZ
};

// Makes matrices from angles and back, the axis that an order names first rotating first.
class FbxRotationOrder {
 public:
  // A number outside the enumeration, as files may hold, counts as XYZ.
  explicit FbxRotationOrder(EFbxRotationOrder order);

  // Writes the upper 3x3 of `out`. degrees[0] is the angle about X whatever the order.
  void V2M(FbxAMatrix& out, const FbxVector4& degrees) const;
  // The angles of the matrix without its scale. At the pole the last axis' angle is 0.
  FbxVector4 M2V(const FbxAMatrix& matrix) const;

 private:
  EFbxRotationOrder order_;
};
