// The binary form: blocks built by hand, byte for byte, of several versions, and hostile ones.
#include <bit>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cal3d/sample_models.h"

namespace {

using testing::HasSubstr;

using Numbers = std::vector<float>;

void Append(std::string& block, int32_t value) {
  for (int shift = 0; shift < 32; shift += 8) block += static_cast<char>(value >> shift & 0xFF);
}
void Append(std::string& block, float value) { Append(block, std::bit_cast<int32_t>(value)); }
void Append(std::string& block, std::string_view text) {
  Append(block, static_cast<int32_t>(text.size()) + 1);
  block.append(text).push_back('\0');
}
void Append(std::string& block, const Numbers& numbers) {
  for (const float number : numbers) Append(block, number);
}

// A block of the values, each as its type is stored.
template <typename... Values>
std::string Block(std::string_view magic, int32_t version, const Values&... values) {
  std::string block(magic);
  block += '\0';
  Append(block, version);
  (Append(block, values), ...);
  return block;
}

TEST(Binary, LayoutsOfTheCurrentVersion) {
  // Bones: name, translation, rotation, both again in bone space, parent, light, children.
  const auto transforms = [](float x) {
    return Numbers{x, 0, 100, 0, 0, 0, 1, -x, 0, -100, 0.5F, -0.5F, 0.5F, 0.5F};
  };
  EXPECT_EQ(Saved(SampleSkeleton(), ".csf"),
            Block("CSF", 919, 3, Numbers{0.25F, 1, 0},                         //
                  "Hips", transforms(0.1F), -1, 0, Numbers{0, 0, 0}, 2, 1, 2,  //
                  "omni", transforms(1e-5F), 0, 1, Numbers{1, 0.5F, 0}, 0,     //
                  "", transforms(-7.25F), 0, 0, Numbers{0, 0, 0}, 0));
  // Submeshes: seven counts; vertices of position, normal, colour, two numbers that are fixed,
  // texture coordinates and influences; morphs; faces.
  EXPECT_EQ(Saved(SampleMesh(), ".cmf"),
            Block("CMF", 919, 3,                                                          //
                  4, 3, 1, 0, 0, 1, 1,                                                    //
                  Numbers{0, 0, 0, 0, 0, 1, 1, 1, 1}, -1, 0, Numbers{0, 1},               //
                  2, 0, 0.75F, 1, 0.25F,                                                  //
                  Numbers{0.1F, -2.5F, 1e20F, 0, 1, 0, 1, 0, 128 / 255.0F}, -1, 0,        //
                  Numbers{0, 0}, 1, 1, 1.0F,                                              //
                  Numbers{3, 1, 100.5F, 1, 0, 0, 0, 0, 0}, -1, 0, Numbers{0.5F, 0.125F},  //
                  1, 0, 1.0F,                                                             //
                  "smile", 1, 2, Numbers{3, 4, 96.5F, 0, 0, 1},                           //
                  0, 1, 2,                                                                //
                  0, 1, 0, 0, 0, 0, 0,                                                    //
                  Numbers{1, 2, 3, 0, 0, 1, 1, 1, 1}, -1, 0, 0,                           //
                  0, 0, 0, 0, 0, 1, 0));
  EXPECT_EQ(Saved(SampleAnimation(), ".caf"),
            Block("CAF", 919, 0.5F, 2,                               //
                  3, 2, Numbers{0, 1, 2, 3, 0, 0, 0, 1},             //
                  Numbers{0.5F, 0.1F, 0, -0.0F, 0, 0, 0.6F, -0.8F},  //
                  0, 0));
}

TEST(Binary, OlderVersionsLackFields) {
  const auto skeleton = LoadSkeleton(
      Block("CSF", 910, 1, "b", Numbers{1, 2, 3, 0, 0, 0, 1, 4, 5, 6, 0, 0, 0, 1}, -1, 0));
  EXPECT_EQ(skeleton->sceneAmbientColor, CalVector());
  EXPECT_EQ(skeleton->coreBones[0]->lightType, CalLightType::kNone);
  EXPECT_EQ(skeleton->coreBones[0]->boneSpaceTranslation, (CalVector{4, 5, 6}));

  const auto material = LoadMaterial(Block("CRF", 913, 1, 2, 3, 0.5F, 2, "a.png", "b.png"));
  EXPECT_EQ(material->maps.size(), 2U);
  EXPECT_EQ(material->maps[1].filename, "b.png");
  EXPECT_EQ(material->maps[1].type, "");

  // Two coordinate sets, one spring and a level of detail are read past; no colours before 910 and
  // no morphs before 919.
  for (const bool colors : {false, true}) {
    const Numbers color = colors ? Numbers{0, 1, 0} : Numbers{};
    const Numbers end{0.5F, 0.25F, 9, 9};
    const auto mesh =
        LoadMesh(Block("CMF", colors ? 910 : 699, 1, 7, 2, 1, 1, 1, 2,                   //
                       Numbers{1, 0, 0, 0, 0, 1}, color, 0, 3, end, 1, 5, 1.0F, 0.125F,  //
                       Numbers{2, 0, 0, 0, 0, 1}, color, 0, 3, end, 1, 5, 1.0F, 0.125F,  //
                       0, 1, 2.0F, 3.0F, 1, 0, 1));
    const CalCoreSubmesh& submesh = *mesh->submeshes[0];
    EXPECT_EQ(submesh.coreMaterialThreadId, 7);
    EXPECT_EQ(submesh.vertices()[1].position, (CalVector4{2, 0, 0, 1}));
    EXPECT_EQ(submesh.vertexColors()[1], colors ? 0xFF00FF00 : 0xFFFFFFFF);
    EXPECT_EQ(submesh.textureCoordinates()[1].v, 0.25F);
    EXPECT_EQ(submesh.influences()[1].boneId, 5);
    EXPECT_EQ(submesh.faces()[0].vertexId[0], 1);
  }
}

TEST(Binary, RefusesEveryTruncation) {
  const auto check = [](const std::string& block, const auto& error) {
    for (size_t length = 0; length < block.size(); ++length) {
      EXPECT_NE(error(block.substr(0, length)), "accepted") << block.substr(0, 3) << length;
    }
  };
  check(Saved(SampleSkeleton(), ".csf"), SkeletonError);
  check(Saved(SampleMesh(), ".cmf"), MeshError);
  check(Saved(SampleMaterial(), ".crf"), MaterialError);
  check(Saved(SampleAnimation(), ".caf"), AnimationError);
  check(Saved(SampleMorphAnimation(), ".cpf"), MorphAnimationError);
}

const Numbers kTransforms{0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1};

TEST(Binary, RefusesLyingCounts) {
  constexpr int32_t kMany = 0x7FFFFFFF;
  for (const int32_t count : {kMany, 2, -1}) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {SkeletonError(Block("CSF", 919, count, Numbers{0, 0, 0})), "bones"},
        {SkeletonError(Block("CSF", 700, 1, count)), ""},
        {SkeletonError(Block("CSF", 700, 1, "b", kTransforms, -1, count, 0)), "children"},
        {MeshError(Block("CMF", 919, count)), "submeshes"},
        {MeshError(Block("CMF", 919, 1, 0, count, 0, 0, 0, 0, 0)), "vertices"},
        {MeshError(Block("CMF", 919, 1, 0, 0, count, 0, 0, 0, 0)), "faces"},
        {MeshError(Block("CMF", 919, 1, 0, 0, 0, 0, count, 0, 0)), "springs"},
        {MeshError(Block("CMF", 919, 1, 0, 0, 0, 0, 0, 0, count)), "morphs"},
        {MeshError(Block("CMF", 919, 1, 0, 1, 0, 0, 0, 0, 0, Numbers{0, 0, 0, 0, 0, 0, 1, 1, 1}, -1,
                         0, count, 0)),
         "influences"},
        {MeshError(Block("CMF", 919, 1, 0, 0, 0, 0, 0, 0, 1, "m", count)), "blend vertices"},
        {AnimationError(Block("CAF", 919, 1.0F, count)), "tracks"},
        {AnimationError(Block("CAF", 919, 1.0F, 1, 0, count, 0)), "keyframes"},
        {MaterialError(Block("CRF", 919, 0, 0, 0, 0.0F, count)), "maps"},
        {MorphAnimationError(Block("CPF", 919, 1.0F, count)), "tracks"},
        {MorphAnimationError(Block("CPF", 919, 1.0F, 1, "m", count)), "keyframes"},
    };
    for (const auto& [error, what] : cases) EXPECT_THAT(error, HasSubstr(what + " doesn't fit"));
  }
  EXPECT_THAT(MeshError(Block("CMF", 919, 1, 0, 0, 0, 0, 0, -1, 0)), HasSubstr("negative"));
  // The product of both counts overflows 64 bits.
  EXPECT_THAT(MeshError(Block("CMF", 919, 1, 0, kMany, 0, 0, 0, kMany, 0)),
              HasSubstr("doesn't fit"));
}

TEST(Binary, RefusesBadIndicesStringsAndVersions) {
  const auto bone = [](int32_t parent, int32_t child) {
    return Block("CSF", 700, 1, "b", kTransforms, parent, 1, child);
  };
  const std::string_view name("\2\0\0\0b\0", 6);
  const auto vertex = [](int32_t morphs, int32_t bone_id, const auto&... rest) {
    const int32_t faces = sizeof...(rest) == 3 ? 1 : 0;
    return MeshError(Block("CMF", 919, 1, 0, 1, faces, 0, 0, 0, morphs,
                           Numbers{0, 0, 0, 0, 0, 1, 1, 1, 1}, -1, 0, 1, bone_id, 1.0F, rest...));
  };
  const std::vector<std::pair<std::string, std::string>> cases = {
      {SkeletonError(bone(1, 0)), "has the parent 1"},
      {SkeletonError(bone(0, 0)), "own ancestor"},
      {SkeletonError(bone(-1, 1)), "lists the child 1"},
      {SkeletonError(Replaced(bone(-1, 0), name, {"\2\0\0\0bb", 6})), "no closing NUL"},
      {SkeletonError(Replaced(bone(-1, 0), name, {"\0\0\0\0b\0", 6})), "no closing NUL"},
      {SkeletonError(Block("CSF", 698, 0, 0)), "version 698"},
      {MeshError(Block("CMF", 920, 0)), "version 920"},
      {MeshError(Block("CSF", 919, 0)), "no Cal3D mesh"},
      {vertex(0, 0, 0, 0, 0), "accepted"},
      {vertex(0, 0, 0, 1, 0), "vertex id 1 is out of range"},
      {vertex(0, 0, 0, 0, -1), "vertex id -1 is out of range"},
      {vertex(0, -1), "bone id -1"},
      {vertex(1, 0, "m", 1, 1, Numbers{0, 0, 0, 0, 0, 1}), "vertex id 1 is out of range"},
      {AnimationError(Block("CAF", 919, 1.0F, 1, -7, 0)), "bone id -7"},
  };
  for (const auto& [error, expected] : cases) EXPECT_THAT(error, HasSubstr(expected));
}

}  // namespace
