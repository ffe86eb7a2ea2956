// What the writers and the readers of the Cal3D files share: versions, marks, colours, and how a
// morph's offsets become the positions that the files hold.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>

#include "cal3d/model/vector.h"

inline constexpr std::int32_t kFileVersion = 919;
inline constexpr std::int32_t kOldestFileVersion = 699;

// The first four bytes of a binary file, and the MAGIC of an XML one.
inline constexpr std::string_view kBinarySkeletonMagic("CSF\0", 4);
inline constexpr std::string_view kBinaryMeshMagic("CMF\0", 4);
inline constexpr std::string_view kBinaryMaterialMagic("CRF\0", 4);
inline constexpr std::string_view kBinaryAnimationMagic("CAF\0", 4);
inline constexpr std::string_view kBinaryMorphAnimationMagic("CPF\0", 4);
inline constexpr std::string_view kXmlSkeletonMagic = "XSF";
inline constexpr std::string_view kXmlMeshMagic = "XMF";
inline constexpr std::string_view kXmlMaterialMagic = "XRF";
inline constexpr std::string_view kXmlAnimationMagic = "XAF";
inline constexpr std::string_view kXmlMorphAnimationMagic = "XPF";

// The number as a file can hold it: 0 for one that isn't finite.
inline float FiniteOrZero(float value) { return std::isfinite(value) ? value : 0.0f; }

// Red, green and blue of a colour word 0xAARRGGBB, each from 0 to 1.
inline CalVector ColorComponents(std::uint32_t word) {
  const auto component = [word](int shift) {
    return static_cast<float>((word >> shift) & 0xFF) / 255.0f;
  };
  return {component(16), component(8), component(0)};
}

// The opaque colour word nearest to the components, which are cut to 0 to 1.
inline std::uint32_t ColorWord(const CalVector& color) {
  const auto byte = [](float component) -> std::uint32_t {
    if (!(component > 0)) return 0;
    return component >= 1 ? 255 : static_cast<std::uint32_t>(std::lround(component * 255.0f));
  };
  return 0xFF000000 | byte(color.x) << 16 | byte(color.y) << 8 | byte(color.z);
}

// One component of a morphed vertex, as a file holds it. An offset of 0 keeps the base, down to
// the sign of a zero.
inline float MorphedPosition(float base, float offset) {
  base = FiniteOrZero(base);
  offset = FiniteOrZero(offset);
  return offset == 0 ? base : FiniteOrZero(base + offset);
}

// The offset that takes `base` to `position`. The rounded difference may miss the position by one
// unit in the last place; its neighbour then hits it, if any offset does. So a file that is loaded
// and saved again keeps its positions.
inline float MorphOffset(float base, float position) {
  base = FiniteOrZero(base);
  const float offset = FiniteOrZero(position) - base;
  if (base + offset == position) return offset;
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  for (const float neighbor :
       {std::nextafter(offset, -kInfinity), std::nextafter(offset, kInfinity)}) {
    if (base + neighbor == position) return neighbor;
  }
  return offset;
}
