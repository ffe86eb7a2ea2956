// The value types of the character model. Everything is a 32-bit float, since that is what the
// files hold; quaternions stand x, y, z, w.
#pragma once

// Four floats on a 16-byte boundary, so that vector instructions can load and store them.
struct alignas(16) CalVector4 {
  float x = 0;
  float y = 0;
  float z = 0;
  float w = 0;

  bool operator==(const CalVector4&) const = default;
};

struct CalVector {
  float x = 0;
  float y = 0;
  float z = 0;

  // The same vector with a fourth component of 0.
  CalVector4 asCalVector4() const { return {x, y, z, 0}; }

  bool operator==(const CalVector&) const = default;
};

// All zero at first, which is no rotation: whoever makes one sets it.
struct CalQuaternion {
  float x = 0;
  float y = 0;
  float z = 0;
  float w = 0;

  bool operator==(const CalQuaternion&) const = default;
};

// Rotates first, then translates.
struct CalTransform {
  CalQuaternion rotation;
  CalVector translation;
};
