// Lights that bones stand for. A bone is a light by an attached light or by its name, in which a
// small grammar sets the light's properties:
//
//   <stem><separator><options>      lightPoint_rgbff0000_bright0.5
//
// The stem says the type: omni, lightPoint, lightDirection, lightTarget, lightAmbient. The
// separator is the first character that is no letter and no digit. An option is a word with a value
// behind it, perhaps with one character between them. Case counts nowhere.
#pragma once

#include <string>
#include <string_view>

#include "cal3d/model/core_skeleton.h"

class FbxNode;

// `type` becomes kNone for a bone that is no light, and `newName` is then `name`; otherwise
// `newName` is the stem with the options in their fixed form and order. `color` is red, green, blue
// from 0 to 1, grey where nothing sets it.
void getLightFromBone(const FbxNode* node, const std::string& name, CalLightType& type,
                      std::string& newName, CalVector& color);

// `fallback` for a text that is no number, or one that a float can't hold.
float stringToFloat(std::string_view text, float fallback);
