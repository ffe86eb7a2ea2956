// Named options of an import; "|" separates the levels of a name.
#pragma once

#include <map>
#include <string>

#include "fbx/core/fbx_object.h"

class FbxIOSettings : public FbxObject {
  FBX_OBJECT(FbxIOSettings)
  bool GetBoolProp(const std::string& path, bool fallback) const;
  std::string GetStringProp(const std::string& path, const std::string& fallback) const;
  void SetBoolProp(const std::string& path, bool value) { bools_[path] = value; }
  void SetStringProp(const std::string& path, const std::string& value) { strings_[path] = value; }

 private:
  std::map<std::string, bool> bools_;
  std::map<std::string, std::string> strings_;
};
