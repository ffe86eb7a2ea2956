#include "converter/skeleton/bone_lights.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <optional>

#include "cal3d/io/number_text.h"
#include "converter/base/log.h"
#include "converter/base/names.h"
#include "converter/base/text.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_node_attribute.h"

namespace {

// What the options of a name set; each holds what is "unset" at first.
struct LightOptions {
  std::string_view rgb;
  std::string_view type;
  std::string_view shadow;
  float bright = -1.0F;
  float radius = -1.0F;
  float cone = -1.0F;
  float soft = -1.0F;
  int res = 0;
};

bool IsHexDigit(char c) { return IsDigit(c) || (c >= 'a' && c <= 'f'); }

bool Contains(std::string_view text, std::string_view word) {
  return text.find(word) != std::string_view::npos;
}

// Each Match function takes the text behind an option's word and gives the length of separator and
// value, 0 if there is no value, with the value in `value`. They are written out rather than left
// to regular expressions because a name comes from a file and may be as long as it likes.

// Up to six hexadecimal digits, after at most one character that is none.
size_t MatchRgb(std::string_view text, std::string_view& value) {
  const size_t skip = !text.empty() && !IsHexDigit(text[0]) ? 1 : 0;
  size_t end = skip;
  while (end < text.size() && end < skip + 6 && IsHexDigit(text[end])) ++end;
  value = text.substr(std::min(skip, text.size()), end - skip);
  return value.empty() ? 0 : end;
}

// One of the words, after at most one character.
template <size_t N>
size_t MatchWord(std::string_view text, const std::array<std::string_view, N>& words,
                 std::string_view& value) {
  for (const size_t skip : {size_t{1}, size_t{0}}) {
    if (skip > text.size()) continue;
    for (const std::string_view word : words) {
      if (text.substr(skip).starts_with(word)) {
        value = word;
        return skip + word.size();
      }
    }
  }
  return 0;
}

// A decimal number, after at most one character that is no digit. `whole` says which digits may
// stand before the point; where another digit follows them, the number goes on as a whole one.
size_t MatchNumber(std::string_view text, std::string_view whole, std::string_view& value) {
  const auto lengthAt = [&](size_t start) {
    const auto skipDigits = [&](size_t i) {
      while (i < text.size() && IsDigit(text[i])) ++i;
      return i;
    };
    size_t i = start;
    while (i < text.size() && Contains(whole, text.substr(i, 1))) ++i;
    if (i + 1 < text.size() && text[i] == '.' && IsDigit(text[i + 1])) return skipDigits(i + 1);
    return skipDigits(i);
  };
  const size_t most = !text.empty() && !IsDigit(text[0]) ? 1 : 0;
  for (size_t skip = most + 1; skip-- > 0;) {
    const size_t end = lengthAt(skip);
    if (end > skip) {
      value = text.substr(skip, end - skip);
      return end;
    }
  }
  return 0;
}

// One of the resolutions, after at most one character that is no digit.
size_t MatchResolution(std::string_view text, std::string_view& value) {
  static constexpr std::array<std::string_view, 8> kResolutions = {"32",  "64",   "128",  "256",
                                                                   "512", "1024", "2048", "4096"};
  const size_t skip = !text.empty() && !IsDigit(text[0]) ? 1 : 0;
  for (const std::string_view resolution : kResolutions) {
    if (text.substr(skip).starts_with(resolution)) {
      value = resolution;
      return skip + resolution.size();
    }
  }
  return 0;
}

// The option at the start of `text`, written into `options`; its length, 0 if there is none. The
// words "nearOffset" and "farOffset" have a capital in the grammar, so that in a lower-cased text
// they never match.
size_t MatchOption(std::string_view text, LightOptions& options) {
  static constexpr std::string_view kDigits = "0123456789";
  std::string_view value;
  size_t length = 0;
  const auto behind = [&](std::string_view word) {
    return text.starts_with(word) ? std::optional(text.substr(word.size())) : std::nullopt;
  };
  const auto number = [&](std::string_view word, std::string_view whole, float& target) {
    const auto rest = behind(word);
    if (!rest || (length = MatchNumber(*rest, whole, value)) == 0) return false;
    target = stringToFloat(value, -1.0F);
    length += word.size();
    return true;
  };
  if (const auto rest = behind("rgb"); rest && (length = MatchRgb(*rest, value)) != 0) {
    options.rgb = value;
    return length + 3;
  }
  if (const auto rest = behind("type");
      rest && (length = MatchWord(*rest, std::array<std::string_view, 1>{"spot"}, value)) != 0) {
    options.type = value;
    return length + 4;
  }
  if (const auto rest = behind("shadow");
      rest &&
      (length = MatchWord(*rest, std::array<std::string_view, 2>{"on", "off"}, value)) != 0) {
    options.shadow = value;
    return length + 6;
  }
  if (number("bright", "01", options.bright) || number("radius", kDigits, options.radius) ||
      number("cone", kDigits, options.cone) || number("soft", kDigits, options.soft)) {
    return length;
  }
  if (const auto rest = behind("res"); rest && (length = MatchResolution(*rest, value)) != 0) {
    std::from_chars(value.data(), value.data() + value.size(), options.res);
    return length + 3;
  }
  return 0;
}

LightOptions ParseOptions(std::string_view text) {
  LightOptions options;
  while (!text.empty()) text.remove_prefix(std::max<size_t>(MatchOption(text, options), 1));
  return options;
}

// Where the stem ends in a lower-cased name: at the first character that is neither letter nor
// digit. A separator splits the name only if no line end stands on either side of it; none then
// means that the whole name is the stem.
size_t StemLength(std::string_view text) {
  const auto isSeparator = [](char c) { return !IsDigit(c) && (c < 'a' || c > 'z'); };
  const auto lineEnds = std::count_if(text.begin(), text.end(), IsLineEnd);
  if (lineEnds > 1) return text.size();
  const auto at = lineEnds == 1 ? std::find_if(text.begin(), text.end(), IsLineEnd)
                                : std::find_if(text.begin(), text.end(), isSeparator);
  return static_cast<size_t>(at - text.begin());
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

void AppendOption(std::string& name, const char* label, float value) {
  if (value == -1.0F) return;
  name += label;
  AppendNumber(name, value);
}

void AppendText(std::string& name, const char* label, std::string_view value) {
  if (!value.empty()) name.append(label).append(value);
}

std::string NameWithOptions(std::string name, const LightOptions& options) {
  AppendText(name, ":type=", options.type);
  AppendText(name, ":shadow=", options.shadow);
  AppendOption(name, ":bright=", options.bright);
  AppendOption(name, ":cone=", options.cone);
  AppendOption(name, ":radius=", options.radius);
  AppendOption(name, ":soft=", options.soft);
  if (options.res != 0) name.append(":res=").append(std::to_string(options.res));
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
    const FbxDouble3 attached = light->GetColor();
    color = {static_cast<float>(attached[0]), static_cast<float>(attached[1]),
             static_cast<float>(attached[2])};
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
  const size_t stem = StemLength(text);
  LightOptions options;
  if (stem < text.size()) options = ParseOptions(std::string_view(text).substr(stem + 1));
  if (named == CalLightType::kSpot && Contains(text, "spot")) options.type = "spot";
  if (type != CalLightType::kNone) newName = NameWithOptions(name.substr(0, stem), options);
  SetColorFromHex(options.rgb, color);
  LOG_INFO(LogMessage(name, type, newName, color));
}
