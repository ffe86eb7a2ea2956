// What a model becomes in a .glb.
#include "gltf/glb_export.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/gltf/glb_file.h"

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

CalVector Turned(const CalQuaternion& q, const CalVector& v) {
  const auto cross = [](const CalVector& a, const CalVector& b) {
    return CalVector{a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
  };
  const CalVector axis = {q.x, q.y, q.z};
  const CalVector once = cross(axis, v);
  const CalVector twice = cross(axis, once);
  return {v.x + 2 * (q.w * once.x + twice.x), v.y + 2 * (q.w * once.y + twice.y),
          v.z + 2 * (q.w * once.z + twice.z)};
}

// A bone whose bone space undoes its place, `global`, which is also where its parent stands still.
boost::shared_ptr<CalCoreBone> Bone(const std::string& name, int parent, const CalVector& local,
                                    const CalVector& global) {
  auto bone = boost::make_shared<CalCoreBone>(name, parent);
  bone->relativeTranslation = local;
  bone->relativeRotation = {0, 0, 0, 1};
  bone->boneSpaceRotation = {0, 0, 0, 1};
  bone->boneSpaceTranslation = {-global.x, -global.y, -global.z};
  return bone;
}

// A root that is turned by a quarter about X, and two bones in a row below it.
boost::shared_ptr<CalCoreSkeleton> ThreeBones() {
  const float half = std::sqrt(0.5F);
  auto root = Bone("root", -1, {1, 2, 3}, {});
  root->relativeRotation = {half, 0, 0, half};
  root->boneSpaceRotation = {-half, 0, 0, half};
  const CalVector back = Turned(root->boneSpaceRotation, {-1, -2, -3});
  root->boneSpaceTranslation = back;
  auto spine = Bone("spine", 0, {0, 0, 10}, {});
  spine->boneSpaceRotation = root->boneSpaceRotation;
  spine->boneSpaceTranslation = {back.x, back.y, back.z - 10};
  auto light = Bone("lightTarget:bright=0.5:cone=60", 1, {0, 5, 0}, {});
  light->boneSpaceRotation = root->boneSpaceRotation;
  light->boneSpaceTranslation = {back.x, back.y - 5, back.z - 10};
  light->lightType = CalLightType::kSpot;
  light->lightColor = {1, 0.5F, 2};
  return boost::make_shared<CalCoreSkeleton>(
      std::vector<boost::shared_ptr<CalCoreBone>>{root, spine, light});
}

using Influences = std::vector<CalCoreSubmesh::Influence>;

// A submesh of one triangle for each three of the vertices.
boost::shared_ptr<CalCoreSubmesh> Submesh(const std::vector<Influences>& vertices) {
  std::mt19937 random(3);
  const auto number = [&random] { return static_cast<float>(random() % 2000) / 100 - 10; };
  const int32_t count = static_cast<int32_t>(vertices.size());
  auto submesh = boost::make_shared<CalCoreSubmesh>(count, true, count / 3);
  for (int32_t i = 0; i < count; ++i) {
    submesh->addVertex({{number(), number(), number(), 1}, {0, 3, 4, 0}}, 0xFFFFFFFF,
                       vertices[static_cast<size_t>(i)]);
    submesh->setTextureCoordinate(i, {0.25F, 0.75F});
    if (i % 3 != 2) continue;
    const auto at = static_cast<uint16_t>(i);
    submesh->addFace({{static_cast<uint16_t>(at - 2), static_cast<uint16_t>(at - 1), at}});
  }
  return submesh;
}

boost::shared_ptr<CalCoreMorphTarget> Morph(const std::string& name,
                                            const std::vector<VertexOffset>& offsets) {
  cal3d::SSEArray<VertexOffset> array;
  for (const VertexOffset& offset : offsets) array.push_back(offset);
  return boost::make_shared<CalCoreMorphTarget>(name, 3, array);
}

struct Made {
  std::string bytes;
  GlbFile file;
  ViewNotes notes;
};

Made Make(const ViewModel& model, const TextureFinder& find = {}) {
  ViewNotes notes;
  const TextureFinder none = [](const ViewMaterial&, const std::string&) {
    return std::optional<TextureFile>();
  };
  std::string bytes = MakeGlb(model, find ? find : none, "test 1", notes);
  GlbFile file(bytes);
  return {std::move(bytes), std::move(file), std::move(notes)};
}

ViewModel ModelOf(const std::vector<boost::shared_ptr<CalCoreSubmesh>>& submeshes) {
  ViewModel model;
  model.name = "m";
  model.skeleton = {"s.xsf", ThreeBones()};
  model.meshes.push_back({"Body.xmf", boost::make_shared<CalCoreMesh>(CalCoreMesh{submeshes})});
  return model;
}

TEST(GlbExport, SkinnedVerticesStandWhereTheMeshHasThem) {
  std::vector<Influences> vertices = {{{0, 1, 0}},
                                      {{0, 0.2F, 0}, {1, 0.5F, 0}, {2, 0.3F, 0}},
                                      {{2, 5, 0}, {0, 15, 0}},                // no sum of 1
                                      {{1, 0.25F, 0}, {0, 1, 0}, {1, 1, 0}},  // one bone twice
                                      {{0, 0, 0}, {1, 2, 0}, {2, 0, 0}},
                                      {},
                                      {{1, kNan, 0}},
                                      {{1, -1, 0}, {2, 1, 0}},
                                      {{7, 1, 0}}};
  const auto submesh = Submesh(vertices);
  const Made made = Make(ModelOf({submesh}));
  const size_t node = made.file.json["nodes"].size() - 1;
  const std::vector<Point> skinned = made.file.SkinnedVertices(node, 0);
  ASSERT_EQ(skinned.size(), vertices.size());
  for (uint32_t i = 0; i < skinned.size(); ++i) {
    const CalVector4& at = submesh->vertices()[i].position;
    EXPECT_NEAR(skinned[i][0], at.x, 1e-4) << i;
    EXPECT_NEAR(skinned[i][1], at.y, 1e-4) << i;
    EXPECT_NEAR(skinned[i][2], at.z, 1e-4) << i;
  }
  const json& attributes = made.file.json["meshes"][0]["primitives"][0]["attributes"];
  const auto joints = made.file.Numbers(attributes["JOINTS_0"]);
  const auto weights = made.file.Numbers(attributes["WEIGHTS_0"]);
  const auto at = [](const std::vector<double>& numbers, size_t vertex) {
    const auto from = numbers.begin() + static_cast<std::ptrdiff_t>(4 * vertex);
    return std::vector<double>(from, from + 4);
  };
  EXPECT_THAT(at(joints, 1), ElementsAre(1, 2, 0, 0));  // the heaviest first
  EXPECT_THAT(at(joints, 3), ElementsAre(1, 0, 0, 0));
  EXPECT_NEAR(at(weights, 3)[0], 1.25 / 2.25, 1e-6);
  EXPECT_THAT(at(joints, 4), ElementsAre(1, 0, 0, 0));  // nothing of bones without weight
  EXPECT_THAT(at(joints, 5), ElementsAre(3, 0, 0, 0));  // the joint that stands still
  EXPECT_EQ(made.file.json["skins"][0]["joints"], json({1, 2, 3, 0}));
  ASSERT_EQ(made.notes.warnings.size(), 3U);
  EXPECT_THAT(made.notes.warnings[0], HasSubstr("hangs on bone 7, but the skeleton has 3 bones"));
  EXPECT_THAT(made.notes.warnings[1], HasSubstr("below 0"));
}

TEST(GlbExport, ManyInfluencesTakeSetsOfFour) {
  std::vector<boost::shared_ptr<CalCoreBone>> bones;
  Influences influences;
  for (int32_t i = 0; i < 40; ++i) {
    bones.push_back(Bone("b", i - 1, {1, 0, 0}, {static_cast<float>(i + 1), 0, 0}));
    influences.push_back({i, static_cast<float>(i % 6 + 1), 0});
  }
  Influences six(influences.begin(), influences.begin() + 6);
  ViewModel model = ModelOf({Submesh({six, {{0, 1, 0}}, six}), Submesh({influences, six, six})});
  model.skeleton.core = boost::make_shared<CalCoreSkeleton>(bones);
  const Made made = Make(model);
  const size_t node = made.file.json["nodes"].size() - 1;
  const json& primitives = made.file.json["meshes"][0]["primitives"];
  EXPECT_THAT(made.file.Numbers(primitives[0]["attributes"]["JOINTS_1"]),
              ElementsAre(1, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0));
  EXPECT_TRUE(primitives[1]["attributes"].contains("WEIGHTS_7"));
  EXPECT_FALSE(primitives[1]["attributes"].contains("WEIGHTS_8"));
  EXPECT_THAT(made.notes.warnings[1], HasSubstr("more than 32 bones"));
  for (const size_t primitive : {size_t{0}, size_t{1}}) {
    const auto skinned = made.file.SkinnedVertices(node, primitive);
    const auto positions = made.file.Numbers(primitives[primitive]["attributes"]["POSITION"]);
    EXPECT_NEAR(skinned[0][0], positions[0], 1e-4);
  }
}

TEST(GlbExport, NodesSkinsAndLights) {
  const auto colored = boost::make_shared<CalCoreSubmesh>(1, false, 1);
  colored->addVertex({{1, kNan, 3, 1}, {}}, 0xFF8000FF, {{0, 1, 0}});
  colored->addFace({{0, 0, 0}});
  const Made made = Make(ModelOf({Submesh({{}, {}, {}}), Submesh({}), colored}));
  const json& file = made.file.json;
  EXPECT_EQ(file["asset"],
            json({{"version", "2.0"}, {"generator", "test 1"}, {"extras", {{"upAxis", "z"}}}}));
  EXPECT_EQ(file["scenes"][0]["nodes"], json({0, 5}));
  EXPECT_EQ(file["nodes"][0]["name"], "veltrum");
  EXPECT_NEAR(file["nodes"][0]["rotation"][0], -std::sqrt(0.5), 1e-7);
  EXPECT_EQ(file["nodes"][0]["children"], json({1}));
  EXPECT_EQ(file["nodes"][2]["name"], "spine");
  EXPECT_EQ(file["nodes"][2]["translation"], json({0, 0, 10}));
  EXPECT_EQ(file["nodes"][3]["children"], json({4}));
  EXPECT_EQ(file["nodes"][4]["name"], "lightTarget:bright=0.5:cone=60");
  const json& light = file["extensions"]["KHR_lights_punctual"]["lights"][0];
  EXPECT_EQ(light["type"], "spot");
  EXPECT_EQ(light["color"], json({1, 0.5, 1}));
  EXPECT_NEAR(light["spot"]["outerConeAngle"], std::acos(-1.0) / 6, 1e-6);
  EXPECT_EQ(file["extensionsUsed"], json({"KHR_lights_punctual"}));
  EXPECT_EQ(file["nodes"][5]["skin"], 0);
  // An empty submesh has no primitive; the others keep their numbers.
  const json& primitives = file["meshes"][0]["primitives"];
  ASSERT_EQ(primitives.size(), 2U);
  EXPECT_EQ(primitives[1]["extras"], json({{"submesh", 2}, {"materialId", 0}}));
  EXPECT_FALSE(primitives[0]["attributes"].contains("COLOR_0"));
  EXPECT_THAT(made.file.Numbers(primitives[1]["attributes"]["COLOR_0"]),
              ElementsAre(14146, 0, 65535, 65535));  // half of sRGB is a fifth of the light
  EXPECT_THAT(made.file.Numbers(primitives[0]["attributes"]["TEXCOORD_0"]),
              ElementsAre(0.25, 0.75, 0.25, 0.75, 0.25, 0.75));
  EXPECT_THAT(made.file.Numbers(primitives[1]["attributes"]["POSITION"]), ElementsAre(1, 0, 3));
  EXPECT_THAT(made.file.Numbers(primitives[1]["attributes"]["NORMAL"]), ElementsAre(0, 0, 1));
  EXPECT_EQ(Make(ModelOf({Submesh({{}, {}, {}})})).bytes,
            Make(ModelOf({Submesh({{}, {}, {}})})).bytes);

  // Without bones nothing is skinned, and the mesh hangs below the root.
  ViewModel bare = ModelOf({Submesh({{}, {}, {}})});
  bare.skeleton = {};
  const json still = Make(bare).file.json;
  EXPECT_EQ(still["nodes"][0]["children"], json({1}));
  EXPECT_FALSE(still["nodes"][1].contains("skin"));
  EXPECT_FALSE(still.contains("skins"));
  // Bones without a mesh are joints all the same, so that viewers show them.
  EXPECT_EQ(Make(ModelOf({})).file.json["skins"][0]["joints"], json({1, 2, 3}));
}

TEST(GlbExport, FacesOfTheLastIndexTake32Bits) {
  const auto submesh = boost::make_shared<CalCoreSubmesh>(65536, false, 1);
  for (int i = 0; i < 65536; ++i) submesh->addVertex({}, 0xFFFFFFFF, {});
  submesh->addFace({{0, 65534, 65535}});
  const Made made = Make(ModelOf({submesh}));
  const json& indices = made.file.json["meshes"][0]["primitives"][0]["indices"];
  EXPECT_EQ(made.file.json["accessors"][indices.get<size_t>()]["componentType"], 5125);
  EXPECT_THAT(made.file.Numbers(indices), ElementsAre(0, 65534, 65535));
}

TEST(GlbExport, MorphsOfASubmeshStandInAll) {
  const auto first = Submesh({{}, {}, {}});
  const auto second = Submesh({{}, {}, {}});
  first->addMorphTarget(Morph("smile", {{2, {1, 2, 3, 0}, {0, 0, 1, 0}}, {1, {}, {0, 3, 4, 0}}}));
  second->addMorphTarget(Morph("blink", {{0, {0, 0, 5, 0}, {0, 3, 4, 0}}}));
  second->addMorphTarget(Morph("smile", {}));
  ViewModel model = ModelOf({first, second});
  model.morphAnimations.push_back(
      {"out/Talk.xpf",
       boost::make_shared<CalCoreMorphAnimation>(CalCoreMorphAnimation{
           1, {{"blink", {{0, 0}, {2, 1}}}, {"nobody", {{0, 1}}}, {"smile", {{1, 1}}}}})});
  const Made made = Make(model);
  const json& mesh = made.file.json["meshes"][0];
  EXPECT_EQ(mesh["extras"]["targetNames"], json({"smile", "blink"}));
  const auto values = [&](size_t primitive, size_t target, const char* what) {
    return made.file.Numbers(mesh["primitives"][primitive]["targets"][target][what]);
  };
  EXPECT_THAT(values(0, 0, "POSITION"), ElementsAre(0, 0, 0, 0, 0, 0, 1, 2, 3));
  const auto normals = values(0, 0, "NORMAL");  // what takes (0, 0.6, 0.8) to (0, 0, 1)
  EXPECT_NEAR(normals[7], -0.6, 1e-6);
  EXPECT_NEAR(normals[8], 0.2, 1e-6);
  EXPECT_NEAR(normals[4], 0, 1e-6);
  EXPECT_THAT(values(0, 1, "POSITION"), testing::Each(0));
  EXPECT_THAT(values(1, 0, "POSITION"), testing::Each(0));
  EXPECT_EQ(values(1, 1, "POSITION")[2], 5);

  const json& animation = made.file.json["animations"][0];
  EXPECT_EQ(animation["name"], "Talk");
  EXPECT_EQ(animation["extras"]["kind"], "morph");
  const json& sampler = animation["samplers"][0];
  EXPECT_THAT(made.file.Numbers(sampler["input"]), ElementsAre(0, 1, 2));
  EXPECT_THAT(made.file.Numbers(sampler["output"]), ElementsAre(1, 0, 1, 0.5, 1, 1));
  EXPECT_THAT(made.notes.warnings.back(), HasSubstr("moves the morph nobody, which no mesh has"));
}

TEST(GlbExport, AnimationsBeginAtZeroAndAscend) {
  ViewModel model = ModelOf({Submesh({{}, {}, {}})});
  const auto keyframe = [](float time, float x) {
    return CalCoreKeyframe{time, {0, 0, 3, 4}, {x, 0, 0}};
  };
  CalCoreAnimation walk;
  walk.tracks.emplace_back(1, std::vector{keyframe(-2, 1), keyframe(0, 2), keyframe(0, 3),
                                          keyframe(-1, 4), keyframe(1, 5)});
  walk.tracks.emplace_back(0, std::vector{keyframe(-2, 1), keyframe(0, 2), keyframe(1, 2)});
  walk.tracks.emplace_back(1, std::vector{keyframe(9, 9)});  // the first of a bone counts
  walk.tracks.emplace_back(3, std::vector{keyframe(0, 1)});
  model.animations.push_back({"Walk.xaf", boost::make_shared<CalCoreAnimation>(walk)});
  model.animations.push_back({"Nothing.xaf", boost::make_shared<CalCoreAnimation>()});
  const Made made = Make(model);
  ASSERT_EQ(made.file.json["animations"].size(), 1U);
  const json& animation = made.file.json["animations"][0];
  EXPECT_EQ(animation["extras"], json({{"kind", "skeletal"}, {"start", -2}}));
  ASSERT_EQ(animation["channels"].size(), 4U);
  EXPECT_EQ(animation["channels"][0]["target"], json({{"node", 2}, {"path", "translation"}}));
  EXPECT_EQ(animation["channels"][3]["target"], json({{"node", 1}, {"path", "rotation"}}));
  EXPECT_THAT(made.file.Numbers(animation["samplers"][0]["input"]), ElementsAre(0, 2, 3));
  EXPECT_THAT(made.file.Numbers(animation["samplers"][0]["output"]),
              ElementsAre(1, 0, 0, 2, 0, 0, 5, 0, 0));
  EXPECT_EQ(animation["samplers"][0]["input"], animation["samplers"][3]["input"]);
  EXPECT_NEAR(made.file.Numbers(animation["samplers"][1]["output"])[2], 0.6, 1e-7);
  EXPECT_THAT(made.notes.warnings[1],
              HasSubstr("1 tracks of bones that aren't there, such as bone 3"));
  EXPECT_THAT(made.notes.warnings[2], HasSubstr("Nothing.xaf moves nothing"));
}

// A Targa picture of one point, with alpha.
std::string Targa(uint8_t red, uint8_t green, uint8_t blue, uint8_t alpha) {
  std::string file(18, '\0');
  file[2] = 2;
  file[12] = file[14] = 1;
  file[16] = 32;
  file[17] = 8;
  for (const uint8_t byte : {blue, green, red, alpha}) file += static_cast<char>(byte);
  return file;
}

TEST(GlbExport, Materials) {
  // A PNG of a good head and nothing behind it.
  const std::string half("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\1\0\0\0\1\x08\2\0\0\0\x90wS\xDE", 33);
  const TextureFinder find = [&half](const ViewMaterial&, const std::string& name) {
    if (name == "skin.tga") return std::optional(TextureFile{name, Targa(200, 100, 50, 255)});
    if (name == "hair.tga") return std::optional(TextureFile{name, Targa(9, 9, 9, 128)});
    if (name == "gray.tga") return std::optional(TextureFile{name, Targa(0, 0, 0, 255)});
    if (name == "text.png") return std::optional(TextureFile{name, "no picture"});
    if (name == "half.png") return std::optional(TextureFile{name, half});
    if (name == "empty.png") return std::optional(TextureFile{name, half + "IEND"});
    return std::optional<TextureFile>();
  };
  ViewModel model = ModelOf({Submesh({{}, {}, {}})});
  int32_t id = 0;
  const auto add = [&](const std::vector<CalCoreMaterial::Map>& maps) {
    const auto core = boost::make_shared<CalCoreMaterial>(CalCoreMaterial{maps});
    model.materials.push_back({{"M" + std::to_string(id) + ".xrf", core}, id, ""});
    ++id;
  };
  add({{"skin.tga", "Diffuse Color"}, {"skin.tga", "Specular"}, {"gone.png", "Normal"}});
  add({{"COLOR-FF8000-x-DiffuseColor", "Diffuse Color"}, {"ALPHA-7F7F7F-x-T", "Opacity"}});
  add({{"gone.png", "Diffuse Color"}});
  add({{"skin.tga", "Diffuse Color"}, {"hair.tga", "Opacity"}});
  add({{"skin.tga", "Diffuse Color"}, {"gray.tga", "Opacity"}});
  add({{"text.png", "Diffuse Color"}, {"half.png", "Normal"}});
  add({{"unused", "Diffuse Color"}});
  add({{"skin.tga", "Diffuse Color"}, {"empty.png", "Opacity"}});
  model.materials.push_back(model.materials.back());
  const Made made = Make(model, find);
  const json& materials = made.file.json["materials"];
  const auto image = [&](size_t material) {
    const size_t texture = materials[material]["pbrMetallicRoughness"]["baseColorTexture"]["index"];
    return made.file.json["textures"][texture]["source"].get<size_t>();
  };
  EXPECT_EQ(made.file.json["images"].size(), 4U);
  EXPECT_EQ(made.file.Image(image(0)).substr(1, 3), "PNG");
  EXPECT_EQ(materials[0]["extensions"]["KHR_materials_specular"]["specularColorTexture"]["index"],
            materials[0]["pbrMetallicRoughness"]["baseColorTexture"]["index"]);
  EXPECT_EQ(materials[0]["extras"],
            json({{"file", "M0.xrf"}, {"id", 0}, {"missing", {"gone.png"}}}));
  EXPECT_FALSE(materials[0].contains("normalTexture"));
  EXPECT_EQ(materials[1]["pbrMetallicRoughness"]["baseColorFactor"],
            json({1, 0.215861, 0, 0.498039}));
  EXPECT_EQ(materials[1]["alphaMode"], "BLEND");
  EXPECT_EQ(image(2), image(5));  // one checker for whatever can't be shown
  EXPECT_EQ(materials[3]["alphaMode"], "BLEND");
  EXPECT_EQ(materials[4]["alphaMode"], "MASK");
  EXPECT_NE(image(3), image(4));
  EXPECT_FALSE(materials[6]["pbrMetallicRoughness"].contains("baseColorTexture"));
  EXPECT_EQ(made.file.json["meshes"][0]["primitives"][0]["extras"]["material"], "M0");
  EXPECT_THAT(made.notes.warnings[0],
              HasSubstr("material M5: the texture text.png is no picture that can be shown"));
  EXPECT_THAT(made.notes.warnings[1], HasSubstr("texture half.png is a picture cut off"));
  EXPECT_EQ(image(7), image(0));
  EXPECT_THAT(
      made.notes.warnings[2],
      HasSubstr("material M7: its opacity isn't shown, since a texture is a damaged picture"));
  EXPECT_THAT(made.notes.warnings.back(), HasSubstr("both have the number 7"));
  ASSERT_EQ(made.notes.missingTextures.size(), 2U);
  EXPECT_EQ(made.notes.missingTextures[1].material, "M2");
}

}  // namespace
