// Axis systems and the conversion of a whole scene from one to another.
#pragma once

#include "fbx/math/fbx_matrix.h"

class FbxScene;

class FbxAxisSystem {
 public:
  // An axis, 0 X, 1 Y, 2 Z, with its sign, 1 or -1.
  struct Axis {
    int axis = 0;
    int sign = 1;
    friend constexpr bool operator==(const Axis& a, const Axis& b) = default;
  };
  enum EPreDefinedAxisSystem {
    eMayaZUp = 0,
    eMayaYUp,
    eMax,
    eMotionBuilder,
    eOpenGL,
    eDirectX,
    eLightwave,
  };
  static const FbxAxisSystem MayaZUp;
  static const FbxAxisSystem MayaYUp;
  static const FbxAxisSystem Max;
  static const FbxAxisSystem Motionbuilder;
  static const FbxAxisSystem OpenGL;
  static const FbxAxisSystem DirectX;
  static const FbxAxisSystem Lightwave;

  // Y up, +Z front, +X right.
  constexpr FbxAxisSystem() = default;
  constexpr FbxAxisSystem(Axis up, Axis front, Axis right)
      : up_(up), front_(front), right_(right) {}
  explicit FbxAxisSystem(EPreDefinedAxisSystem system);

  Axis GetUp() const { return up_; }
  Axis GetFront() const { return front_; }
  Axis GetRight() const { return right_; }
  // True when up, front and right name three different axes with a sign each.
  bool IsValid() const;
  friend constexpr bool operator==(const FbxAxisSystem& a, const FbxAxisSystem& b) = default;

  // The matrix that takes `from`'s right, up and front axes to this system's: Y up, Z front, X
  // right to Z up, -Y front, X right takes (x, y, z) to (x, -z, y).
  FbxAMatrix GetConversionMatrix(const FbxAxisSystem& from) const;

  // Takes the scene from its own system to this one: afterwards every node's global transform, with
  // and without animation, and every bind pose matrix is the conversion matrix times what it was.
  // Top-level nodes carry the change, everything below keeps its local data, and vertices aren't
  // touched. From a system of the other handedness top-level nodes get a negative scaling, and so
  // do nodes below that don't inherit it. A top-level node with animated rotation and a rotation
  // space for limits only loses those limits. Without effect when either system isn't valid.
  void ConvertScene(FbxScene* scene) const;

 private:
  Axis up_{1, 1};
  Axis front_{2, 1};
  Axis right_{0, 1};
};
