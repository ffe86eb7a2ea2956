#include "converter/driver/material_export.h"

#include <string>
#include <vector>

#include <boost/filesystem.hpp>

#include "cal3d/io/saver.h"
#include "converter/base/complaint.h"
#include "converter/base/log.h"
#include "converter/base/names.h"
#include "converter/base/records.h"
#include "converter/material/material_text.h"
#include "converter/mesh/export_mesh.h"

namespace {

MaterialMasterMap MaterialsOfCommand(FbxWrapper& scene, const ConversionArguments& args) {
  return BuildMaterialMasterMap(ExportMesh(scene, args).ListMeshesForSkeleton().meshes);
}

// The supported channels in key order; the others are warned of.
CalCoreMaterial MakeMaterial(const MaterialMap& map) {
  CalCoreMaterial material;
  for (const auto& [key, value] : map) {
    if (key == _MATERIAL) continue;
    if (isSupportedTextureType(key)) {
      material.maps.push_back({getFileNameFromPath(value), getCal3dTextureType(key)});
    } else {
      AddTextureWarning(key, value);
    }
  }
  return material;
}

}  // namespace

void ExportMaterials(FbxWrapper& scene, const ConversionArguments& args) {
  LOG_INFO(args.toString());
  for (const auto& [map, id] : MaterialsOfCommand(scene, args)) {
    if (map.empty()) continue;
    const CalCoreMaterial material = MakeMaterial(map);
    if (material.maps.empty()) continue;
    const std::string& name = MaterialName(map);
    const std::string file = OutputPath(args, name, kTextureKind);
    if (!CalSaver::saveCoreMaterial(file, &material)) {
      ComplainOfOutput(file);
      continue;
    }
    AddOutput(kTextureKind.label, std::to_string(id) + ' ' + name, false);
    AddOutput("FILENAME", file, false);
    AddOutput(MaterialMapToString(map, false), true);
  }
}

void PrintTextureList(FbxWrapper& scene, const ConversionArguments& args) {
  const std::vector<std::string> files = ListFilesInDirectory(GetMediaFolder(args.inputFilename));
  for (auto file = files.rbegin(); file != files.rend(); ++file) {
    PrintFormatted("%s: %s\n", _TEXTURE, encodeName(args.encodeNames, *file).c_str());
  }
  Print("\n");

  const MaterialMasterMap master = MaterialsOfCommand(scene, args);
  for (const std::string& text : MaterialMasterMapToStrings(master)) {
    AddOutput(_MATERIAL, text, true);
  }
  std::string name;
  for (const std::string& text : MaterialMasterMapToTextureStrings(master, name)) {
    AddOutput(_TEXTURE, text, true);
  }
}

namespace fs = boost::filesystem;

namespace {

constexpr char kTexturesSuffix[] = "_textures";

}  // namespace

std::string GetMediaFolder(const std::string& fbxFileName) {
  return getBaseDirectoryFromFBXFileName(fbxFileName) + ".fbm";
}

std::vector<std::string> gatherTextureListFromDirectory(const std::string& fbxFileName) {
  ListFilesInDirectory(getBaseDirectoryFromFBXFileName(fbxFileName) + kTexturesSuffix);
  return {};
}

bool MoveFileFromSDKTextureDirectoryToZEVOTextureDirectory(const std::string& fbxFileName,
                                                           const std::string& texture,
                                                           const ConversionArguments& args) {
  if (texture.empty() || !fileExists(GetMediaFolder(fbxFileName))) return true;
  const std::string prefix =
      args.directoryForOutputFiles.empty()
          ? getBaseDirectoryFromFBXFileName(fbxFileName)
          : args.directoryForOutputFiles + getBaseFilenameFromFBXFileName(fbxFileName);
  CheckDirectoryExistsAndCreate(prefix + kTexturesSuffix);
  if (fs::path(texture).has_root_directory()) {
    fs::rename(texture, prefix);
  } else {
    fs::copy_file(texture, prefix, fs::copy_options::overwrite_existing);
  }
  return true;
}
