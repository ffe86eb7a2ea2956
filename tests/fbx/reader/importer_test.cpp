// The importer's front: what it accepts, and what it says of what it refuses.
#include <algorithm>

#include <gtest/gtest.h>

#include "tests/support/loaded_scene.h"

namespace {

FbxRecord& Find(FbxRecords& records, const std::string& name) {
  return *std::ranges::find(records, name, &FbxRecord::name);
}

std::string StatusOf(const std::string& bytes) { return LoadedScene(bytes).Status(); }

std::string WithPassword() {
  FbxRecords records = SceneBuilder().Document();
  records.insert(records.begin() + 3, {"NodeId", {"secret"}});
  return WriteFbx(records);
}

TEST(Importer, SaysWhyAFileIsRefused) {
  const SceneBuilder scene;
  EXPECT_EQ(StatusOf(scene.Write()), "0 ");
  EXPECT_EQ(StatusOf(""), "1 File is corrupted ");
  EXPECT_EQ(StatusOf("; FBX 7.4.0 something else\n"), "1 File is corrupted ");
  for (const bool ascii : {false, true}) {
    const LoadedScene old(scene.Write({.ascii = ascii, .version = 5800}));
    EXPECT_EQ(old.Status(), "1 Unexpected file type");
    int major = 0;
    int minor = 0;
    int revision = 0;
    old.importer->GetFileVersion(major, minor, revision);
    EXPECT_EQ(major * 100 + minor * 10 + revision, 580) << "for whoever says why";
    EXPECT_EQ(StatusOf(scene.Write({.ascii = ascii, .version = 8000})),
              "6 FBX file version 8.0.0 is not supported in this product");
  }
  const std::string whole = scene.Write();
  const std::string half = whole.substr(0, whole.size() / 2);
  EXPECT_EQ(StatusOf(half), "1 File is corrupted (or invalid)");
  LoadedScene opened(whole);
  EXPECT_TRUE(opened.importer->InitializeFromMemory(half, nullptr));
  EXPECT_EQ(opened.Status(), "0 ") << "the head is whole, and what follows it is not yet read";
  EXPECT_EQ(StatusOf(WithPassword()), "5 Wrong password");

  FbxRecords records = scene.Document();
  Find(records, "Documents").children = {{"Count", {0}}};
  EXPECT_EQ(StatusOf(WriteFbx(records)), "1 File is corrupted (or invalid)");
}

TEST(Importer, SaysWhatIsMissing) {
  FbxManager* manager = FbxManager::Create();
  FbxImporter* importer = FbxImporter::Create(manager, "");
  FbxScene* scene = FbxScene::Create(manager, "");
  const auto text = [&] { return std::string(importer->GetStatus().GetErrorString()); };
  EXPECT_FALSE(importer->Import(scene));
  EXPECT_EQ(text(), "File not opened");
  EXPECT_FALSE(importer->Initialize("/no/such/file.fbx"));
  EXPECT_EQ(text(), "Unable to open file /no/such/file.fbx");
  const std::string locked = WithPassword();
  FbxIOSettings* settings = FbxIOSettings::Create(manager, "");
  settings->SetStringProp("Import|AdvOptGrp|FileFormat|Fbx|Password", "secret");
  EXPECT_TRUE(importer->InitializeFromMemory(locked, settings) && importer->Import(scene));
  manager->Destroy();
}

TEST(Importer, KnowsVersionAndSettingsBeforeTheImport) {
  FbxRecords records = SceneBuilder()
                           .SetYUp()
                           .SetGlobal(P("UnitScaleFactor", "double", "Number", "", {2.54}))
                           .Document(7300);
  const std::string whole = WriteFbx(records, {.version = 7300});
  // Version 7.0 may keep the settings among the objects.
  FbxRecord settings = Find(records, "GlobalSettings");
  std::erase_if(records, [](const FbxRecord& r) { return r.name == "GlobalSettings"; });
  settings.values = {int64_t{5}, "GlobalSettings::", ""};
  Find(records, "Objects").Add(settings);
  for (const std::string& bytes : {whole, WriteFbx(records, {.version = 7000})}) {
    const LoadedScene file(bytes);
    int major = 0;
    int minor = 1;
    int revision = 1;
    file.importer->GetFileVersion(major, minor, revision);
    EXPECT_EQ(major * 100 + minor * 10 + revision, 730) << "the header block's version holds";
    EXPECT_EQ(file.importer->GetFileHeaderInfo()->creationTimeStamp.year, 2024);
    const FbxGlobalSettings& imported = file.scene->GetGlobalSettings();
    for (const FbxGlobalSettings* found : {file.importer->GetFileGlobalSettings(), &imported}) {
      EXPECT_EQ(found->GetSystemUnit(), 2.54);
      EXPECT_EQ(found->GetAxisSystem(), FbxAxisSystem::MayaYUp);
    }
  }
}

TEST(Importer, SetsTheGlobalTimeMode) {
  EXPECT_TRUE(LoadedScene(SceneBuilder().SetTimeMode(14, 12.0)).isLoaded);
  EXPECT_EQ(FbxTime::GetGlobalTimeMode(), FbxTime::eCustom);
  FbxRecords records = SceneBuilder().Document();
  std::erase_if(records, [](const FbxRecord& r) { return r.name == "GlobalSettings"; });
  EXPECT_TRUE(LoadedScene(WriteFbx(records)).isLoaded);
  EXPECT_EQ(FbxTime::GetGlobalTimeMode(), FbxTime::eDefaultMode);
}

// Deeper than any tree of an artist; connected from the leaves up, the costly way round.
TEST(ReadConnections, DeepTreesAreCutAtTheLimit) {
  constexpr int kLevels = 12000;
  SceneBuilder scene;
  std::vector<int64_t> ids;
  for (int i = 0; i < kLevels; ++i) ids.push_back(scene.AddModel("n"));
  for (size_t i = ids.size() - 1; i > 0; --i) scene.Connect(ids[i], ids[i - 1]);
  scene.Connect(ids[0], SceneBuilder::kRoot);
  const LoadedScene file(scene);
  EXPECT_EQ(file.scene->GetRootNode()->GetChildCount(true), 10000);
  const FbxNode* last = file.scene->GetSrcObject<FbxNode>(kLevels);
  EXPECT_EQ(last->EvaluateGlobalTransform().GetT()[0], 0.0);
}

// Both ends of the last connection have many others by then; before, one end has few.
TEST(ReadConnections, HubsAreConnectedOnce) {
  constexpr int kMany = 40;
  SceneBuilder scene;
  const int64_t node = scene.AddModel("hub");
  const int64_t attribute = scene.AddNodeAttribute("shared", "Null");
  const auto connectTwice = [&](int64_t child, int64_t parent) {
    scene.Connect(child, parent);
    scene.Connect(child, parent);
  };
  for (int i = 0; i < kMany; ++i) {
    connectTwice(scene.AddNodeAttribute("other", "Null"), node);
    connectTwice(attribute, scene.AddModel("user"));
  }
  connectTwice(attribute, node);
  const LoadedScene file(scene);
  EXPECT_EQ(file.Node("hub").GetNodeAttributeCount(), kMany + 1);
  const FbxNodeAttribute* shared = file.Find<FbxNodeAttribute>("shared");
  EXPECT_EQ(shared->GetDstObjectCount(), kMany + 2) << "the scene is one of them";
  EXPECT_EQ(shared->GetNode(kMany), &file.Node("hub"));
}

}  // namespace
