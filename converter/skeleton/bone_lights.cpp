#include "converter/skeleton/bone_lights.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <map>
#include <regex>

#include "cal3d/io/number_text.h"
#include "converter/base/log.h"
#include "converter/base/names.h"
#include "converter/skeleton/room_names.h"
#include "converter/space/axis_mod.h"
#include "fbx/scene/fbx_node.h"

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

using NameMatches = std::regex_iterator<std::string_view::const_iterator>;

// From an option's word to its value.
using LightOptions = std::map<std::string_view, std::string_view>;

bool Contains(std::string_view text, std::string_view word) {
  return text.find(word) != std::string_view::npos;
}

// The options of a lower-cased text, which the result points into; the last one of a word counts.
// Each alternative is a word and its value. "nearOffset" and "farOffset" belong to the grammar too,
// but with their capitals they never match.
LightOptions ParseOptions(std::string_view text) {
  static const std::regex kOption(
      "(rgb)[^0-9a-f]?([0-9a-f]{1,6})"
      "|(type).?(spot)"
      "|(shadow).?(on|off)"
      "|(bright)[^0-9]?([0-1]*\\.?[0-9]+)"
      "|(radius|cone|soft)[^0-9]?([0-9]*\\.?[0-9]+)"
      "|(res)[^0-9]?(32|64|128|256|512|1024|2048|4096)");
  LightOptions options;
  for (NameMatches match(text.begin(), text.end(), kOption), end; match != end; ++match) {
    size_t word = 1;
    while (!(*match)[word].matched) word += 2;
    options[Group(*match, word)] = Group(*match, word + 1);
  }
  return options;
}

// The type that a lower-cased name gives, kNone if it gives none.
CalLightType TypeFromName(std::string_view text) {
  if (Contains(text, "omni") || Contains(text, "lightpoint")) return CalLightType::kPoint;
  if (Contains(text, "lightdirection")) return CalLightType::kDirectional;
  if (Contains(text, "lighttarget")) return CalLightType::kSpot;
  if (Contains(text, "lightambient")) return CalLightType::kAmbient;
  return CalLightType::kNone;
}

const char* LogText(CalLightType type) {
  switch (type) {
    case CalLightType::kPoint:
      return "Omni";
    case CalLightType::kDirectional:
      return "Directional";
    case CalLightType::kSpot:
      return "Target";
    case CalLightType::kNone:
    case CalLightType::kAmbient:
      break;
  }
  return "None";
}

// A number that a float can't hold leaves its option unset.
std::string NameWithOptions(std::string name, const LightOptions& options) {
  for (const char* word : {"type", "shadow", "bright", "cone", "radius", "soft", "res"}) {
    const auto option = options.find(word);
    if (option == options.end()) continue;
    const std::string_view value = option->second;
    if (!IsDigit(value[0]) && value[0] != '.') {
      name.append(":").append(word).append("=").append(value);
    } else if (const float number = stringToFloat(value, -1.0F); number != -1.0F) {
      name.append(":").append(word).append("=");
      AppendNumber(name, number);
    }
  }
  return name;
}

void SetColorFromHex(std::string_view rgb, CalVector& color) {
  uint32_t value = 0;
  const auto parsed = std::from_chars(rgb.data(), rgb.data() + rgb.size(), value, 16);
  if (rgb.empty() || parsed.ec != std::errc()) return;
  color = {static_cast<float>((value >> 16) & 0xff) / 255.0F,
           static_cast<float>((value >> 8) & 0xff) / 255.0F,
           static_cast<float>(value & 0xff) / 255.0F};
}

std::string LogMessage(const std::string& name, CalLightType type, const std::string& newName,
                       const CalVector& color) {
  std::string message = name + " is a " + LogText(type) + " light named:" + newName + " colored:";
  for (const float component : {color.x, color.y, color.z}) {
    std::array<char, 16> text;
    // An attached light's colour is whatever its file holds.
    const float shown = component > 0.0F ? std::min(component, 1e6F) * 255.0F : 0.0F;
    std::snprintf(text.data(), text.size(), "%2u", static_cast<unsigned>(shown));
    message += text.data();
  }
  return message;
}

}  // namespace

float stringToFloat(std::string_view text, float fallback) {
  float value = fallback;
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), value);
  return parsed.ec == std::errc() ? value : fallback;
}

void getLightFromBone(const FbxNode* node, const std::string& name, CalLightType& type,
                      std::string& newName, CalVector& color) {
  color = {0.5F, 0.5F, 0.5F};
  type = CalLightType::kNone;
  newName = name;
  const FbxLight* light = node->GetLight();
  if (light != nullptr) {
    color = ToCalVector(FbxVector4(light->GetColor()));
    switch (light->GetLightType()) {
      case FbxLight::ePoint:
        type = CalLightType::kPoint;
        break;
      case FbxLight::eDirectional:
        type = CalLightType::kDirectional;
        break;
      case FbxLight::eSpot:
        type = CalLightType::kSpot;
        break;
      default:
        break;
    }
  }
  const std::string text = ToLower(name);
  if (light == nullptr && !Contains(text, "light") && !Contains(text, "omni")) return;

  const CalLightType named = TypeFromName(text);
  if (named != CalLightType::kNone) type = named;
  // Up to the first character that is neither letter nor digit; the whole name without one.
  static const std::regex kSplit("(.*?)[^a-z0-9](.*)");
  size_t stem = name.size();
  LightOptions options;
  NameMatch parts;
  const std::string_view matched = MatchedPart(text);
  if (std::regex_match(matched.begin(), matched.end(), parts, kSplit)) {
    stem = static_cast<size_t>(parts.length(1));
    options = ParseOptions(Group(parts, 2));
  }
  if (named == CalLightType::kSpot && Contains(text, "spot")) options["type"] = "spot";
  if (type != CalLightType::kNone) newName = NameWithOptions(name.substr(0, stem), options);
  SetColorFromHex(options["rgb"], color);
  LOG_INFO(LogMessage(name, type, newName, color));
}
