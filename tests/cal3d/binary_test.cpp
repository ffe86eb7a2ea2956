// The binary form: blocks built by hand, byte for byte, of several versions, and hostile ones.
#include <bit>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cal3d/sample_models.h"

namespace {

using testing::HasSubstr;
using testing::Not;

// Builds a block field by field.
class Block {
 public:
  explicit Block(std::string_view magic, std::int32_t version) : bytes_(magic) {
    bytes_ += '\0';
    I({version});
  }
  Block& I(std::initializer_list<std::int64_t> values) {
    for (const std::int64_t value : values) {
      for (int shift = 0; shift < 32; shift += 8)
        bytes_ += static_cast<char>(value >> shift & 0xFF);
    }
    return *this;
  }
  Block& F(std::initializer_list<float> values) {
    for (const float value : values) I({std::bit_cast<std::int32_t>(value)});
    return *this;
  }
  Block& S(std::string_view text) {
    I({static_cast<std::int64_t>(text.size()) + 1});
    bytes_ += text;
    bytes_ += '\0';
    return *this;
  }
  operator const std::string&() const { return bytes_; }

 private:
  std::string bytes_;
};

TEST(Binary, LayoutsOfTheCurrentVersion) {
  // Bones: name, translation, rotation, both again in bone space, parent, light, children.
  const std::string skeleton =
      Block("CSF", 919)
          .I({4})
          .F({0.25f, 1, 0})
          .S("Hips")
          .F({0.1f, 0, 100, 0, 0, 0, 1, -0.1f, 0, -100, 0.5f, -0.5f, 0.5f, 0.5f})
          .I({-1, 0})
          .F({0, 0, 0})
          .I({2, 1, 2})
          .S("omni")
          .F({1e-5f, 0, 100, 0, 0, 0, 1, -1e-5f, 0, -100, 0.5f, -0.5f, 0.5f, 0.5f})
          .I({0, 1})
          .F({1, 0.5f, 0})
          .I({0})
          .S("Spine")
          .F({3, 0, 100, 0, 0, 0, 1, -3, 0, -100, 0.5f, -0.5f, 0.5f, 0.5f})
          .I({0, 0})
          .F({0, 0, 0})
          .I({1, 3})
          .S("")
          .F({-7.25f, 0, 100, 0, 0, 0, 1, 7.25f, 0, -100, 0.5f, -0.5f, 0.5f, 0.5f})
          .I({2, 0})
          .F({0, 0, 0})
          .I({0});
  EXPECT_EQ(Saved(SampleSkeleton(), ".csf"), skeleton);

  const std::string mesh = Block("CMF", 919)
                               .I({3})
                               .I({4, 3, 1, 0, 0, 1, 1})
                               .F({0, 0, 0, 0, 0, 1, 1, 1, 1})
                               .I({-1, 0})
                               .F({0, 1})
                               .I({2, 0})
                               .F({0.75f})
                               .I({1})
                               .F({0.25f})
                               .F({0.1f, -2.5f, 1e20f, 0, 1, 0, 1, 0, 128 / 255.0f})
                               .I({-1, 0})
                               .F({0, 0})
                               .I({1, 1})
                               .F({1})
                               .F({3, 1, 100.5f, 1, 0, 0, 0, 0, 0})
                               .I({-1, 0})
                               .F({0.5f, 0.125f})
                               .I({1, 0})
                               .F({1})
                               .S("smile")
                               .I({1, 2})
                               .F({3, 4, 96.5f, 0, 0, 1})
                               .I({0, 1, 2})
                               .I({0, 1, 0, 0, 0, 0, 0})
                               .F({1, 2, 3, 0, 0, 1, 1, 1, 1})
                               .I({-1, 0, 0})
                               .I({0, 0, 0, 0, 0, 1, 0});
  EXPECT_EQ(Saved(SampleMesh(), ".cmf"), mesh);

  const std::string animation = Block("CAF", 919)
                                    .F({0.5f})
                                    .I({2})
                                    .I({3, 2})
                                    .F({0, 1, 2, 3, 0, 0, 0, 1})
                                    .F({0.5f, 0.1f, 0, -0.0f, 0, 0, 0.6f, -0.8f})
                                    .I({0, 0});
  EXPECT_EQ(Saved(SampleAnimation(), ".caf"), animation);
}

TEST(Binary, OlderVersionsLackFields) {
  const Block bone =
      Block("CSF", 910).I({1}).S("b").F({1, 2, 3, 0, 0, 0, 1, 4, 5, 6, 0, 0, 0, 1}).I({-1, 0});
  const auto skeleton = LoadSkeleton(bone);
  EXPECT_EQ(skeleton->sceneAmbientColor, CalVector());
  EXPECT_EQ(skeleton->coreBones[0]->lightType, CalLightType::kNone);
  EXPECT_EQ(skeleton->coreBones[0]->boneSpaceTranslation, (CalVector{4, 5, 6}));

  // Two coordinate sets, one spring and a level of detail are read past; no colours before 910 and
  // no morphs before 919.
  for (const bool colors : {false, true}) {
    Block block("CMF", colors ? 910 : 699);
    block.I({1}).I({7, 2, 1, 1, 1, 2});
    for (const float x : {1.0f, 2.0f}) {
      block.F({x, 0, 0, 0, 0, 1});
      if (colors) block.F({0, 1, 0});
      block.I({0, 3}).F({0.5f, 0.25f, 9, 9}).I({1, 5}).F({1, 0.125f});
    }
    block.I({0, 1}).F({2, 3}).I({1, 0, 1});
    const auto mesh = LoadMesh(block);
    const CalCoreSubmesh& submesh = *mesh->submeshes[0];
    EXPECT_EQ(submesh.coreMaterialThreadId, 7);
    EXPECT_EQ(submesh.vertices()[1].position, (CalVector4{2, 0, 0, 1}));
    EXPECT_EQ(submesh.vertexColors()[1], colors ? 0xFF00FF00 : 0xFFFFFFFF);
    EXPECT_EQ(submesh.textureCoordinates()[1].v, 0.25f);
    EXPECT_EQ(submesh.influences()[1].boneId, 5);
    EXPECT_EQ(submesh.faces()[0].vertexId[0], 1);
  }
}

TEST(Binary, RefusesEveryTruncation) {
  const std::string skeleton = Saved(SampleSkeleton(), ".csf");
  for (std::size_t length = 0; length < skeleton.size(); ++length) {
    EXPECT_THAT(SkeletonError(skeleton.substr(0, length)), Not("accepted")) << length;
  }
  const std::string mesh = Saved(SampleMesh(), ".cmf");
  for (std::size_t length = 0; length < mesh.size(); ++length) {
    EXPECT_THAT(MeshError(mesh.substr(0, length)), Not("accepted")) << length;
  }
  const std::string animation = Saved(SampleAnimation(), ".caf");
  for (std::size_t length = 0; length < animation.size(); ++length) {
    EXPECT_THAT(AnimationError(animation.substr(0, length)), Not("accepted")) << length;
  }
}

TEST(Binary, RefusesLyingCounts) {
  constexpr std::int32_t kMany = 0x7FFFFFFF;
  for (const std::int32_t count : {kMany, 2, -1}) {
    const auto csf = [] { return Block("CSF", 919); };
    const auto cmf = [] { return Block("CMF", 919); };
    const std::vector<float> bone(14, 0.0f);
    EXPECT_THAT(SkeletonError(csf().I({count}).F({0, 0, 0})), HasSubstr("bones doesn't fit"));
    EXPECT_THAT(SkeletonError(Block("CSF", 700).I({1, count})), HasSubstr("doesn't fit"));
    EXPECT_THAT(SkeletonError(Block("CSF", 700)
                                  .I({1})
                                  .S("b")
                                  .F({0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1})
                                  .I({-1, count, 0})),
                HasSubstr("children doesn't fit"));
    EXPECT_THAT(MeshError(cmf().I({count})), HasSubstr("submeshes doesn't fit"));
    EXPECT_THAT(MeshError(cmf().I({1, 0, count, 0, 0, 0, 0, 0})),
                HasSubstr("vertices doesn't fit"));
    EXPECT_THAT(MeshError(cmf().I({1, 0, 0, count, 0, 0, 0, 0})), HasSubstr("faces doesn't fit"));
    EXPECT_THAT(MeshError(cmf().I({1, 0, 0, 0, 0, count, 0, 0})), HasSubstr("springs doesn't fit"));
    EXPECT_THAT(MeshError(cmf().I({1, 0, 0, 0, 0, 0, 0, count})), HasSubstr("morphs doesn't fit"));
    EXPECT_THAT(
        MeshError(
            cmf().I({1, 0, 1, 0, 0, 0, 0, 0}).F({0, 0, 0, 0, 0, 0, 1, 1, 1}).I({-1, 0, count, 0})),
        HasSubstr("influences doesn't fit"));
    EXPECT_THAT(MeshError(cmf().I({1, 0, 0, 0, 0, 0, 0, 1}).S("m").I({count})),
                HasSubstr("blend vertices doesn't fit"));
    EXPECT_THAT(AnimationError(Block("CAF", 919).F({1}).I({count})),
                HasSubstr("tracks doesn't fit"));
    EXPECT_THAT(AnimationError(Block("CAF", 919).F({1}).I({1, 0, count, 0})),
                HasSubstr("keyframes doesn't fit"));
  }
  EXPECT_THAT(MeshError(Block("CMF", 919).I({1, 0, 0, 0, 0, 0, -1, 0})), HasSubstr("negative"));
  // The product of both counts overflows 64 bits.
  EXPECT_THAT(MeshError(Block("CMF", 919).I({1, 0, kMany, 0, 0, 0, kMany, 0})),
              HasSubstr("doesn't fit"));
}

TEST(Binary, RefusesBadIndicesStringsAndVersions) {
  const auto bone = [](std::int32_t parent, std::int32_t child) {
    return Block("CSF", 700)
        .I({1})
        .S("b")
        .F({0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1})
        .I({parent, 1, child});
  };
  EXPECT_THAT(SkeletonError(bone(1, 0)), HasSubstr("has the parent 1"));
  EXPECT_THAT(SkeletonError(bone(0, 0)), HasSubstr("own ancestor"));
  EXPECT_THAT(SkeletonError(bone(-1, 1)), HasSubstr("lists the child 1"));
  const std::string unclosed =
      Replaced(bone(-1, 0), std::string_view("\2\0\0\0b\0", 6), std::string_view("\2\0\0\0bb", 6));
  EXPECT_THAT(SkeletonError(unclosed), HasSubstr("no closing NUL"));
  EXPECT_THAT(SkeletonError(Replaced(bone(-1, 0), std::string_view("\2\0\0\0b\0", 6),
                                     std::string_view("\0\0\0\0b\0", 6))),
              HasSubstr("no closing NUL"));
  EXPECT_THAT(SkeletonError(Block("CSF", 698).I({0, 0})), HasSubstr("version 698"));
  EXPECT_THAT(MeshError(Block("CMF", 920).I({0})), HasSubstr("version 920"));
  EXPECT_THAT(MeshError(Block("CSF", 919).I({0})), HasSubstr("no Cal3D mesh"));

  const auto vertex = [](std::int32_t faces, std::int32_t morphs, std::int32_t bone_id) {
    return Block("CMF", 919)
        .I({1, 0, 1, faces, 0, 0, 0, morphs})
        .F({0, 0, 0, 0, 0, 1, 1, 1, 1})
        .I({-1, 0, 1, bone_id})
        .F({1});
  };
  EXPECT_EQ(MeshError(vertex(1, 0, 0).I({0, 0, 0})), "accepted");
  EXPECT_THAT(MeshError(vertex(1, 0, 0).I({0, 1, 0})), HasSubstr("vertex id 1 is out of range"));
  EXPECT_THAT(MeshError(vertex(1, 0, 0).I({0, 0, -1})), HasSubstr("vertex id -1 is out of range"));
  EXPECT_THAT(MeshError(vertex(0, 0, -1)), HasSubstr("bone id -1"));
  EXPECT_THAT(MeshError(vertex(0, 1, 0).S("m").I({1, 1}).F({0, 0, 0, 0, 0, 1})),
              HasSubstr("vertex id 1 is out of range"));
  EXPECT_THAT(AnimationError(Block("CAF", 919).F({1}).I({1, -7, 0})), HasSubstr("bone id -7"));
}

}  // namespace
