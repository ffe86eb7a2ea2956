#include "tests/cal3d/sample_models.h"

#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

namespace {

boost::shared_ptr<CalCoreBone> Bone(const std::string& name, int parent, float seed) {
  auto bone = boost::make_shared<CalCoreBone>(name, parent);
  bone->relativeTranslation = {seed, 0, 100};
  bone->relativeRotation = {0, 0, 0, 1};
  bone->boneSpaceTranslation = {-seed, 0, -100};
  bone->boneSpaceRotation = {0.5F, -0.5F, 0.5F, 0.5F};
  return bone;
}

}  // namespace

CalCoreSkeleton SampleSkeleton() {
  std::vector<boost::shared_ptr<CalCoreBone>> bones = {Bone("Hips", -1, 0.1F),
                                                       Bone("omni", 0, 1e-5F), Bone("", 0, -7.25F)};
  bones[1]->lightType = CalLightType::kPoint;
  bones[1]->lightColor = {1, 0.5F, 0};
  CalCoreSkeleton skeleton(bones);
  skeleton.sceneAmbientColor = {0.25F, 1, 0};
  return skeleton;
}

CalCoreMesh SampleMesh() {
  auto skin = boost::make_shared<CalCoreSubmesh>(3, true, 1);
  skin->coreMaterialThreadId = 4;
  skin->addVertex({{0, 0, 0, 1}, {0, 0, 1, 0}}, 0xFFFFFFFF, {{0, 0.75F, 0}, {1, 0.25F, 0}});
  skin->addVertex({{0.1F, -2.5F, 1e20F, 1}, {0, 1, 0, 0}}, 0xFFFF0080, {{1, 1, 0}});
  skin->addVertex({{3, 1, 100.5F, 1}, {1, 0, 0, 0}}, 0xFF000000, {{0, 1, 0}});
  skin->setTextureCoordinate(0, {0, 1});
  skin->setTextureCoordinate(2, {0.5F, 0.125F});
  skin->addFace({{0, 1, 2}});
  cal3d::SSEArray<VertexOffset> offsets;
  offsets.push_back({2, {0, 3, -4, 0}, {0, 0, 1, 0}});
  skin->addMorphTarget(boost::make_shared<CalCoreMorphTarget>("smile", 3, offsets));

  auto bare = boost::make_shared<CalCoreSubmesh>(1, false, 0);
  bare->addVertex({{1, 2, 3, 1}, {0, 0, 1, 0}}, 0xFFFFFFFF, {});
  CalCoreMesh mesh;
  mesh.submeshes = {skin, bare, boost::make_shared<CalCoreSubmesh>(0, true, 0)};
  return mesh;
}

CalCoreAnimation SampleAnimation() {
  CalCoreAnimation animation;
  animation.duration = 0.5F;
  animation.tracks.emplace_back(
      3, std::vector<CalCoreKeyframe>{{0, {0, 0, 0, 1}, {1, 2, 3}},
                                      {0.5F, {0, 0, 0.6F, -0.8F}, {0.1F, 0, -0.0F}}});
  animation.tracks.emplace_back(0, std::vector<CalCoreKeyframe>());
  return animation;
}

CalCoreMaterial SampleMaterial() {
  return {{{"skin & <bone>.png", "Diffuse Color"}, {"", ""}, {" ", "Normal"}}};
}

CalCoreMorphAnimation SampleMorphAnimation() {
  return {0.25F, {{"smile \"wide\"", {{0, 0.5F}, {0.25F, 1}}}, {"", {}}}};
}

std::string Replaced(std::string text, std::string_view from, std::string_view to) {
  const size_t at = text.find(from);
  if (at == std::string::npos) {
    ADD_FAILURE() << "no " << from << " in\n" << text;
    return text;
  }
  return text.replace(at, from.size(), to);
}
