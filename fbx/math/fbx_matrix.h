// Value types: vectors, quaternions, colours, 4x4 matrices, and the rotation orders that angles are
// read in. Angles are in degrees.
//
// A four-component vector doubles as a point (w 1) and as three angles or three factors, where w
// means nothing; products and lengths use the first three components, sums and scalings all four.
//
// A matrix stores sixteen doubles row after row, where row r is the image of axis r and row 3 the
// translation: the transpose of a textbook column-vector matrix, and the order that scene files
// hold. Products are in the textbook sense all the same: A * B applies B first, then A.
#pragma once

#include <array>
#include <cstddef>

using FbxDouble2 = std::array<double, 2>;
using FbxDouble3 = std::array<double, 3>;
using FbxDouble4 = std::array<double, 4>;
using FbxDouble4x4 = std::array<double, 16>;

struct FbxVector2 {
  std::array<double, 2> data{0.0, 0.0};

  constexpr FbxVector2() = default;
  constexpr FbxVector2(double x, double y) : data{x, y} {}

  constexpr double& operator[](size_t i) { return data[i]; }
  constexpr double operator[](size_t i) const { return data[i]; }
  friend constexpr bool operator==(const FbxVector2&, const FbxVector2&) = default;
};

struct FbxVector4 {
  std::array<double, 4> data{0.0, 0.0, 0.0, 1.0};

  constexpr FbxVector4() = default;
  constexpr FbxVector4(double x, double y, double z, double w = 1.0) : data{x, y, z, w} {}
  constexpr explicit FbxVector4(const FbxDouble3& xyz, double w = 1.0)
      : data{xyz[0], xyz[1], xyz[2], w} {}

  constexpr double& operator[](size_t i) { return data[i]; }
  constexpr double operator[](size_t i) const { return data[i]; }
  constexpr void Set(double x, double y, double z, double w = 1.0) { data = {x, y, z, w}; }
  constexpr FbxDouble3 Xyz() const { return {data[0], data[1], data[2]}; }

  friend constexpr bool operator==(const FbxVector4&, const FbxVector4&) = default;

  constexpr FbxVector4& operator+=(const FbxVector4& o) {
    for (size_t i = 0; i < 4; ++i) data[i] += o.data[i];
    return *this;
  }
  constexpr FbxVector4& operator-=(const FbxVector4& o) {
    for (size_t i = 0; i < 4; ++i) data[i] -= o.data[i];
    return *this;
  }
  constexpr FbxVector4& operator*=(double factor) {
    for (double& component : data) component *= factor;
    return *this;
  }
  constexpr FbxVector4& operator/=(double divisor) {
    for (double& component : data) component /= divisor;
    return *this;
  }
  friend constexpr FbxVector4 operator+(FbxVector4 a, const FbxVector4& b) { return a += b; }
  friend constexpr FbxVector4 operator-(FbxVector4 a, const FbxVector4& b) { return a -= b; }
  friend constexpr FbxVector4 operator*(FbxVector4 v, double factor) { return v *= factor; }
  friend constexpr FbxVector4 operator*(double factor, FbxVector4 v) { return v *= factor; }
  friend constexpr FbxVector4 operator/(FbxVector4 v, double divisor) { return v /= divisor; }

  constexpr double DotProduct(const FbxVector4& o) const {
    return data[0] * o.data[0] + data[1] * o.data[1] + data[2] * o.data[2];
  }
  // The result's w is 0.
  constexpr FbxVector4 CrossProduct(const FbxVector4& o) const {
    return {data[1] * o.data[2] - data[2] * o.data[1], data[2] * o.data[0] - data[0] * o.data[2],
            data[0] * o.data[1] - data[1] * o.data[0], 0.0};
  }
  double Length() const;
  // Scales the first three components to length 1; a vector of length 0 stays as it is.
  void Normalize();
  // Whether the first `size` components are all 0.
  constexpr bool IsZero(int size = 4) const {
    for (size_t i = 0; i < 4 && static_cast<int>(i) < size; ++i) {
      if (data[i] != 0.0) return false;
    }
    return true;
  }
};

// x, y, z, w.
struct FbxQuaternion {
  std::array<double, 4> data{0.0, 0.0, 0.0, 1.0};

  constexpr FbxQuaternion() = default;
  constexpr FbxQuaternion(double x, double y, double z, double w) : data{x, y, z, w} {}

  constexpr double& operator[](size_t i) { return data[i]; }
  constexpr double operator[](size_t i) const { return data[i]; }
  friend constexpr bool operator==(const FbxQuaternion&, const FbxQuaternion&) = default;

  // The rotation by Euler angles in degrees, X first, then Y, then Z.
  static FbxQuaternion FromEulerXYZ(const FbxVector4& degrees);
  // The same by the sines and cosines of half the angles.
  static FbxQuaternion FromHalfAnglesXYZ(const FbxDouble3& sines, const FbxDouble3& cosines);
};

struct FbxColor {
  double mRed = 0.0;
  double mGreen = 0.0;
  double mBlue = 0.0;
  double mAlpha = 1.0;

  friend constexpr bool operator==(const FbxColor&, const FbxColor&) = default;
};

// The general form of a matrix, as files hold it.
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
