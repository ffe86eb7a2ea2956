// Small objects of every kind for the tests of saver and loader, and their way to a file and back.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "cal3d/io/loader.h"
#include "cal3d/io/saver.h"
#include "cal3d/model/core_animation.h"
#include "cal3d/model/core_mesh.h"
#include "cal3d/model/core_skeleton.h"
#include "tests/support/temp_dir.h"

// A root with two children, one of them a light and one without a name.
CalCoreSkeleton SampleSkeleton();
// A submesh with coordinates, colours, a vertex of two bones and a morph; one without coordinates
// whose vertex has no bone; and an empty one.
CalCoreMesh SampleMesh();
// Maps with and without names and types.
CalCoreMaterial SampleMaterial();
// Two tracks, one of them without keyframes.
CalCoreAnimation SampleAnimation();
CalCoreMorphAnimation SampleMorphAnimation();

// The saver and the loader of a kind by its model's class.
template <typename Model>
struct CalKind;
#define CAL_KIND(Kind)                                                                      \
  template <>                                                                               \
  struct CalKind<CalCore##Kind> {                                                           \
    static constexpr auto kSave = &CalSaver::saveCore##Kind;                                \
    static constexpr auto kLoad = &CalLoader::loadCore##Kind;                               \
  };                                                                                        \
  inline auto Load##Kind(const std::string& bytes) { return Loaded<CalCore##Kind>(bytes); } \
  inline auto Kind##Error(const std::string& bytes) { return ErrorOf(Load##Kind, bytes); }

// The bytes that the saver writes under a name with that ending.
template <typename Model>
std::string Saved(const Model& model, std::string_view ending) {
  const TempDir folder;
  const std::string path = folder.File("object") + std::string(ending);
  EXPECT_TRUE(CalKind<Model>::kSave(path, &model));
  return ReadFile(path);
}
template <typename Model>
auto Loaded(const std::string& bytes) {
  return CalKind<Model>::kLoad(CalBufferSource(bytes.data(), bytes.size()));
}
// What the loader says about a block that it refuses; "accepted" if it takes it.
template <typename Load>
std::string ErrorOf(const Load& load, const std::string& bytes) {
  try {
    return load(bytes) ? "accepted" : "null";
  } catch (const std::exception& error) {
    return error.what();
  }
}

// LoadSkeleton and SkeletonError, and the same of the other kinds.
CAL_KIND(Skeleton)
CAL_KIND(Mesh)
CAL_KIND(Material)
CAL_KIND(Animation)
CAL_KIND(MorphAnimation)
#undef CAL_KIND

// The text with the first `from` in it replaced; a test failure if there is none.
std::string Replaced(std::string text, std::string_view from, std::string_view to);
