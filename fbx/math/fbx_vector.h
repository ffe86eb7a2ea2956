// Value types of positions, directions, rotations and colours. A four-component vector doubles as a
// point (w 1) and as three angles in degrees or three factors, where w means nothing; products and
// lengths use the first three components, sums and scalings all four.
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
