// Meshes: polygons, layers and their elements, and what a corner finds in them.
#include <cmath>
#include <csignal>
#include <filesystem>
#include <limits>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/reader/media_folder.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_mesh.h"
#include "tests/fbx/near.h"
#include "tests/support/loaded_scene.h"
#include "tests/support/temp_dir.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr const char* kByCorner = "ByPolygonVertex";

// The record of a layer that names elements by type and number.
FbxRecord Layer(int number, const std::vector<std::pair<std::string, int>>& elements) {
  FbxRecord layer("Layer", {number}, {{"Version", {100}}});
  for (const auto& [type, index] : elements) {
    layer.Add({"LayerElement", {}, {{"Type", {type}}, {"TypedIndex", {index}}}});
  }
  return layer;
}

SceneBuilder WithMesh(FbxRecords records, std::vector<int32_t> polygons = {0, 1, -3, 0, 2, 1, -4}) {
  SceneBuilder scene;
  scene.AddMesh("mesh", {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0}, std::move(polygons),
                std::move(records));
  return scene;
}

TEST(ReadMesh, CutsIndicesIntoPolygons) {
  const std::vector<std::pair<std::vector<int32_t>, std::string>> cases = {
      {{-1, -2}, "0: 0 | 1: 1 | "},
      {{0, 1, -3, 3, 2, 1, -1}, "0: 0 1 2 | 3: 3 2 1 0 | "},
      {{0, 1, -3, 3, 2}, "0: 0 1 2 | 3: 3 2 | "},
      {{5, std::numeric_limits<int>::min()}, "0: 5 2147483646 | "},
      {{}, ""}};
  for (const auto& [indices, expected] : cases) {
    const LoadedScene file(WithMesh({}, indices));
    const auto* mesh = file.Find<FbxMesh>("mesh");
    std::ostringstream polygons;
    for (int p = 0; p < mesh->GetPolygonCount(); ++p) {
      polygons << mesh->GetPolygonVertexIndex(p) << ": ";
      for (int k = 0; k < mesh->GetPolygonSize(p); ++k) {
        polygons << mesh->GetPolygonVertex(p, k) << " ";
      }
      polygons << "| ";
    }
    EXPECT_EQ(polygons.str(), expected);
  }
}

TEST(ReadMesh, ReadsElementsByTheirVersions) {
  using Doubles = std::vector<double>;
  const FbxRecords data = {{"Normals", {Doubles{0, 0, 1, 0, 1, 0, 1, 0}}},
                           {"NormalsW", {Doubles{5, 6, 7}}}};
  const LoadedScene file(WithMesh({
      Element("LayerElementNormal", "ByVertice", "Direct", data, "Class::plain"),
      Element("LayerElementNormal", "ByPolygon", "Index", data, "weighted", 102),
      Element("LayerElementNormal", "something", "else", data, "unread", 100),
      UVs("map1", "ByEdge", "IndexToDirect", {0.5, 1, 2}, {0, -1}),
      Colors(kByCorner, "Direct", {1, 2, 3, 4, 5}, {3}),
      Element("LayerElementMaterial", "AllSame", "Direct",
              {{"Materials", {std::vector<int32_t>{2}}}}),
      Layer(0, {{"LayerElementNormal", 0},
                {"LayerElementUV", 0},
                {"LayerElementColor", 0},
                {"LayerElementMaterial", 0}}),
      Layer(1, {{"LayerElementNormal", 1}}),
      Layer(2, {{"LayerElementNormal", 2}}),
  }));
  const auto* mesh = file.Find<FbxMesh>("mesh");
  std::ostringstream text;
  const auto add = [&text](const FbxLayerElement& element) {
    text << element.GetName() << " " << element.GetMappingMode() << element.GetReferenceMode()
         << ", ";
  };
  for (int i = 0; i < mesh->GetElementNormalCount(); ++i) add(*mesh->GetElementNormal(i));
  add(*mesh->GetElementUV("map1"));
  add(*mesh->GetElementVertexColor());
  EXPECT_EQ(text.str(), "plain 10, weighted 31,  00, map1 42,  20, ");
  EXPECT_THAT(mesh->GetElementNormal(0)->direct,
              ElementsAre(FbxVector4(0, 0, 1, 1), FbxVector4(0, 1, 0, 1)));
  EXPECT_EQ(mesh->GetElementNormal(1)->direct[1][3], 6.0);
  EXPECT_THAT(mesh->GetElementUV("map1")->direct, ElementsAre(FbxVector2(0.5, 1)));
  EXPECT_THAT(mesh->GetElementUV("map1")->index, ElementsAre(0, -1));
  EXPECT_THAT(mesh->GetElementVertexColor()->direct, ElementsAre(FbxColor{1, 2, 3, 4}));
  EXPECT_TRUE(mesh->GetElementVertexColor()->index.empty());
  EXPECT_TRUE(mesh->GetElementMaterial()->index.empty());
}

TEST(ReadMesh, PutsElementsIntoTheLayersThatNameThem) {
  const auto uv = [](const char* field, const char* name) {
    return Element(field, kByCorner, "Direct", {{"UV", {std::vector<double>{1, 2}}}}, name);
  };
  const LoadedScene file(WithMesh({
      uv("LayerElementUV", "a"),
      uv("LayerElementUV", "b"),
      uv("LayerElementUV", "unnamed by layers"),
      uv("LayerElementBumpUV", "bump"),
      // Layers out of order, in two records of one number, with numbers out of range.
      Layer(1, {{"LayerElementUV", 1}, {"LayerElementNormal", 0}}),
      Layer(0, {{"LayerElementBumpUV", 0}, {"LayerElementUV", 7}, {"LayerElementUV", -1}}),
      Layer(0, {{"LayerElementUV", 0}, {"NoSuchElement", 0}}),
      Layer(-5, {{"LayerElementUV", 0}}),
      Layer(2000000000, {{"LayerElementUV", 0}}),
  }));
  const auto* mesh = file.Find<FbxMesh>("mesh");
  EXPECT_EQ(mesh->GetElementNormalCount(), 0);
  std::vector<std::string> names;
  for (int i = 0; i < mesh->GetElementUVCount(); ++i) {
    names.push_back(mesh->GetElementUV(i)->GetName());
  }
  EXPECT_THAT(names, ElementsAre("a", "bump", "b", "a"));
  EXPECT_EQ(mesh->GetElementUVCount(FbxLayerElement::eUVFirst), 3);
  EXPECT_EQ(mesh->GetElementUV(1, FbxLayerElement::eUVFirst)->GetName(), "b");
  EXPECT_EQ(mesh->GetElementUV("unnamed by layers"), nullptr);
}

// No export asks so.
TEST(ReadMesh, FindsWhatACornerHas) {
  const LoadedScene file(
      WithMesh({Normals("ByVertice", "IndexToDirect", {1, 0, 0, 2, 0, 0}, {1, 0, -1, 0}),
                UVs("map1", kByCorner, "IndexToDirect", {1, 2, 3, 4}, {-1, 1}),
                Layer(0, {{"LayerElementNormal", 0}, {"LayerElementUV", 0}})}));
  const auto* mesh = file.Find<FbxMesh>("mesh");
  std::string found;
  for (const auto& [p, k] : {std::pair(0, 0), {0, 1}, {0, 2}, {1, 3}, {2, 0}, {0, 3}, {-1, 0}}) {
    FbxVector4 normal;
    FbxVector2 uv(9, 9);
    bool unmapped = false;
    const bool has = mesh->GetPolygonVertexNormal(p, k, normal);
    found += has ? std::to_string(std::lround(normal[0])) : "-";
    const bool hasUv = mesh->GetPolygonVertexUV(p, k, "map1", uv, unmapped);
    found += hasUv ? (unmapped ? "u" : "") + std::to_string(std::lround(uv[0])) + " " : "- ";
  }
  EXPECT_EQ(found, "2u9 13 -- 1- -- -- -- ") << "kept where there is none";
}

// Skins, blend shapes and poses.

// Moved along X by `x`.
std::vector<double> Moved(double x) { return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, 0, 0, 1}; }

TEST(ReadDeformers, ClustersHoldTheirSkinsMatricesInTheWorld) {
  SceneBuilder scene;
  const int64_t skin = scene.Skin(scene.AddMesh("mesh", {0, 0, 0}, {}));
  // The bone is turned by 90 degrees about Z.
  const int64_t cluster = scene.AddCluster("full", {3, 1}, {0.25, 0.75}, Moved(1),
                                           {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 10, 20, 30, 1});
  scene.AddCluster("short", {1, 2, 3}, {0.5}, Moved(3), {1, 2});
  scene.Object(cluster).Add({"Mode", {"Total1"}});
  scene.Object(skin).Add({"SkinningType", {"Blend"}});
  scene.Object(skin).Add({"Indexes", {std::vector<int32_t>{0, 1, 2}}});
  scene.Object(skin).Add({"BlendWeights", {std::vector<double>{0.5, 1}}});
  scene.Connect(cluster, skin);
  scene.Connect(scene.AddModel("bone", "LimbNode"), cluster);
  for (const FbxFormat& format : std::vector<FbxFormat>{{},
                                                        {.ascii = true},
                                                        {.version = 7700, .compress = true},
                                                        {.version = 7450, .wideOffsets = true},
                                                        {.bigEndian = true}}) {
    const LoadedScene file(scene, format);
    const auto* m = file.Find<FbxMesh>("mesh");
    ASSERT_EQ(m->GetDeformerCount(FbxDeformer::eSkin), 1);
    EXPECT_EQ(m->GetDeformerCount(FbxDeformer::eBlendShape), 0);
    const auto* s = static_cast<FbxSkin*>(m->GetDeformer(0, FbxDeformer::eSkin));
    EXPECT_EQ(s->skinningType, FbxSkin::eBlend);
    EXPECT_THAT(s->blendWeights, ElementsAre(0.5, 1.0, 0.0));
    ASSERT_EQ(s->GetClusterCount(), 1);
    const FbxCluster& full = *s->GetCluster(0);
    EXPECT_EQ(full.GetLink(), &file.Node("bone"));
    EXPECT_EQ(full.GetLinkMode(), FbxCluster::eTotalOne);
    EXPECT_THAT(full.indices, ElementsAre(3, 1));
    EXPECT_THAT(full.weights, ElementsAre(0.25, 0.75));
    const FbxVector4 turn(0, 0, 90);
    ExpectNear(full.transformLink, FbxAMatrix({10, 20, 30}, turn, {1, 1, 1}));
    // The move along the bone's X is one along the world's Y.
    ExpectNear(full.transform, FbxAMatrix({10, 21, 30}, turn, {1, 1, 1}));
    const auto* cut = file.Find<FbxCluster>("short");
    EXPECT_EQ(cut->GetLink(), nullptr);
    EXPECT_EQ(cut->GetLinkMode(), FbxCluster::eNormalize);
    EXPECT_THAT(cut->weights, ElementsAre(0.5, 0.0, 0.0));
    EXPECT_TRUE(cut->transformLink.IsIdentity());
    EXPECT_EQ(cut->transform.GetT()[0], 3.0);
  }
}

// A quad with a blend shape, and a channel for each shape.
class ShapeScene : public SceneBuilder {
 public:
  explicit ShapeScene(FbxRecords elements = {})
      : blendShape_(BlendShape(
            Mesh("mesh", {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}, {{0, 1, 2, 3}}, std::move(elements))
                .mesh)) {}
  void AddShape(const char* name, FbxRecords records) {
    const int64_t shape = AddObject("Geometry", "Geometry", name, "Shape", {}, std::move(records));
    const int64_t channel = AddObject("Deformer", "SubDeformer", name, "BlendShapeChannel",
                                      {P("DeformPercent", "Number", "", "A", {25.0})},
                                      {{"FullWeights", {std::vector<double>{100}}}});
    Connect(channel, blendShape_);
    Connect(shape, channel);
  }

 private:
  int64_t blendShape_;
};

TEST(ReadDeformers, ShapesTurnTheNormalsOfTheirPoints) {
  const FbxRecords shape = {{"Indexes", {std::vector<int32_t>{2}}},
                            {"Vertices", {std::vector<double>{0, 0, 5}}},
                            {"Normals", {std::vector<double>{1, 0, 0}}}};
  // By polygon, so that the corners of the polygon come apart; and none, so that they are made.
  const FbxRecords byPolygon = {Normals("ByPolygon", "Direct", {0, 0, 1})};
  for (const FbxRecords& normals : {byPolygon, FbxRecords{}}) {
    ShapeScene scene(normals);
    scene.AddShape("one", shape);
    scene.AddShape("none", {{"Normals", {std::vector<double>{1, 0, 0}}}});
    const LoadedScene file(scene);
    EXPECT_EQ(file.Find<FbxShape>("none")->GetElementNormal(), nullptr);
    EXPECT_EQ(file.Find<FbxMesh>("mesh")->GetElementNormalCount(), 1);
    const FbxLayerElementNormal* element = file.Find<FbxShape>("one")->GetElementNormal();
    ASSERT_NE(element, nullptr);
    EXPECT_EQ(element->GetMappingMode(), FbxLayerElement::eByPolygonVertex);
    ASSERT_EQ(element->direct.size(), 4U);
    ExpectNear(element->direct[1], {0, 0, 1});
    ExpectNear(element->direct[2], {std::sqrt(0.5), 0, std::sqrt(0.5)});
  }
}

TEST(ReadPoses, HoldTheNodesThatExist) {
  SceneBuilder scene;
  const int64_t a = scene.AddModel("a");
  const int64_t b = scene.AddModel("b");
  const int64_t mesh = scene.AddMesh("mesh", {}, {});
  const auto pose = [&](const char* name, const char* kind, int32_t count, FbxRecords nodes) {
    nodes.insert(nodes.begin(), {"NbPoseNodes", {count}});
    scene.AddObject("Pose", "Pose", name, kind, {}, std::move(nodes));
  };
  const auto node = [](int64_t id, double x, int32_t local = 0) {
    return FbxRecord("PoseNode", {}, {{"Node", {id}}, {"Matrix", {Moved(x)}}, {"Local", {local}}});
  };
  pose("bind", "BindPose", 100,
       {node(424242, 1),
        node(b, 2, 1),
        node(mesh, 3),
        node(a, 4),
        node(b, 5),
        {"PoseNode", {}, {{"Node", {a}}}}});
  pose("cut", "BindPose", 1, {node(a, 6), node(b, 7)});
  pose("negative", "BindPose", -3, {node(a, 6), node(b, 7)});
  pose("rest", "RestPose", 1, {node(b, 8)});
  const LoadedScene file(scene);
  const auto* bind = file.Find<FbxPose>("bind");
  ASSERT_EQ(bind->GetCount(), 4);
  EXPECT_EQ(bind->TypeLetter(), 'b');
  EXPECT_EQ(bind->Find(&file.Node("b")), 0);
  EXPECT_EQ(bind->Find(&file.Node("a")), 1);
  EXPECT_EQ(bind->Find("a", FbxPose::eInitialName), 1);
  EXPECT_EQ(bind->Find("a", 0), -1);
  EXPECT_EQ(bind->GetMatrix(1).Get(3, 0), 4.0);
  EXPECT_TRUE(bind->IsLocalMatrix(0) && !bind->IsLocalMatrix(1));
  EXPECT_TRUE(bind->GetMatrix(3) == FbxMatrix{} && bind->GetMatrix(99) == FbxMatrix{});
  EXPECT_EQ(file.Find<FbxPose>("cut")->GetCount(), 1);
  EXPECT_EQ(file.Find<FbxPose>("negative")->GetCount(), 0);
  EXPECT_EQ(file.Find<FbxPose>("rest")->TypeLetter(), 'r');
}

// Materials, textures and the media embedded in a file.

TEST(ReadMaterials, MakeTheClassOfTheirShading) {
  struct Case {
    std::string subclass;
    FbxRecords shading;
    std::string expected;
  };
  const std::vector<Case> cases = {
      {"", {{"ShadingModel", {"Blinn"}}}, "FbxSurfacePhong Unknown"},
      {"lambert", {{"ShadingModel", {"phong"}}}, "FbxSurfaceLambert Unknown"},
      {"", {{"ShadingModel", {"LAMBERT"}}}, "FbxSurfaceLambert Unknown"},
      {"", {}, "FbxSurfacePhong Unknown"},
      {"", {{"ShadingModel", {"Toon"}}}, "FbxSurfaceMaterial Toon"},
      {"Hair", {{"ShadingModel", {"phong"}}}, "FbxSurfaceMaterial Hair"},
  };
  for (const Case& c : cases) {
    SceneBuilder scene;
    scene.AddObject("Material", "Material", "m", c.subclass, {}, c.shading);
    const LoadedScene file(scene);
    const auto* material = file.Find<FbxSurfaceMaterial>("m");
    const auto model = material->FindProperty("ShadingModel").Get<FbxString>();
    EXPECT_EQ(material->GetClassId().GetName() + (" " + model), c.expected);
  }
}

TEST(ReadMaterials, OldVersionsMoveTheirProperties) {
  SceneBuilder scene;
  const auto material = [&](const char* name, int version, const char* shading) {
    const int64_t id = scene.AddObject(
        "Material", "Material", name, shading,
        {P("Emissive", "Vector3D", "Vector", "", {1, 2, 3}), P("EmissiveFactor", {0.5}),
         P("Diffuse", "Vector3D", "Vector", "", {4, 5, 6}), P("Opacity", {0.25}),
         P("Specular", "Vector3D", "Vector", "", {7, 8, 9}), P("Shininess", {30.0}),
         P("Reflectivity", {0.75})});
    scene.Object(id).children[0].values = {version};
  };
  material("old", 101, "Phong");
  material("old lambert", 101, "Lambert");
  material("new", 102, "Phong");
  material("other", 100, "Toon");
  const LoadedScene file(scene);
  struct Case {
    const char* property;
    // By material; empty where there is no such property.
    std::vector<const char*> expected;
  };
  const std::vector<Case> cases = {
      {"EmissiveColor", {"1 2 3", "1 2 3", "0 0 0", ""}},
      {"EmissiveFactor", {"1", "1", "0.5", "0.5"}},
      {"AmbientColor", {"0.2 0.2 0.2", "0.2 0.2 0.2", "0.2 0.2 0.2", ""}},
      {"DiffuseColor", {"4 5 6", "4 5 6", "0.8 0.8 0.8", ""}},
      {"TransparencyFactor", {"0.75", "0.75", "0", ""}},
      {"DisplacementFactor", {"1", "1", "1", ""}},
      {"SpecularColor", {"7 8 9", "", "0.2 0.2 0.2", ""}},
      {"ShininessExponent", {"30", "", "20", ""}},
      {"ReflectionFactor", {"0.75", "", "1", ""}},
      {"Opacity", {"0.25", "0.25", "0.25", "0.25"}},
  };
  for (const Case& c : cases) {
    std::vector<std::string> values;
    for (const char* name : {"old", "old lambert", "new", "other"}) {
      const auto* found = file.Find<FbxSurfaceMaterial>(name);
      values.emplace_back(found->FindProperty(c.property).Get<FbxString>().Buffer());
    }
    EXPECT_THAT(values, ElementsAreArray(c.expected)) << c.property;
  }
}

// Loads a scene from `scene.fbx` in a folder.
class MediaTest : public testing::Test {
 protected:
  MediaTest() : manager_(FbxManager::Create()) {}
  ~MediaTest() override { manager_->Destroy(); }

  FbxScene* Load(const SceneBuilder& builder, const FbxFormat& format = {}) {
    folder.Write("scene.fbx", builder.Write(format));
    FbxImporter* importer = FbxImporter::Create(manager_, "");
    FbxScene* scene = FbxScene::Create(manager_, "");
    EXPECT_TRUE(importer->Initialize(folder.File("scene.fbx").c_str()) && importer->Import(scene));
    return scene;
  }
  static int64_t AddVideo(SceneBuilder& builder, const std::string& path,
                          const std::string& content) {
    FbxRecords records = {{"UseMipMap", {0}}, {"Filename", {path}}, {"RelativeFilename", {path}}};
    if (!content.empty()) records.push_back({"Content", {FbxRaw{content}}});
    return builder.AddObject("Video", "Video", path, "Clip", {}, std::move(records));
  }
  // A texture whose file is called `relative` beside the scene.
  static int64_t AddTexture(SceneBuilder& builder, const std::string& absolute,
                            const char* relative) {
    const int64_t id = builder.AddTexture("texture", absolute);
    builder.Object(id).children[5].values = {relative};
    return id;
  }
  std::vector<std::string> FilesBelow() const {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Path())) {
      if (!entry.is_directory()) {
        files.push_back(std::filesystem::relative(entry.path(), folder.Path()).string());
      }
    }
    return files;
  }
  static std::vector<std::string> TextureFiles(const FbxScene& scene) {
    std::vector<std::string> names;
    for (int i = 0; i < scene.GetSrcObjectCount<FbxFileTexture>(); ++i) {
      names.emplace_back(scene.GetSrcObject<FbxFileTexture>(i)->GetFileName());
    }
    return names;
  }

  TempDir folder;

 private:
  FbxManager* manager_;
};

TEST_F(MediaTest, AreWrittenAsPlainNamesInTheirFolder) {
  const std::string bytes("\x89PNG\0\r\n\"", 8);
  SceneBuilder builder;
  for (const char* path : {"../../up.png", "/tmp/absolute.png", "C:\\art\\back\\slash.png", "", ".",
                           "..", "dir/..", "sub/", "a\\.."}) {
    AddVideo(builder, path, bytes);
  }
  AddVideo(builder, "not embedded.png", "");
  for (const bool ascii : {false, true}) {
    const FbxScene* scene = Load(builder, {.ascii = ascii});
    EXPECT_THAT(FilesBelow(),
                UnorderedElementsAre("scene.fbx", "scene.fbm/up.png", "scene.fbm/absolute.png",
                                     "scene.fbm/slash.png"));
    EXPECT_EQ(ReadFile(folder.File("scene.fbm/slash.png")), bytes);
    EXPECT_EQ(scene->GetSrcObject<FbxVideo>(0)->GetFileName(), folder.File("scene.fbm/up.png"));
    EXPECT_STREQ(scene->GetSrcObject<FbxVideo>(0)->GetRelativeFileName(), "scene.fbm/up.png");
    EXPECT_STREQ(scene->GetSrcObject<FbxVideo>(4)->GetFileName(), ".");
  }
}

TEST_F(MediaTest, FollowNoLinks) {
  SceneBuilder builder;
  AddVideo(builder, "a.png", "new");
  folder.Write("victim", "old");
  std::filesystem::create_directory(folder.File("scene.fbm"));
  std::filesystem::create_symlink(folder.File("victim"), folder.File("scene.fbm/a.png"));
  Load(builder);
  EXPECT_EQ(ReadFile(folder.File("victim")), "old");
  EXPECT_EQ(ReadFile(folder.File("scene.fbm/a.png")), "new");

  std::filesystem::remove_all(folder.File("scene.fbm"));
  std::filesystem::create_directory(folder.File("elsewhere"));
  std::filesystem::create_directory_symlink(folder.File("elsewhere"), folder.File("scene.fbm"));
  Load(builder);
  EXPECT_FALSE(FileExists(folder.File("elsewhere/a.png")));
}

TEST_F(MediaTest, KeepPermissions) {
  SceneBuilder builder;
  AddVideo(builder, "a.png", "new");
  std::filesystem::create_directory(folder.File("scene.fbm"));
  folder.Write("scene.fbm/a.png", "old");
  const auto mine = std::filesystem::perms::owner_read | std::filesystem::perms::group_write;
  std::filesystem::permissions(folder.File("scene.fbm/a.png"), mine);
  Load(builder);
  EXPECT_EQ(ReadFile(folder.File("scene.fbm/a.png")), "new");
  EXPECT_EQ(std::filesystem::status(folder.File("scene.fbm/a.png")).permissions(), mine);
}

TEST_F(MediaTest, TexturesFindFilesBesideTheScene) {
  folder.Write("here.png", "x");
  std::filesystem::create_directory(folder.File("textures"));
  folder.Write("textures/skin.png", "x");
  SceneBuilder builder;
  AddTexture(builder, "C:\\art\\here.png", "here.png");
  AddTexture(builder, "/no/such/skin.png", "textures\\..\\textures\\skin.png");
  AddTexture(builder, folder.File("here.png"), "textures\\skin.png");
  AddTexture(builder, "C:\\art\\gone.png", "gone.png");
  AddTexture(builder, "C:\\art\\gone.png", "textures");
  EXPECT_THAT(TextureFiles(*Load(builder)),
              ElementsAre(folder.File("here.png"), folder.File("textures/skin.png"),
                          folder.File("here.png"), "C:\\art\\gone.png", "C:\\art\\gone.png"));
}

// What the disk refuses changes no name, or a scene's materials would depend on it.
TEST_F(MediaTest, ThatCantBeWrittenKeepTheirNames) {
  SceneBuilder builder;
  const int64_t texture = builder.AddTexture("by video", "C:\\art\\b.png");
  builder.Connect(AddVideo(builder, "C:\\art\\b.png", "b"), texture);
  for (const bool isRefused : {false, true}) {
    if (isRefused) {
      std::filesystem::remove_all(folder.File("scene.fbm"));
      folder.Write("scene.fbm", "in the way");
    }
    const FbxScene* scene = Load(builder);
    EXPECT_THAT(TextureFiles(*scene), ElementsAre(folder.File("scene.fbm/b.png")));
    EXPECT_STREQ(scene->GetSrcObject<FbxVideo>(0)->GetRelativeFileName(), "scene.fbm/b.png");
    EXPECT_EQ(FileExists(folder.File("scene.fbm/b.png")), !isRefused);
  }
}

volatile std::sig_atomic_t signalCame = 0;

TEST_F(MediaTest, StandInTheirFolderOnlyWhole) {
  FbxMediaFolder media(folder.File("scene.fbx"));
  std::string_view rest = "bytes";
  const auto before = std::signal(SIGTERM, [](int) { signalCame = 1; });
  media.Write("a.png", [&] {
    EXPECT_FALSE(FileExists(folder.File("scene.fbm/a.png")));
    std::raise(SIGTERM);
    EXPECT_EQ(signalCame, 0) << "it would leave half a file";
    return std::exchange(rest, std::string_view());
  });
  EXPECT_EQ(signalCame, 1);
  std::signal(SIGTERM, before);
  EXPECT_THAT(FilesBelow(), ElementsAre("scene.fbm/a.png"));
  std::filesystem::create_directory(folder.File("scene.fbm/b.png"));
  EXPECT_EQ(media.Write("b.png", [] { return std::string_view(); }).relative, "scene.fbm/b.png");
  EXPECT_THAT(media.GetMessages(),
              ElementsAre("the embedded picture '" + folder.File("scene.fbm/b.png") +
                          "' can't be written: Is a directory"));
}

// Textures are read before videos, and yet find their media the first time that a file is read.
TEST_F(MediaTest, TexturesFindTheirEmbeddedMedia) {
  SceneBuilder builder;
  AddTexture(builder, "C:\\art\\a.png", "scene.fbm\\a.png");
  AddVideo(builder, "C:\\art\\a.png", "a");
  const int64_t byVideo = builder.AddTexture("by video", "C:\\art\\b.png");
  builder.Connect(AddVideo(builder, "C:\\art\\b.png", "b"), byVideo);
  const int64_t present = builder.AddTexture("present", folder.Write("c.png", "disk"));
  builder.Connect(AddVideo(builder, "c.png", "c"), present);
  EXPECT_THAT(TextureFiles(*Load(builder)),
              ElementsAre(folder.File("scene.fbm/a.png"), folder.File("scene.fbm/b.png"),
                          folder.File("c.png")));
}

}  // namespace
