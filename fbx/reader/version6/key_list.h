// The keys of a curve as documents of version 6 hold them: one list for all keys, each a time, a
// value, a letter for the interpolation and what that letter asks for.
//
//   key     = time value kind
//   kind    = "C" [ "s" | "n" ]                        constant; n: the next key's value
//           | "L"                                      linear
//           | "U" ( "s" | "b" ) right left weights     cubic with slopes of its own; b: broken
//           | "U" "a" weights                          cubic, automatic
//           | "U" "t" tension continuity bias weights  cubic, TCB
//   weights = [ "n" | "a" right left | "r" right | "l" left ]
//
// `left` is of the arrival at the next key. Slopes are per second, weights parts of the way.
#pragma once

#include <cstdint>
#include <vector>

#include "fbx/anim/kf_curve.h"

class FbxIO;

struct FbxKeyList {
  std::vector<int64_t> times;  // ticks
  std::vector<float> values;
  // `counts[i]` keys in a row have `attributes[i]`.
  std::vector<KFCurveKeyAttr> attributes;
  std::vector<uint32_t> counts;
};

// Reads keys from the values of the current record, `most` of them at most, and stops before the
// first that isn't whole.
FbxKeyList ReadKeyList(FbxIO& io, int64_t most);
