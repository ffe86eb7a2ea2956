#include "converter/material/texture_type.h"

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
