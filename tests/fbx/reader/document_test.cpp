// The importer's front: what it accepts, and what it says of what it refuses.
#include <algorithm>
#include <map>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/anim/fbx_animation.h"
#include "fbx/io/fbx_io.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"
#include "tests/support/loaded_scene.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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
  EXPECT_EQ(StatusOf(whole.substr(0, whole.size() / 2)), "1 File is corrupted (or invalid)");
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
                           .SetAxes(1, 1, 2, 1, 0, 1)
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

TEST(Importer, NamesTheDocumentAndFindsItsRoot) {
  FbxRecords records = SceneBuilder().Document();
  FbxRecord& document = Find(records, "Documents").children[1];
  document.values[1] = "Document::Attic";
  document.children[0].values = {int64_t{77}};
  FbxRecord& objects = Find(records, "Objects");
  objects.Add({"Model", {int64_t{78}, "Model::Lamp", "Null"}, {{"X"}}});
  // An object can't take the root's id.
  objects.Add({"Model", {int64_t{77}, "Model::Thief", "Null"}, {{"X"}}});
  Find(records, "Connections").Add({"C", {"OO", int64_t{78}, int64_t{77}}});
  Find(records, "Definitions").Add({"ObjectType", {"Model"}, {{"Count", {1}}}});
  const LoadedScene file(WriteFbx(records));
  EXPECT_STREQ(file.scene->GetName(), "Attic");
  EXPECT_THAT(ChildNames(*file.scene->GetRootNode()), ElementsAre("Lamp"));
  EXPECT_THAT(file.Names<FbxNode>(), ElementsAre("RootNode", "Lamp"));
}

TEST(Importer, SetsTheGlobalTimeMode) {
  EXPECT_TRUE(LoadedScene(SceneBuilder().SetTimeMode(14, 12.0)).isLoaded);
  EXPECT_EQ(FbxTime::GetGlobalTimeMode(), FbxTime::eCustom);
  FbxRecords records = SceneBuilder().Document();
  std::erase_if(records, [](const FbxRecord& r) { return r.name == "GlobalSettings"; });
  EXPECT_TRUE(LoadedScene(WriteFbx(records)).isLoaded);
  EXPECT_EQ(FbxTime::GetGlobalTimeMode(), FbxTime::eDefaultMode);
}

// Which records of a file become objects, and in which order.

TEST(ReadObjects, TakesTypesInTheirOrderAndRecordsInTheFiles) {
  SceneBuilder scene;
  const std::vector<std::pair<const char*, const char*>> types = {
      {"Geometry", "Mesh"},   {"Video", ""},       {"Model", ""},
      {"Texture", ""},        {"Material", ""},    {"NodeAttribute", "Light"},
      {"AnimationCurve", ""}, {"Pose", "BindPose"}};
  for (const auto& [type, subclass] : types) {
    for (const char* name : {"b", "a"})
      scene.AddObject(type, type, type + std::string(name), subclass);
  }
  std::vector<std::string> names = LoadedScene(scene).Names<FbxObject>();
  names.erase(names.begin(), names.begin() + 2);  // the root node and the settings
  EXPECT_THAT(names,
              ElementsAre("NodeAttributeb", "NodeAttributea", "Modelb", "Modela", "Materialb",
                          "Materiala", "Textureb", "Texturea", "Videob", "Videoa", "Geometryb",
                          "Geometrya", "AnimationCurveb", "AnimationCurvea", "Poseb", "Posea"));
}

TEST(ReadObjects, MakesTheClassOfTypeAndSubclass) {
  // Those that other tests read have no row; of a skeleton with its type.
  const std::vector<std::array<std::string, 3>> cases = {
      {"Model", "Whatever", "FbxNode"},
      {"NodeAttribute", "Null", "FbxNull"},
      {"NodeAttribute", "Light", "FbxLight"},
      {"NodeAttribute", "Camera", "FbxCamera"},
      {"NodeAttribute", "LimbNode", "FbxSkeleton2"},
      {"NodeAttribute", "Limb", "FbxSkeleton1"},
      {"NodeAttribute", "Root", "FbxSkeleton0"},
      {"NodeAttribute", "Effector", "FbxSkeleton3"},
      {"NodeAttribute", "LodGroup", ""},
      {"Geometry", "Shape", "FbxShape"},
      {"Geometry", "NurbsCurve", ""},
      {"Deformer", "VertexCacheDeformer", ""},
      {"Pose", "CharacterPose", ""},
      {"AnimationLayer", "x", "FbxAnimLayer"},
      {"NoSuchType", "", ""},
  };
  SceneBuilder scene;
  for (const auto& [type, subclass, expected] : cases) {
    scene.AddObject(type, type, type + subclass, subclass);
  }
  const LoadedScene file(scene);
  for (const auto& [type, subclass, expected] : cases) {
    const auto* object = file.Find<FbxObject>(type + subclass);
    std::string found = object == nullptr ? "" : object->GetClassId().GetName();
    if (found == "FbxSkeleton") {
      found += std::to_string(static_cast<const FbxSkeleton*>(object)->GetSkeletonType());
    }
    EXPECT_EQ(found, expected) << type << subclass;
  }
  EXPECT_TRUE(LoadedScene(scene.Write(), {"Shape"}).Names<FbxShape>().empty());
}

// Of the first versions, beside the properties.
TEST(ReadObjects, OldFieldsOfBones) {
  SceneBuilder scene;
  const FbxRecord block("Properties", {}, {{"Size", {3.0}}, {"Color", {0.1, 0.2, 0.3}}});
  for (const char* kind : {"Root", "Limb", "LimbNode", "Effector"}) {
    scene.AddNodeAttribute(kind, kind, {}, {{"LimbLength", {2.5}}, block});
  }
  const LoadedScene file(scene);
  std::string found;
  for (const char* kind : {"Root", "Limb", "LimbNode", "Effector"}) {
    const auto* bone = file.Find<FbxSkeleton>(kind);
    for (const char* name : {"LimbLength", "Size", "Color"}) {
      found += bone->FindProperty(name).Get<FbxString>().Text() + " ";
    }
  }
  EXPECT_EQ(found, "1 3 0.8 0.8 0.8 2.5 3 0.1 0.2 0.3 1 3 0.1 0.2 0.3 1 100 0.8 0.8 0.8 ");
}

TEST(ReadObjects, PassesOverWhatHasNoBlockOrAKnownId) {
  FbxRecords records = SceneBuilder().Document();
  FbxRecords& objects = records[records.size() - 2].children;
  const auto model = [](int64_t id, const char* name) {
    return FbxRecord("Model", {id, std::string("Model::") + name, "Null"}, {{"Version", {232}}});
  };
  objects = {model(1, "first"),
             model(1, "second"),
             {"Model", {int64_t{2}, "Model::flat", "Null"}},
             {"Model", {"Model::nameless::id", "Null"}, {{"Version", {232}}}},
             {"Model", {int64_t{-4}, "Model::kindless"}, {{"Version", {232}}}},
             {"Material", {int64_t{3}, "Material::undefined", ""}, {{"Version"}}}};
  // Types without a definition are read all the same.
  for (FbxRecord& record : records) {
    if (record.name == "Definitions") record.Add({"ObjectType", {"Model"}});
  }
  for (const bool ascii : {false, true}) {
    const LoadedScene file(WriteFbx(records, {.ascii = ascii}));
    EXPECT_TRUE(file.isLoaded);
    EXPECT_THAT(file.Names<FbxNode>(),
                ElementsAre("RootNode", "first", "nameless::id", "kindless"));
    EXPECT_NE(file.Find<FbxSurfaceMaterial>("undefined"), nullptr);
  }
}

TEST(ReadCurves, ReadsKeysAttributesAndExtrapolation) {
  SceneBuilder scene;
  const auto curve = [&](const char* name, FbxRecords records) {
    scene.AddObject("AnimationCurve", "AnimCurve", name, "", {}, std::move(records));
  };
  using Ints = std::vector<int32_t>;
  using Floats = std::vector<float>;
  const FbxRecord times("KeyTime", {std::vector<int64_t>{0, 100, 300}});
  curve("floats", {{"Default", {2.5}},
                   {"KeyVer", {4009}},
                   times,
                   {"KeyValueFloat", {Floats{1, 2, 4}}},
                   {"KeyAttrFlags", {Ints{4, 8}}},
                   {"KeyAttrDataFloat", {Floats{0, 0, 0, 0, 0.5F, 1e-20F, 0, 0}}},
                   {"KeyAttrRefCount", {Ints{1, 2}}},
                   {"Pre-Extrapolation", {}, {{"Type", {'M'}}, {"Repetition", {3}}}},
                   {"Post-Extrapolation", {}, {{"Type", {'K'}}, {"Repetition", {-1}}}}});
  curve("doubles", {times, {"KeyValueDouble", {std::vector<double>{1, 2, 4}}}});
  curve("empty", {{"Default", {7.0}}});
  // Fewer values than times, and counts that claim too many keys.
  curve("short", {times,
                  {"KeyValueFloat", {Floats{1}}},
                  {"KeyAttrFlags", {Ints{4}}},
                  {"KeyAttrRefCount", {Ints{0x7FFFFFFF}}}});
  // Version 4007 has attribute data as numbers in text, too: doubles here, since the builder
  // writes floats of this field as bits.
  curve("numbers", {{"KeyVer", {4007}},
                    times,
                    {"KeyValueFloat", {Floats{1}}},
                    {"KeyAttrFlags", {Ints{8}}},
                    {"KeyAttrDataFloat", {std::vector<double>{0.5, 2, 0, 0}}},
                    {"KeyAttrRefCount", {Ints{1}}}});
  for (const bool ascii : {false, true}) {
    const LoadedScene file(scene, {.ascii = ascii});
    // The default, keys with the flags and the first two words of their attributes, extrapolations.
    const auto text = [&](const char* name) {
      const KFCurve& c = file.Find<FbxAnimCurve>(name)->curve;
      std::ostringstream out;
      out << c.GetDefaultValue();
      for (int i = 0; i < c.KeyGetCount(); ++i) {
        const KFCurveKeyAttr attr = c.KeyGetAttr(i);
        out << ", " << c.KeyGetTime(i).Get() << " " << c.KeyGetValue(i) << " " << attr.flags << " "
            << std::bit_cast<float>(attr.words[0]) << " " << std::bit_cast<float>(attr.words[1]);
      }
      for (const auto& end : {c.GetPreExtrapolation(), c.GetPostExtrapolation()}) {
        out << "; " << end.mode << " " << end.count;
      }
      return out.str();
    };
    EXPECT_EQ(text("floats"), "2.5, 0 1 4 0 0, 100 2 8 0.5 1e-20, 300 4 8 0.5 1e-20; 3 3; 4 -1");
    EXPECT_EQ(text("doubles"), "0, 0 1 0 0 0, 100 2 0 0 0, 300 4 0 0 0; 1 -1; 1 -1");
    EXPECT_EQ(text("empty"), "7; 1 -1; 1 -1");
    EXPECT_EQ(text("short").substr(0, 10), "0, 0 1 4 0");
    EXPECT_EQ(text("numbers").substr(0, 12), ascii ? "0, 0 1 8 0.5" : "0, 0 1 8 0 0");
  }
}

// Property records, and the templates that give a class its defaults.

// A scene of one node with these properties.
SceneBuilder WithNode(FbxRecords properties) {
  SceneBuilder scene;
  scene.AddModel("Node", "Null", std::move(properties));
  return scene;
}

TEST(ReadProperties, ResolvesAndReadsEveryType) {
  struct Case {
    const char* type;
    const char* subType;
    FbxValue value;
    EFbxType expected;
    const char* printed;
  };
  const std::vector<Case> cases = {
      {"Lcl Translation", "Lcl Translation", 1.5, eFbxDouble3, "1.5 0 0"},
      {"double", "Number", 2.5, eFbxDouble, "2.5"},
      {"double", "no such type", 2.5, eFbxDouble, "2.5"},
      {"no such type", "Integer", int32_t{7}, eFbxInt, "7"},
      {"KString", "XRefUrl", "a b", eFbxString, "a b"},
      {"bool", "", int32_t{5}, eFbxBool, "1"},
      {"enum", "", int32_t{-3}, eFbxEnum, "-3"},
      {"Byte", "", int8_t{-5}, eFbxChar, "-5"},
      {"Short", "", int16_t{-300}, eFbxShort, "-300"},
      {"LongLong", "", int64_t{1} << 40, eFbxLongLong, "1099511627776"},
      {"KTime", "Time", int64_t{1} << 41, eFbxTime, "2199023255552"},
      {"Float", "", 0.25F, eFbxFloat, "0.25"},
      {"DateTime", "", "29/02/2024", eFbxDateTime, "29/02/2024"},
      {"Vector2D", "Vector2", 4.0, eFbxDouble2, "4 0"},
      {"ColorAndAlpha", "", 1.0, eFbxDouble4, "1 0 0 0"},
  };
  FbxRecords properties = {P("lost", "no such type", "", "", {1})};
  for (size_t i = 0; i < cases.size(); ++i) {
    const Case& c = cases[i];
    properties.push_back({"P", {Numbered("p", i), c.type, c.subType, "", c.value}});
  }
  for (const bool ascii : {false, true}) {
    const LoadedScene file(WithNode(properties), {.ascii = ascii});
    const FbxNode& node = file.Node("Node");
    for (size_t i = 0; i < cases.size(); ++i) {
      SCOPED_TRACE(i);
      const FbxProperty p = node.FindProperty(Numbered("p", i));
      EXPECT_EQ(p.GetPropertyDataType().GetType(), cases[i].expected);
      EXPECT_EQ(p.Get<FbxString>(), cases[i].printed);
    }
    EXPECT_FALSE(node.FindProperty("lost").IsValid());
  }
}

TEST(ReadProperties, KeepsTheTypesOfKnownProperties) {
  const LoadedScene file(WithNode({P("Lcl Scaling", "Vector", "", "A", {2, 3, 4}),
                                   P("RotationOrder", "double", "Number", "", {2.0}),
                                   P("InheritType", "KString", "", "", {"text"})}));
  const FbxNode& node = file.Node("Node");
  EXPECT_EQ(node.LclScaling().Get<FbxDouble3>(), (FbxDouble3{2, 3, 4}));
  EXPECT_EQ(node.FindProperty("RotationOrder").Get<int>(), 2);
  // A text is no number, so the class's value holds.
  EXPECT_FALSE(node.FindProperty("InheritType").Modified());
  EXPECT_TRUE(node.LclScaling().Modified());
}

TEST(ReadProperties, BuildsTreesOfNames) {
  const LoadedScene file(WithNode(
      {P("Group", "Compound", "", "", {}), P("Group|x", "double", "Number", "", {1.0}),
       P("Group|x|deep", "int", "Integer", "", {2}), P("Nowhere|x", "double", "Number", "", {1.0}),
       P("Group|x", "double", "Number", "", {3.0})}));
  const FbxProperty root = file.Node("Node").RootProperty();
  EXPECT_EQ(root.FindHierarchical("Group|x").Get<double>(), 3.0);
  EXPECT_EQ(root.FindHierarchical("Group|x|deep").Get<int>(), 2);
  EXPECT_FALSE(root.Find("Nowhere").IsValid());
  EXPECT_FALSE(root.Find("Group|x").IsValid());
}

TEST(Templates, GiveTheirClassAndNoOtherTheirValues) {
  SceneBuilder scene;
  scene.AddTemplate("Model", "FbxNode",
                    {P("Lcl Scaling", {2, 2, 2}), P("Team", "KString", "", "", {"red"}),
                     P("Lcl Rotation", "Lcl Rotation", "", "AL1", {0, 0, 0})});
  // The first template of a class holds.
  scene.AddTemplate("Model", "FbxNode", {P("Lcl Scaling", {9, 9, 9})});
  scene.AddTemplate("Geometry", "FbxGeometry", {P("Team", "KString", "", "", {"blue"})});
  scene.AddTemplate("Geometry", "NoSuchClass", {P("Team", "KString", "", "", {"blue"})});
  scene.AddModel("plain");
  scene.AddModel("own", "Null", {P("Lcl Scaling", {3, 3, 3}), P("Team", "KString", "", "", {"x"})});
  scene.AddMesh("mesh", {}, {});
  const LoadedScene file(scene);
  const FbxNode& plain = file.Node("plain");
  const FbxNode& own = file.Node("own");
  EXPECT_EQ(plain.LclScaling().Get<FbxDouble3>(), (FbxDouble3{2, 2, 2}));
  EXPECT_EQ(plain.FindProperty("Team").Get<FbxString>(), "red");
  EXPECT_EQ(plain.LclRotation().GetFlags(), FbxPropertyFlags::eAnimatable | 1U << 7);
  EXPECT_EQ(own.LclScaling().Get<FbxDouble3>(), (FbxDouble3{3, 3, 3}));
  EXPECT_EQ(own.FindProperty("Team").Get<FbxString>(), "x");
  EXPECT_FALSE(file.Find<FbxMesh>("mesh")->FindProperty("Team").IsValid());
  // The template itself is no object of the scene.
  EXPECT_THAT(file.Names<FbxNode>(), ElementsAre("RootNode", "plain", "own"));
}

// Connections: what the tags tie together, and what is dropped.

TEST(ReadConnections, TieObjectsAndPropertiesByTag) {
  SceneBuilder scene;
  const FbxRecords properties = {P("a", {1.0}), P("g", "Compound", "", "", {}), P("g|b", {2.0})};
  const int64_t x = scene.AddModel("x", "Null", properties);
  const int64_t y = scene.AddModel("y", "Null", properties);
  scene.AddConnection({"OP", x, y, "g|b"});
  scene.AddConnection({"OP", x, y, "g|b"});
  scene.AddConnection({"PO", x, "a", y});
  scene.AddConnection({"PP", x, "g|b", y, "a"});
  scene.AddConnection({"EP", x, "a"});
  const int64_t absent = 424242;
  const std::vector<FbxValues> dropped = {{"OP", x, y, "none"},
                                          {"OP", x, y, "b"},
                                          {"OP", x, y, ""},
                                          {"OP", x, y, "A"},
                                          {"PO", x, "none", y},
                                          {"PP", x, "none", y, "g"},
                                          {"OO", x, absent},
                                          {"OO", absent, y},
                                          {"XX", x, y},
                                          {"OO"},
                                          {}};
  for (const FbxValues& values : dropped) scene.AddConnection(values);
  const LoadedScene file(scene);
  const FbxNode& from = file.Node("x");
  const FbxNode& to = file.Node("y");
  const FbxProperty b = to.RootProperty().FindHierarchical("g|b");
  EXPECT_THAT(b.Sources(), ElementsAre(from.RootProperty()));
  EXPECT_THAT(to.RootProperty().Sources(), ElementsAre(from.FindProperty("a")));
  EXPECT_THAT(to.FindProperty("a").Sources(),
              ElementsAre(from.RootProperty().FindHierarchical("g|b")));
  EXPECT_THAT(to.FindProperty("g").Sources(), IsEmpty());
  EXPECT_THAT(from.FindProperty("a").Sources(), ElementsAre(file.scene->RootProperty()));
  // A connection to a property is none to its object.
  EXPECT_EQ(to.GetSrcObjectCount(), 0);
  EXPECT_THAT(from.Children(), IsEmpty());
}

TEST(ReadConnections, RepeatOnlyMaterialsAndLayeredTextures) {
  SceneBuilder scene;
  const int64_t node = scene.AddModel("node", "Mesh");
  const int64_t mesh = scene.AddMesh("mesh", {}, {});
  const int64_t red = scene.AddMaterial("red");
  const int64_t blue = scene.AddMaterial("blue");
  const int64_t texture = scene.AddTexture("texture", "t.png");
  const int64_t layered = scene.AddObject("LayeredTexture", "LayeredTexture", "layered", "");
  for (const int64_t source : {red, mesh, blue, mesh, red}) scene.Connect(source, node);
  for (int i = 0; i < 2; ++i) {
    scene.Connect(texture, layered);
    scene.ConnectProperty(texture, red, "DiffuseColor");
  }
  const LoadedScene file(scene);
  const FbxNode& n = file.Node("node");
  ASSERT_EQ(n.GetMaterialCount(), 3);
  EXPECT_STREQ(n.GetMaterial(1)->GetName(), "blue");
  EXPECT_EQ(n.GetMaterial(2), n.GetMaterial(0));
  EXPECT_EQ(n.GetNodeAttributeCount(), 1);
  EXPECT_EQ(file.Find<FbxLayeredTexture>("layered")->GetSrcObjectCount<FbxTexture>(), 2);
  EXPECT_EQ(n.GetMaterial(0)->FindProperty("DiffuseColor").GetSrcObjectCount(), 1);
}

TEST(ReadConnections, NodesFormATree) {
  SceneBuilder scene;
  const int64_t a = scene.AddModel("a");
  const int64_t b = scene.AddModel("b");
  const int64_t c = scene.AddModel("c");
  scene.Connect(b, a);
  scene.Connect(c, b);
  scene.Connect(a, c);                    // closes a ring
  scene.Connect(b, b);                    // a node below itself
  scene.Connect(SceneBuilder::kRoot, c);  // the root below a node
  scene.Connect(a, SceneBuilder::kRoot);
  scene.Connect(c, SceneBuilder::kRoot);  // a second parent
  // Children in the connections' order, not the objects', and a repeated one once.
  const int64_t d = scene.AddModel("d");
  scene.AddConnection({"OD", scene.AddModel("e"), a});
  scene.Connect(d, a);
  scene.Connect(d, a);
  scene.AddModel("loose");
  for (const bool ascii : {false, true}) {
    const LoadedScene file(scene, {.ascii = ascii});
    EXPECT_THAT(ChildNames(*file.scene->GetRootNode()), ElementsAre("a"));
    EXPECT_THAT(ChildNames(file.Node("a")), ElementsAre("b", "e", "d"));
    EXPECT_THAT(ChildNames(file.Node("b")), ElementsAre("c"));
    EXPECT_THAT(ChildNames(file.Node("c")), IsEmpty());
    EXPECT_EQ(file.Node("loose").GetParent(), nullptr);
  }
}

TEST(ReadConnections, RingsAreCutAndAnimationsHaveAFewOwners) {
  SceneBuilder scene;
  const int64_t x = scene.AddObject("LayeredTexture", "LayeredTexture", "x", "");
  const int64_t y = scene.AddObject("LayeredTexture", "LayeredTexture", "y", "");
  const int64_t node = scene.AddModel("node", "Null", {P("p", {1.0}), P("q", {1.0})});
  for (const auto& [source, target] : {std::pair(x, y), {y, x}, {x, x}}) {
    scene.Connect(source, target);
  }
  scene.AddConnection({"PP", node, "p", node, "q"});
  scene.AddConnection({"PP", node, "q", node, "p"});
  const int64_t layer = scene.AddAnimationLayer("layer");
  const int64_t curves = scene.AddAnimationCurveNode("T", {});
  for (int i = 0; i < 20; ++i) {
    scene.Connect(layer, scene.AddAnimationStack("stack", 0, 1));
    scene.Connect(curves, scene.AddAnimationLayer("other"));
  }
  const LoadedScene file(scene);
  EXPECT_EQ(file.Find<FbxLayeredTexture>("y")->GetSrcObjectCount(), 1);
  EXPECT_EQ(file.Find<FbxLayeredTexture>("x")->GetSrcObjectCount(), 0);
  EXPECT_EQ(file.Node("node").FindProperty("q").GetSrcPropertyCount(), 1);
  EXPECT_EQ(file.Node("node").FindProperty("p").GetSrcPropertyCount(), 0);
  EXPECT_EQ(file.Find<FbxAnimLayer>("layer")->GetDstObjectCount(), 16 + 1) << "and the scene";
  EXPECT_EQ(file.Find<FbxAnimCurveNode>("T")->GetDstObjectCount(), 16 + 1);
}

// Deeper than any tree of an artist; connected from the leaves up, the costly way round.
TEST(ReadConnections, DeepTreesAreCutAtTheLimit) {
  constexpr int kLevels = 12000;
  SceneBuilder scene;
  std::vector<int64_t> ids;
  for (size_t i = 0; i < kLevels; ++i) ids.push_back(scene.AddModel(Numbered("n", i)));
  for (size_t i = ids.size() - 1; i > 0; --i) scene.Connect(ids[i], ids[i - 1]);
  scene.Connect(ids[0], SceneBuilder::kRoot);
  const LoadedScene file(scene);
  EXPECT_EQ(file.scene->GetRootNode()->GetChildCount(true), 10000);
  const FbxNode* last = file.scene->GetSrcObject<FbxNode>(kLevels);
  EXPECT_EQ(last->EvaluateGlobalTransform().GetT()[0], 0.0);
}

}  // namespace
