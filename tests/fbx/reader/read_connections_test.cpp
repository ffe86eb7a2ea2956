// Connections: what the tags tie together, and what is dropped.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/anim/fbx_animation.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_mesh.h"
#include "tests/support/loaded_scene.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

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
