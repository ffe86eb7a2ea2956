#include "cal3d/io/saver.h"

#include <algorithm>
#include <string_view>

#include "cal3d/io/file_format.h"
#include "cal3d/io/file_kinds.h"
#include "cal3d/io/forms.h"
#include "cal3d/io/model_check.h"
#include "cal3d/io/output_file.h"

namespace {

bool WantsBinary(std::string_view path) {
  return std::ranges::any_of(kFileKinds, [path](const CalFileKind& kind) {
    const std::string_view ending = kind.binaryExtension;
    return path.size() >= ending.size() &&
           std::ranges::equal(path.substr(path.size() - ending.size()), ending, {}, AsciiLower);
  });
}

template <typename Object>
bool Save(const std::string& path, const Object& object) {
  OutputFile file(path);
  if (WantsBinary(path)) {
    WriteBinary(file, object);
  } else {
    WriteText(file, object);
  }
  return file.Commit();
}

template <typename Object>
bool SaveIfGood(const std::string& path, const Object* object) {
  return object != nullptr && FaultOf(*object).empty() && Save(path, *object);
}

}  // namespace

bool CalSaver::saveCoreSkeleton(const std::string& path, const CalCoreSkeleton* skeleton) {
  return SaveIfGood(path, skeleton);
}

bool CalSaver::saveCoreMesh(const std::string& path, const CalCoreMesh* mesh) {
  return SaveIfGood(path, mesh);
}

bool CalSaver::saveCoreMaterial(const std::string& path, const CalCoreMaterial* material) {
  return material != nullptr && Save(path, *material);
}

bool CalSaver::saveCoreAnimation(const std::string& path, const CalCoreAnimation* animation) {
  return SaveIfGood(path, animation);
}

bool CalSaver::saveCoreMorphAnimation(const std::string& path,
                                      const CalCoreMorphAnimation* animation) {
  return animation != nullptr && Save(path, *animation);
}
