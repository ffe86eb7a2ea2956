#include "converter/material/material_text.h"

#include <array>

#include "converter/base/names.h"
#include "converter/base/records.h"

namespace {

struct Channel {
  std::string_view name;
  const char* cal3dType;
};

constexpr std::array<Channel, 5> kChannels{{{"DiffuseColor", "Diffuse Color"},
                                            {"NormalMap", "Normal"},
                                            {"SpecularColor", "Specular"},
                                            {"TransparencyFactor", "Opacity"},
                                            {"TransparentColor", "Opacity"}}};

const Channel* FindChannel(std::string_view name) {
  for (const Channel& channel : kChannels) {
    if (channel.name == name) return &channel;
  }
  return nullptr;
}

}  // namespace

bool isSupportedTextureType(std::string_view channel) { return FindChannel(channel) != nullptr; }

std::string getCal3dTextureType(std::string_view channel) {
  const Channel* found = FindChannel(channel);
  return found == nullptr ? std::string() : found->cal3dType;
}

void AddTextureWarning(const std::string& channel, const std::string& file) {
  constexpr size_t kLongestFolder = 50;
  const std::string base = getFileNameFromPath(file);
  std::string folder = file.substr(0, file.size() - base.size());
  if (folder.size() > kLongestFolder) folder = folder.substr(0, kLongestFolder) + "...\\";
  AddWarning(channel + " is not a supported use for texture map " + folder + base);
}

std::string MaterialMapToString(const MaterialMap& map, bool withName) {
  std::string text;
  if (withName) text = MaterialName(map) + ' ';
  bool first = true;
  for (const auto& [key, value] : map) {
    if (!isSupportedTextureType(key)) continue;
    if (!first) text += ' ';
    first = false;
    text.append(_TEXTURE).append(": ").append(key).append(" ").append(value);
  }
  return text;
}

std::vector<std::string> MaterialMasterMapToStrings(const MaterialMasterMap& master) {
  std::vector<std::string> texts;
  for (const auto& [map, id] : master) {
    if (!map.empty()) texts.push_back(std::to_string(id) + ' ' + MaterialMapToString(map, true));
  }
  return texts;
}

std::vector<std::string> MaterialMapToTextureStrings(const MaterialMap& map, std::string& name) {
  name = MaterialName(map);
  std::vector<std::string> texts;
  for (const auto& [key, value] : map) {
    if (key == _MATERIAL) continue;
    if (isSupportedTextureType(key)) {
      texts.push_back(key + " FILENAME: " + value + " " + _MATERIAL + ": " + name);
    } else {
      AddTextureWarning(key, value);
    }
  }
  return texts;
}

std::vector<std::string> MaterialMasterMapToTextureStrings(const MaterialMasterMap& master,
                                                           std::string& name) {
  std::vector<std::string> texts;
  for (const auto& [map, id] : master) {
    if (map.empty()) continue;
    for (std::string& text : MaterialMapToTextureStrings(map, name)) {
      texts.push_back(std::move(text));
    }
  }
  return texts;
}
