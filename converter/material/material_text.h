// The texture channels that have a meaning in a Cal3D material, and the text forms of materials in
// listings and export records.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "converter/material/material_master_map.h"

// Channels are compared exactly; a layer of a layered texture is no supported channel.
bool isSupportedTextureType(std::string_view channel);
// The type of a material's map, "Diffuse Color" for "DiffuseColor"; "" if unsupported.
std::string getCal3dTextureType(std::string_view channel);
// Warns that the texture of an unsupported channel is left out. The file's folder is shortened to
// its first 50 bytes.
void AddTextureWarning(const std::string& channel, const std::string& file);

// "TEXTURE: <channel> <file>" for each supported channel, separated by blanks, after the material's
// name and a blank if `withName`.
std::string MaterialMapToString(const MaterialMap& map, bool withName);
// "<id> " and the text of the material with its name, for each that isn't empty.
std::vector<std::string> MaterialMasterMapToStrings(const MaterialMasterMap& master);
// "<channel> FILENAME: <file> MATERIAL: <name>" for each supported channel; the others are warned
// of. `name` gets the material's name.
std::vector<std::string> MaterialMapToTextureStrings(const MaterialMap& map, std::string& name);
// The texts of all materials; `name` is left with the last one's name.
std::vector<std::string> MaterialMasterMapToTextureStrings(const MaterialMasterMap& master,
                                                           std::string& name);
