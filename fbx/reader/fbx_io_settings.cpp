#include "fbx/reader/fbx_io_settings.h"

FBX_OBJECT_DEFINE(FbxIOSettings, FbxObject, "", nullptr)

namespace {

template <typename T>
T Find(const std::map<std::string, T>& values, const std::string& path, const T& fallback) {
  const auto found = values.find(path);
  return found == values.end() ? fallback : found->second;
}

}  // namespace

bool FbxIOSettings::GetBoolProp(const std::string& path, bool fallback) const {
  return Find(bools_, path, fallback);
}

std::string FbxIOSettings::GetStringProp(const std::string& path,
                                         const std::string& fallback) const {
  return Find(strings_, path, fallback);
}
