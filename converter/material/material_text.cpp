#include "converter/material/material_text.h"

#include "converter/material/texture_type.h"

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
