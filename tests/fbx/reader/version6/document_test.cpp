// Documents of version 6 that real files and hostile ones hold: what is good in them is read.
#include <gtest/gtest.h>

#include "fbx/scene/fbx_mesh.h"
#include "tests/support/loaded_scene.h"

namespace {

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
    const LoadedScene file(
        "; FBX 6.1.0 project file\nFBXHeaderExtension:  {\nFBXVersion: 6100\n}\n"
        "Objects:  {\nGlobalSettings:  {\n"
        "Properties60:  {\n" +
        own +
        "}\n}\n}\nConnections:  {\n}\n"
        "Version5:  {\nSettings:  {\nFrameRate: \"" +
        rate +
        "\"\nTimeFormat: 1\n}\n"
        "AmbientRenderSettings:  {\nAmbientLightColor: 0.5,0.6,0.7,1\n}\n}\n");
    const FbxGlobalSettings& imported = file.scene->GetGlobalSettings();
    for (const FbxGlobalSettings* found : {file.importer->GetFileGlobalSettings(), &imported}) {
      EXPECT_EQ(found->GetTimeMode(), mode) << rate;
      EXPECT_EQ(found->GetCustomFrameRate(), custom) << rate;
      EXPECT_EQ(found->GetAmbientColor().mRed, hasSettings ? 0.1 : 0.5);
    }
  }
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

// What is known of the heads of an old file's properties isn't held against those of a new one,
// which have one value more.
TEST(Version6Document, NewFilesMayFollow) {
  const FbxRecord order("Property", {"RotationOrder", "enum", "", 0});
  const FbxRecord place("Property", {"Lcl Translation", "Lcl Translation", "A+", 1.0, 2.0, 3.0});
  FbxRecord objects("Objects");
  for (const char* name : {"Model::a", "Model::b", "Model::c"}) {
    objects.Add({"Model", {name, "Null"}, {{"Properties60", {}, {order, place}}}});
  }
  const LoadedScene old(
      WriteFbx({{"FBXHeaderExtension", {}, {{"FBXVersion", {6100}}}}, objects}, {.version = 6100}));
  EXPECT_EQ(old.scene->GetSrcObjectCount<FbxNode>(), 4) << "with the root node";
  SceneBuilder scene;
  scene.AddModel("n", "Null", {P("RotationOrder", "enum", "", "", {4})});
  const LoadedScene file(scene);
  EXPECT_EQ(file.Node("n").FindProperty("RotationOrder").Get<int>(), 4);
}

TEST(Version6Document, MayBeEmpty) {
  for (const char* rest : {"", "Objects:\nConnections: 1\nTakes: {\n}\nVersion5: {\n"}) {
    const LoadedScene file(std::string("; FBX 6.0.0 project file\n") + rest);
    EXPECT_TRUE(file.isLoaded) << file.Status();
    EXPECT_TRUE(file.scene->GetGlobalSettings().GetAxisSystem() == FbxAxisSystem());
  }
}

}  // namespace
