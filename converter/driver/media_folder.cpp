#include "converter/driver/media_folder.h"

#include <boost/filesystem.hpp>

#include "converter/base/names.h"

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
