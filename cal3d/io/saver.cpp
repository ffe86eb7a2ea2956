#include "cal3d/io/saver.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "cal3d/io/binary_saver.h"
#include "cal3d/io/model_check.h"
#include "cal3d/io/output_file.h"
#include "cal3d/io/text_saver.h"

namespace {

bool WantsBinary(std::string_view path) {
  constexpr std::array<std::string_view, 5> kEndings = {".csf", ".cmf", ".crf", ".caf", ".cpf"};
  return std::ranges::any_of(kEndings, [path](std::string_view ending) {
    return path.size() >= ending.size() &&
           std::ranges::equal(path.substr(path.size() - ending.size()), ending, [](char a, char b) {
             return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b;
           });
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
