#include "fbx/reader/version6/key_list.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <string_view>

#include "fbx/io/fbx_io.h"

namespace {

constexpr uint32_t kTangentBreak = 0x800;

// Takes the next value if it is one of the letters; 0 else.
char TakeLetter(FbxIO& io, std::string_view letters) {
  const char letter = io.FieldPeekCH();
  if (letter == '\0' || letters.find(letter) == std::string_view::npos) return '\0';
  return io.FieldReadCH();
}

// The word of a weight: its half of it, in units of 1/9999.
uint32_t ReadWeight(FbxIO& io) {
  constexpr double kUnits = 9999.0;
  const double units = std::round(io.FieldReadD() * kUnits);
  if (std::isnan(units)) return 0;
  return static_cast<uint16_t>(static_cast<int16_t>(std::clamp(units, -32768.0, 32767.0)));
}

// False if the list ends before the weights do.
bool ReadWeights(FbxIO& io, KFCurveKeyAttr& attribute) {
  const char letter = TakeLetter(io, "narl");
  const bool hasRight = letter == 'a' || letter == 'r';
  const bool hasLeft = letter == 'a' || letter == 'l';
  if (io.FieldReadGetRemain() < (hasRight ? 1 : 0) + (hasLeft ? 1 : 0)) return false;
  uint32_t word = 0;
  uint32_t flags = 0;
  if (hasRight) {
    word = ReadWeight(io);
    flags = KFCurveKeyAttr::kWeightedRight;
  }
  if (hasLeft) {
    word |= ReadWeight(io) << 16;
    flags |= KFCurveKeyAttr::kWeightedNextLeft;
  }
  // Only slopes of the key's own have weights.
  if ((attribute.flags & KFCurveKeyAttr::kTangentUser) != 0) {
    attribute.flags |= flags;
    attribute.words[2] = word;
  }
  return true;
}

bool ReadCubic(FbxIO& io, KFCurveKeyAttr& attribute) {
  const char tangent = TakeLetter(io, "sbat");
  int numbers = 0;
  switch (tangent) {
    case 's':
      attribute.flags |= KFCurveKeyAttr::kTangentUser;
      numbers = 2;
      break;
    case 'b':
      attribute.flags |= KFCurveKeyAttr::kTangentUser | kTangentBreak;
      numbers = 2;
      break;
    case 'a':
      attribute.flags |= KFCurveKeyAttr::kTangentAuto;
      break;
    case 't':
      attribute.flags |= KFCurveKeyAttr::kTangentTCB;
      numbers = 3;
      break;
    default:
      return false;
  }
  if (io.FieldReadGetRemain() < numbers) return false;
  for (int i = 0; i < numbers; ++i) {
    attribute.words[static_cast<size_t>(i)] = std::bit_cast<uint32_t>(io.FieldReadF());
  }
  return ReadWeights(io, attribute);
}

bool ReadKind(FbxIO& io, KFCurveKeyAttr& attribute) {
  switch (TakeLetter(io, "CLU")) {
    case 'C':
      attribute.flags = KFCurveKeyAttr::kConstant;
      if (TakeLetter(io, "sn") == 'n') attribute.flags |= KFCurveKeyAttr::kConstantNext;
      return true;
    case 'L':
      attribute.flags = KFCurveKeyAttr::kLinear;
      return true;
    case 'U':
      attribute.flags = KFCurveKeyAttr::kCubic;
      return ReadCubic(io, attribute);
    default:
      return false;
  }
}

}  // namespace

FbxKeyList ReadKeyList(FbxIO& io, int64_t most) {
  FbxKeyList keys;
  for (int64_t i = 0; i < most && io.FieldReadGetRemain() > 0; ++i) {
    const int64_t time = io.FieldReadT().Get();
    const float value = io.FieldReadF();
    KFCurveKeyAttr attribute;
    if (!ReadKind(io, attribute)) break;
    keys.times.push_back(time);
    keys.values.push_back(value);
    if (keys.attributes.empty() || keys.attributes.back().flags != attribute.flags ||
        keys.attributes.back().words != attribute.words) {
      keys.attributes.push_back(attribute);
      keys.counts.push_back(0);
    }
    ++keys.counts.back();
  }
  return keys;
}
