#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cal3d/model/core_animation.h"
#include "cal3d/model/core_mesh.h"
#include "cal3d/model/core_skeleton.h"

namespace {

using testing::ElementsAre;

bool IsAligned(const void* at) { return reinterpret_cast<uintptr_t>(at) % 16 == 0; }

TEST(SseArray, DoublesItsAlignedStorage) {
  cal3d::SSEArray<VertexOffset> array;
  std::vector<uint32_t> capacities = {array.capacity()};
  for (int32_t i = 0; i < 5; ++i) {
    // The third element is a copy of one in the storage that the call replaces.
    array.push_back(i == 2 ? array[1] : VertexOffset{i, {1, 2, 3, 4}, {}});
    capacities.push_back(array.capacity());
    EXPECT_TRUE(IsAligned(array.data()));
    EXPECT_TRUE(IsAligned(&array[array.size() - 1].normal));
  }
  EXPECT_THAT(capacities, ElementsAre(0, 1, 2, 4, 4, 8));
  EXPECT_THAT(std::vector<int32_t>({array[0].vertexId, array[1].vertexId, array[2].vertexId,
                                    array[3].vertexId, array[4].vertexId}),
              ElementsAre(0, 1, 1, 3, 4));

  cal3d::SSEArray<VertexOffset> copy = array;
  copy[0].vertexId = 9;
  EXPECT_EQ(array[0].vertexId, 0);
  array = std::move(copy);
  EXPECT_EQ(array.size(), 5u);
  EXPECT_EQ(array[0].vertexId, 9);
}

TEST(CoreSubmesh, ClosesEveryRunOfInfluences) {
  CalCoreSubmesh submesh(2, true, 0);
  EXPECT_EQ(submesh.vertices().size(), 0u);
  // The flags of the arguments are wrong on purpose.
  submesh.addVertex({{1, 2, 3, 1}, {}}, 1, {{5, 0.5F, 1}, {6, 0.5F, 0}});
  submesh.addVertex({}, 2, {});
  submesh.addVertex({}, 3, {{7, 1, 0}});
  std::vector<std::pair<int32_t, uint32_t>> runs;
  for (const auto& influence : submesh.influences()) {
    runs.emplace_back(influence.boneId, influence.lastInfluenceForThisVertex);
  }
  EXPECT_THAT(runs,
              ElementsAre(std::pair(5, 0), std::pair(6, 1), std::pair(-1, 1), std::pair(7, 1)));
  EXPECT_TRUE(IsAligned(&submesh.vertices()[1].normal));

  submesh.setTextureCoordinate(1, {0.5F, 2});
  submesh.setTextureCoordinate(3, {9, 9});
  submesh.setTextureCoordinate(-1, {9, 9});
  ASSERT_EQ(submesh.textureCoordinates().size(), 3u);
  EXPECT_EQ(submesh.textureCoordinates()[1].v, 2);
  EXPECT_EQ(submesh.textureCoordinates()[2].u, 0);
}

TEST(CoreSkeleton, FillsInChildrenAndOwnsItsList) {
  const auto bone = [](int parent) { return boost::make_shared<CalCoreBone>("b", parent); };
  std::vector<boost::shared_ptr<CalCoreBone>> bones = {bone(-1), bone(2), bone(0), bone(0),
                                                       bone(99)};
  CalCoreSkeleton first(bones);
  const CalCoreSkeleton second(bones);  // shares the bones: the children mustn't double
  EXPECT_THAT(bones[0]->childIds, ElementsAre(2, 3));
  EXPECT_THAT(bones[2]->childIds, ElementsAre(1));
  const CalCoreSkeleton copy = first;
  EXPECT_NE(&copy.coreBones, &first.coreBones);
  EXPECT_EQ(copy.coreBones, bones);
  EXPECT_EQ(first.getCoreBoneId("b"), 0);
  EXPECT_EQ(first.getCoreBoneId("c"), -1);
  EXPECT_TRUE(CalCoreSkeleton({}).coreBones.empty());
}

TEST(CoreTrack, BlendsBetweenItsKeyframes) {
  const float half = std::sqrt(0.5F);
  CalCoreAnimation animation;
  // A quarter turn about z, whose second quaternion stands for the same turn with its sign changed.
  animation.tracks.push_back(
      {4, {{1, {0, 0, 0, 1}, {0, 0, 0}}, {3, {0, 0, -half, -half}, {10, 0, -4}}}});
  EXPECT_EQ(animation.getCoreTrack(5), nullptr);
  const CalCoreTrack* track = animation.getCoreTrack(4);
  ASSERT_NE(track, nullptr);
  EXPECT_TRUE(CalCoreTrack(*track).rotates);
  EXPECT_FALSE(CalCoreTrack(1, {{0, {}, {1, 0, 0}}, {1, {}, {1, 0, 0}}}).translates);
  const CalTransform at = track->getCurrentTransform(2);
  EXPECT_EQ(at.translation, (CalVector{5, 0, -2}));
  EXPECT_NEAR(at.rotation.z, std::sin(std::acos(0.0F) / 4), 1e-6);
  EXPECT_NEAR(at.rotation.w, std::cos(std::acos(0.0F) / 4), 1e-6);
  EXPECT_EQ(track->getCurrentTransform(-1).translation, (CalVector{0, 0, 0}));
  EXPECT_EQ(track->getCurrentTransform(3600).translation, (CalVector{10, 0, -4}));
  EXPECT_EQ(track->getCurrentTransform(std::numeric_limits<float>::quiet_NaN()).translation.x, 10);
  EXPECT_EQ(CalCoreTrack(0, {}).getCurrentTransform(1).rotation, (CalQuaternion{0, 0, 0, 1}));
  // Two keyframes at one time leave nothing to divide by.
  const CalCoreTrack jump(0, {{1, {}, {1, 0, 0}}, {1, {}, {2, 0, 0}}});
  EXPECT_EQ(jump.getCurrentTransform(1).translation.x, 2);
}

}  // namespace
