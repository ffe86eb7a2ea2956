// The texture channels that have a meaning in a Cal3D material.
#pragma once

#include <string>
#include <string_view>

// Channels are compared exactly; a layer of a layered texture is no supported channel.
bool isSupportedTextureType(std::string_view channel);
// The type of a material's map, "Diffuse Color" for "DiffuseColor"; "" if unsupported.
std::string getCal3dTextureType(std::string_view channel);
// Warns that the texture of an unsupported channel is left out. The file's folder is shortened to
// its first 50 bytes.
void AddTextureWarning(const std::string& channel, const std::string& file);
