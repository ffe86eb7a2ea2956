// Documents of version 6 that real files and hostile ones hold: what is good in them is read.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/anim/fbx_animation.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_mesh.h"
#include "tests/support/loaded_scene.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// A text document with these records in `Objects` and `Connections`, and others behind them.
std::string Document(const std::string& objects, const std::string& connections = {},
                     const std::string& rest = {}) {
  return "; FBX 6.1.0 project file\nFBXHeaderExtension:  {\n\tFBXVersion: 6100\n}\nObjects:  {\n" +
         objects + "}\nConnections:  {\n" + connections + "}\n" + rest;
}

std::string Object(const std::string& type, const std::string& name, const std::string& kind,
                   const std::string& fields = {}) {
  return type + ": \"" + type + "::" + name + "\", \"" + kind + "\" {\n" + fields + "}\n";
}

std::string Connect(const std::string& source, const std::string& destination) {
  return "Connect: \"OO\", \"" + source + "\", \"" + destination + "\"\n";
}

std::string Connect(const std::string& source, const std::string& destination,
                    const std::string& property) {
  return "Connect: \"OP\", \"" + source + "\", \"" + destination + "\", \"" + property + "\"\n";
}

TEST(Version6Document, TellsObjectsApartByWholeNames) {
  const LoadedScene file(
      Document(Object("Model", "a", "Null") + Object("Material", "a", "") +
                   "Material: \"Model::a\", \"\" {\n}\n" +  // a name that is taken
                   Object("Model", "a", "Mesh") + "Model: \"a\", \"Null\" {\n}\n" +
                   Object("Model", "A", "Null") + Object("Model", "b::c", "Null") +
                   "Model: \"Model::flat\", \"Null\"\nModel: \"\", \"Null\" {\n}\nModel: {\n}\n" +
                   Object("Constraint", "a", "Parent") + Object("Model", "Scene", "Null"),
               Connect("Model::a", "Model::Scene") + Connect("a", "Model::a") +
                   Connect("Model::A", "Model::nobody") + Connect("Model::flat", "Model::a") +
                   Connect("Model::Scene", "a") + Connect("Material::a", "Model::A") +
                   // Neither a ring, nor a second parent, nor an unknown tag, nor half a record.
                   Connect("Model::a", "a") + Connect("a", "Model::A") +
                   "Connect: \"XX\", \"Model::A\", \"Model::a\"\nConnect: \"OO\"\nConnect:\n"));
  ASSERT_TRUE(file.isLoaded) << file.Status();
  EXPECT_THAT(file.Names<FbxNode>(), ElementsAre("RootNode", "a", "a", "A", "b::c", "Scene"));
  EXPECT_THAT(file.Names<FbxSurfaceMaterial>(), ElementsAre("a"));
  const FbxNode& root = *file.scene->GetRootNode();
  ASSERT_THAT(ChildNames(root), ElementsAre("a"));
  ASSERT_THAT(ChildNames(*root.GetChild(0)), ElementsAre("a"));
  EXPECT_THAT(ChildNames(*root.GetChild(0)->GetChild(0)), ElementsAre("Scene"));
  EXPECT_EQ(file.Node("A").GetMaterialCount(), 1);
  EXPECT_EQ(file.Node("a").GetNodeAttribute()->GetAttributeType(), FbxNodeAttribute::eNull);
}

TEST(Version6Document, MakesAttributesByKind) {
  const char* const kinds[] = {"Null", "Light",    "Camera", "LimbNode",       "Root",
                               "Limb", "Effector", "Mesh",   "CameraSwitcher", ""};
  std::string objects;
  for (const char* kind : kinds) {
    objects += Object("Model", std::string("a ") + kind, kind,
                      "Properties60: {\nProperty: \"Size\", \"double\", \"AN\",7\n"
                      "Property: \"Lcl Translation\", \"Lcl Translation\", \"A+\",1,2,3\n"
                      "Property: \"Size\", \"double\", \"\",8\nProperty: \"Odd\"\n}\n"
                      "NodeAttributeName: \"Geometry::named\"\n");
  }
  const LoadedScene file(Document(objects));
  std::string classes;
  for (const char* kind : kinds) {
    const FbxNode& node = file.Node(std::string("a ") + kind);
    EXPECT_EQ(node.LclTranslation().Get<FbxDouble3>(), (FbxDouble3{1, 2, 3}));
    const FbxNodeAttribute* attribute = node.GetNodeAttribute();
    classes +=
        attribute == nullptr ? "none " : attribute->GetClassId().GetName() + std::string(" ");
    if (attribute == nullptr) continue;
    EXPECT_EQ(attribute->FindProperty("Size").Get<double>(), 8.0);
    EXPECT_EQ(attribute->Name(), "named");
  }
  EXPECT_EQ(
      classes,
      "FbxNull FbxLight FbxCamera FbxSkeleton FbxSkeleton FbxSkeleton FbxSkeleton FbxMesh none "
      "none ");
}

TEST(Version6Document, PosesFindModelsBehindThem) {
  const std::string pose =
      "Pose: \"Pose::bind\", \"BindPose\" {\nNbPoseNodes: 3\n"
      "PoseNode:  {\nNode: \"Model::none\"\nMatrix: 1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1\n}\n"
      "PoseNode:  {\nNode: \"Material::m\"\n}\n"
      "PoseNode:  {\nNode: \"Model::a\"\nMatrix: 1,0,0,0,0,1,0,0,0,0,1,0\n\t,4,5,6,1\n}\n}\n";
  const LoadedScene file(Document(pose + Object("Material", "m", "") +
                                  Object("Model", "a", "Null") +
                                  Object("Model", "Pose::bind", "Null")));
  ASSERT_THAT(file.Names<FbxPose>(), ElementsAre("bind"));
  const FbxPose& bind = *file.Find<FbxPose>("bind");
  ASSERT_EQ(bind.GetCount(), 1);
  EXPECT_EQ(bind.GetNode(0), &file.Node("a"));
  EXPECT_EQ(bind.GetMatrix(0).Get(3, 1), 5.0);
}

TEST(Version6Document, OldSettingsFillWhatIsSilent) {
  struct Case {
    const char* rate;
    bool hasSettings;  // of its own
    int mode;
    double custom;
  };
  const Case cases[] = {{"24", false, 11, -1},        {"29.97 drop", false, 8, -1},
                        {"29.97 full", false, 9, -1}, {"23.976", false, 13, -1},
                        {"60", false, 3, -1},         {"12.5", false, 14, 12.5},
                        {"", false, 0, -1},           {"film", false, 0, -1},
                        {"-5", false, 0, -1},         {"30", true, 10, -1}};
  for (const auto& [rate, hasSettings, mode, custom] : cases) {
    const std::string own = hasSettings ? "Property: \"TimeMode\", \"enum\", \"\",10\nProperty: "
                                          "\"AmbientColor\", \"ColorRGB\", \"\",0.1,0.2,0.3\n"
                                        : "";
    const LoadedScene file(Document("GlobalSettings:  {\nProperties60:  {\n" + own + "}\n}\n", "",
                                    std::string("Version5:  {\nSettings:  {\nFrameRate: \"") +
                                        rate +
                                        "\"\nTimeFormat: 1\n}\nAmbientRenderSettings:  {\n"
                                        "AmbientLightColor: 0.5,0.6,0.7,1\n}\n}\n"));
    const FbxGlobalSettings& imported = file.scene->GetGlobalSettings();
    for (const FbxGlobalSettings* found : {file.importer->GetFileGlobalSettings(), &imported}) {
      EXPECT_EQ(found->GetTimeMode(), mode) << rate;
      EXPECT_EQ(found->GetCustomFrameRate(), custom) << rate;
      EXPECT_EQ(found->GetAmbientColor().mRed, hasSettings ? 0.1 : 0.5);
    }
  }
}

// Two materials and four textures of a model with three triangles, and what its layers say.
std::vector<std::string> TexturesOf(const std::string& elements,
                                    const std::string& connections = {}) {
  std::string objects = Object("Model", "m", "Mesh",
                               "Vertices: 0,0,0,1,0,0\n,0,1,0\n"
                               "PolygonVertexIndex: 0,1,-3,0,1,-3,0,1,-3\n" +
                                   elements);
  std::string connects = Connect("Model::m", "Model::Scene");
  for (const char* material : {"x", "y"}) {
    objects += Object("Material", material, "", "ShadingModel: \"phong\"\n");
    connects += Connect(std::string("Material::") + material, "Model::m");
  }
  for (const char* texture : {"t0", "t1", "t2", "t3"}) {
    objects += Object("Texture", texture, "TextureVideoClip");
    connects += Connect(std::string("Texture::") + texture, "Model::m");
  }
  const LoadedScene file(Document(objects, connects + connections));
  std::vector<std::string> found;
  for (const char* name : {"x", "y"}) {
    const auto* material = file.Find<FbxSurfaceMaterial>(name);
    for (const char* channel : FbxLayerElement::sTextureChannelNames) {
      const FbxProperty property = material->FindProperty(channel);
      for (int i = 0; i < property.GetSrcObjectCount<FbxTexture>(); ++i) {
        found.push_back(std::string(name) + " " + channel + " " +
                        property.GetSrcObject<FbxTexture>(i)->Name());
      }
    }
  }
  return found;
}

// One tool leaves values behind the brace, which belong to nothing.
const std::string kStray = "}, 1.0, 2.0\n";

std::string TextElement(const std::string& field, int number, const std::string& mapping,
                        const std::string& values) {
  const std::string array = field == "LayerElementMaterial" ? "Materials" : "TextureId";
  return field + ": " + std::to_string(number) + " {\nMappingInformationType: \"" + mapping +
         "\"\nReferenceInformationType: \"IndexToDirect\"\n" + array + ": " + values + "\n" +
         kStray;
}

std::string LayerOf(int number, const std::vector<std::pair<std::string, int>>& entries) {
  std::string layer = "Layer: " + std::to_string(number) + " {\n";
  for (const auto& [type, index] : entries) {
    layer +=
        "LayerElement:  {\nType: \"" + type + "\"\nTypedIndex: " + std::to_string(index) + "\n}\n";
  }
  return layer + kStray;
}

TEST(Version6Document, LayerElementsGiveTexturesToMaterials) {
  const std::string byPolygon = TextElement("LayerElementMaterial", 0, "ByPolygon", "1,0,1");
  const std::string diffuse = "LayerElementTexture";
  const std::string normal = "LayerElementNormalMapTextures";
  const std::pair<std::string, int> material = {"LayerElementMaterial", 0};
  // By polygon, in the order of the polygons; -1, numbers out of range and short lists are none.
  EXPECT_THAT(TexturesOf(byPolygon + TextElement(diffuse, 0, "ByPolygon", "2,0,1") +
                         LayerOf(0, {material, {diffuse, 0}})),
              ElementsAre("x DiffuseColor t0", "y DiffuseColor t2", "y DiffuseColor t1"));
  EXPECT_THAT(TexturesOf(byPolygon + TextElement(diffuse, 0, "ByPolygon", "-1,9") +
                         LayerOf(0, {material, {diffuse, 0}})),
              IsEmpty());
  EXPECT_THAT(TexturesOf(byPolygon + TextElement(diffuse, 0, "NoMappingInformation", "0,0,0") +
                         LayerOf(0, {material, {diffuse, 0}})),
              IsEmpty());
  // The same for all, without materials, and with materials that all polygons share.
  EXPECT_THAT(TexturesOf(TextElement(diffuse, 0, "AllSame", "3") + LayerOf(0, {{diffuse, 0}})),
              ElementsAre("x DiffuseColor t3"));
  for (const char* shared : {"", "1"}) {
    EXPECT_THAT(
        TexturesOf(TextElement("LayerElementMaterial", 0, "AllSame", shared) +
                   TextElement(normal, 0, "AllSame", "1") + LayerOf(0, {material, {normal, 0}})),
        ElementsAre(std::string(*shared == '\0' ? "x" : "y") + " NormalMap t1"));
  }
  // Layers in the order of their numbers; one without materials takes the first that there are.
  // An element, and a pair, counts once; further elements of a field by their number.
  EXPECT_THAT(TexturesOf(byPolygon + TextElement(diffuse, 0, "AllSame", "1") +
                             TextElement(diffuse, 1, "AllSame", "0") +
                             TextElement("LayerElementBumpTextures", 0, "AllSame", "2") +
                             LayerOf(2, {{diffuse, 0}}) + LayerOf(1, {{diffuse, 1}, {diffuse, 7}}) +
                             LayerOf(5, {material, {diffuse, 0}, {"LayerElementBumpTextures", 0}}),
                         Connect("Texture::t3", "Material::x", "DiffuseColor")),
              ElementsAre("x DiffuseColor t3", "x DiffuseColor t0", "x DiffuseColor t1",
                          "x Bump t2", "y DiffuseColor t0", "y DiffuseColor t1", "y Bump t2"));
}

TEST(Version6Document, ArraysAreListsOrArrays) {
  FbxRecords fields = {{"Vertices", {1.0, 2.0, 3.0, 4.0F, int32_t{5}, 6.0, 7.0}},
                       {"PolygonVertexIndex", {std::vector<int32_t>{0, 1, -1}}}};
  FbxRecord model("Model", {"Model::m", "Mesh"}, fields);
  const FbxRecords document = {{"FBXHeaderExtension", {}, {{"FBXVersion", {6100}}}},
                               {"Objects", {}, {model}}};
  for (const bool bigEndian : {false, true}) {
    const LoadedScene file(WriteFbx(document, {.version = 6100, .bigEndian = bigEndian}));
    const FbxMesh* mesh = file.Node("m").GetMesh();
    ASSERT_EQ(mesh->GetControlPointsCount(), 2) << "a rest is dropped";
    EXPECT_EQ(mesh->GetControlPointAt(0), FbxVector4(1, 2, 3, 0));
    EXPECT_EQ(mesh->GetControlPointAt(1), FbxVector4(4, 0, 6, 0)) << "of another type";
    EXPECT_EQ(mesh->GetPolygonCount(), 1);
  }
}

TEST(Version6Document, ShapesDeformTheMeshAroundThem) {
  const LoadedScene file(
      Document(Object("Model", "m", "Mesh",
                      "Properties60:  {\nProperty: \"smile\", \"Shape\", \"A+\",25\n}\n"
                      "Vertices: 0,0,0,1,0,0\nPolygonVertexIndex: 0,1,-2\n"
                      "Shape: \"smile\" {\nIndexes: 1\nVertices: 0,2,0\n}\nShape: \"flat\"\n"
                      "Shape: \"Shape::smile\" {\nIndexes: 0,1\nVertices: 1,0,0\n}\n") +
               Object("Model", "bare", "Null", "Shape: \"s\" {\nIndexes: 1\n}\n")));
  ASSERT_THAT(file.Names<FbxBlendShapeChannel>(), ElementsAre("smile", "smile"));
  EXPECT_EQ(file.scene->GetSrcObjectCount<FbxBlendShape>(), 1);
  const FbxMesh& mesh = *file.Node("m").GetMesh();
  ASSERT_EQ(mesh.GetShapeCount(), 2);
  const auto* channel = file.Find<FbxBlendShapeChannel>("smile");
  EXPECT_EQ(channel->DeformPercent().Get<double>(), 25.0);
  EXPECT_THAT(channel->GetTargetShapeFullWeights(), ElementsAre(100.0));
  EXPECT_EQ(channel->GetTargetShape(0)->ControlPoints().at(1), FbxVector4(1, 2, 0, 0));
  EXPECT_EQ(file.scene->GetSrcObject<FbxShape>(1)->ControlPoints().at(0)[0], 1.0);
  const LoadedScene without(
      Document(Object("Model", "m", "Mesh", "Shape: \"s\" {\nIndexes: 1\n}\n")), {"Shape"});
  EXPECT_THAT(without.Names<FbxShape>(), IsEmpty());
}

TEST(Version6Document, SkinsOfModelsDeformTheirMeshes) {
  const LoadedScene file(
      Document(Object("Model", "m", "Mesh") + Object("Model", "n", "Null") +
                   Object("Model", "far", "Null") + Object("Geometry", "far", "Mesh") +
                   Object("Deformer", "s", "Skin") + Object("Deformer", "t", "Skin") +
                   Object("Deformer", "u", "Skin") + Object("Deformer", "b", "BlendShape"),
               Connect("Deformer::s", "Model::m") + Connect("Deformer::t", "Model::n") +
                   // The mesh of this model is a record of its own.
                   Connect("Deformer::u", "Model::far") + Connect("Geometry::far", "Model::far")));
  for (const char* name : {"m", "far"}) {
    EXPECT_EQ(file.Node(name).GetMesh()->GetDeformerCount(FbxDeformer::eSkin), 1) << name;
  }
  EXPECT_EQ(file.Node("n").GetSrcObjectCount<FbxSkin>(), 0);
  EXPECT_EQ(file.scene->GetSrcObjectCount<FbxBlendShape>(), 0);
}

std::string Channel(const std::string& name, const std::string& fields) {
  return "Channel: \"" + name + "\" {\n" + fields + "}\n";
}

TEST(Version6Document, TakesBecomeStacks) {
  const std::string keys = "KeyCount: 2\nKey: 0,1,L,100\n\t,2,L\n";
  const std::string model = "Model: \"Model::m\" {\n";
  const std::string takes =
      "Takes:  {\nCurrent: \"\"\nTake: \"run\" {\nLocalTime: 10,20\nReferenceTime: 5,30\n" + model +
      Channel("Transform",
              Channel("T", Channel("X", "Default: 7\n" + keys) + Channel("X", "Default: 8\n") +
                               Channel("Y", "Default: 9\nKeyCount: 0\n" + keys)) +
                  Channel("T", Channel("Z", keys)) + Channel("Q", Channel("X", keys)) +
                  Channel("S", "")) +
      Channel("Visibility", keys) + Channel("smile", keys) + "}\n" + model +
      Channel("Transform", Channel("R", Channel("X", keys)) + Channel("S", Channel("X", keys))) +
      "}\nModel: \"Model::nobody\" {\n" + Channel("Transform", Channel("T", Channel("X", keys))) +
      "}\nModel: \"Model::m\"\n}\nTake: \"run\" {\n}\nTake: \"flat\"\n}\n";
  const std::string objects =
      Object("Model", "m", "Mesh",
             "Properties60:  {\nProperty: \"Lcl Translation\", \"Lcl Translation\", \"\",1,2,3\n}\n"
             "Shape: \"smile\" {\n}\n");
  const LoadedScene file(Document(objects, "", takes));
  ASSERT_THAT(file.Names<FbxAnimStack>(), ElementsAre("run", "run"));
  const auto* stack = file.scene->GetSrcObject<FbxAnimStack>(0);
  EXPECT_EQ(stack->GetLocalTimeSpan().stop.Get(), 20);
  EXPECT_EQ(stack->GetReferenceTimeSpan().start.Get(), 5);
  EXPECT_EQ(file.scene->GetSrcObject<FbxAnimStack>(1)->GetLocalTimeSpan().stop.Get(), 0);
  EXPECT_NE(file.scene->GetTakeInfo("run"), nullptr);
  const FbxAnimLayer* layer = stack->GetLayer(0);
  ASSERT_EQ(layer->Name(), "BaseLayer");
  const FbxNode& node = file.Node("m");
  const FbxAnimCurveNode* moved = node.LclTranslation().GetCurveNode(layer);
  ASSERT_NE(moved, nullptr);
  const auto value = [](const FbxAnimCurveNode* curves, const char* channel) {
    return curves->GetChannel(channel).Get<double>();
  };
  EXPECT_EQ(value(moved, "X"), 7.0);
  EXPECT_EQ(value(moved, "Y"), 9.0);
  EXPECT_EQ(value(moved, "Z"), 3.0) << "the node's own";
  EXPECT_EQ(moved->GetCurveCount(0), 1);
  EXPECT_EQ(moved->GetCurve(0)->KeyGetCount(), 2);
  EXPECT_EQ(moved->GetCurve(0)->KeyGetTime(1).Get(), 100);
  EXPECT_EQ(moved->GetCurve(0)->curve.GetDefaultValue(), 7.0F);
  EXPECT_EQ(moved->GetCurveCount(1) + moved->GetCurveCount(2), 0);
  EXPECT_NE(node.LclRotation().GetCurve(layer, "X"), nullptr) << "in the second block";
  const FbxAnimCurveNode* scaled = node.LclScaling().GetCurveNode(layer);
  ASSERT_NE(scaled, nullptr);
  EXPECT_EQ(scaled->GetCurveCount(0), 0) << "the first block counts";
  EXPECT_EQ(value(scaled, "Y"), 1.0);
  EXPECT_NE(node.GetMesh()->GetShapeChannel(0, 0, layer), nullptr);
  EXPECT_THAT(LoadedScene(Document(objects, "", takes), {"Animation"}).Names<FbxAnimStack>(),
              IsEmpty());
}

TEST(Version6Document, MayBeEmpty) {
  for (const char* rest : {"", "Objects:\nConnections: 1\nTakes: {\n}\nVersion5: {\n"}) {
    const LoadedScene file(std::string("; FBX 6.0.0 project file\n") + rest);
    EXPECT_TRUE(file.isLoaded) << file.Status();
    EXPECT_TRUE(file.scene->GetGlobalSettings().GetAxisSystem() == FbxAxisSystem());
  }
}

}  // namespace
