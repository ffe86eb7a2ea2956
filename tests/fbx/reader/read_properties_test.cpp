// Property records, and the templates that give a class its defaults.
#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_mesh.h"
#include "tests/support/loaded_scene.h"

using testing::ElementsAre;

namespace {

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

TEST(ReadProperties, ReadsFlagLetters) {
  const std::map<std::string, uint32_t> cases = {
      {"", 0},          {"A+", 6},
      {"U", 0x10},      {"H", 0x20},
      {"L", 15U << 7},  {"Mc", 12U << 11},
      {"L0", 15U << 7}, {"AUHL1M2", 0x32U | 1U << 7 | 2U << 11}};
  // A flag of the class goes when its letter isn't there; what is created bears one of its own.
  FbxRecords properties = {P("Lcl Translation", "Lcl Translation", "", "", {1, 2, 3})};
  for (const auto& [letters, flags] : cases) {
    properties.push_back(P("p" + letters, "double", "Number", letters, {1.0}));
  }
  const LoadedScene file(WithNode(properties));
  for (const auto& [letters, flags] : cases) {
    EXPECT_EQ(file.Node("Node").FindProperty("p" + letters).GetFlags(),
              flags | FbxPropertyFlags::eImported)
        << letters;
  }
  EXPECT_EQ(file.Node("Node").LclTranslation().GetFlags(), 0U);
}

TEST(ReadProperties, ReadsLimitsAndItemsOfUserProperties) {
  const LoadedScene file(WithNode({P("number", "double", "Number", "A+U", {3.0, -1.0, 10.0}),
                                   P("plain", "double", "Number", "A", {3.0, -1.0, 10.0}),
                                   P("choice", "enum", "", "U", {1, "red~green~~blue"})}));
  const FbxNode& node = file.Node("Node");
  EXPECT_EQ(node.FindProperty("number").GetMinLimit(), -1.0);
  EXPECT_EQ(node.FindProperty("number").GetMaxLimit(), 10.0);
  EXPECT_FALSE(node.FindProperty("plain").HasMinLimit());
  EXPECT_EQ(node.FindProperty("choice").GetEnumCount(), 4);
  EXPECT_EQ(node.FindProperty("choice").GetEnumValue(1), "green");
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

}  // namespace
