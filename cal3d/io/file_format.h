// What the writers and the readers of the Cal3D files share: the kinds of file, versions, colours,
// and how a morph's offsets become the positions that the files hold.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "cal3d/model/vector.h"

// A kind of file that holds a model, and by what it is told.
struct CalFileKind {
  std::string_view name;             // in messages
  std::string_view extension;        // of the XML form
  std::string_view binaryExtension;  // a path that ends so, in any case, gets the binary form
  std::string_view root;             // the XML form's root element
  std::string_view magic;            // its MAGIC
  std::string_view binaryMagic;      // the first four bytes of the binary form
};

inline constexpr CalFileKind kSkeletonFile = {"skeleton", ".xsf", ".csf",
                                              "SKELETON", "XSF",  {"CSF\0", 4}};
inline constexpr CalFileKind kMeshFile = {"mesh", ".xmf", ".cmf", "MESH", "XMF", {"CMF\0", 4}};
inline constexpr CalFileKind kMaterialFile = {"material", ".xrf", ".crf",
                                              "MATERIAL", "XRF",  {"CRF\0", 4}};
inline constexpr CalFileKind kAnimationFile = {"animation", ".xaf", ".caf",
                                               "ANIMATION", "XAF",  {"CAF\0", 4}};
inline constexpr CalFileKind kMorphAnimationFile = {"morph animation", ".xpf", ".cpf",
                                                    "ANIMATION",       "XPF",  {"CPF\0", 4}};

inline constexpr std::array kFileKinds = {kSkeletonFile, kMeshFile, kMaterialFile, kAnimationFile,
                                          kMorphAnimationFile};

inline constexpr int32_t kFileVersion = 919;
inline constexpr int32_t kOldestFileVersion = 699;

// The letter in lower case, whatever the locale; every other byte as it is.
inline char AsciiLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// The number as a file can hold it: 0 for one that isn't finite.
inline float FiniteOrZero(float value) { return std::isfinite(value) ? value : 0.0F; }

// Red, green and blue of a colour word 0xAARRGGBB, each from 0 to 1.
inline CalVector ColorComponents(uint32_t word) {
  const auto component = [word](int shift) {
    return static_cast<float>((word >> shift) & 0xFF) / 255.0F;
  };
  return {component(16), component(8), component(0)};
}

// The opaque colour word nearest to the components, which are cut to 0 to 1.
inline uint32_t ColorWord(const CalVector& color) {
  const auto byte = [](float component) -> uint32_t {
    if (!(component > 0)) return 0;
    return component >= 1 ? 255 : static_cast<uint32_t>(std::lround(component * 255.0F));
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

// The offset that takes `base` to `position`, but for the rounding of a difference.
inline float MorphOffset(float base, float position) {
  return FiniteOrZero(position) - FiniteOrZero(base);
}
