// Classes, objects and their connections, in memory.
#include <cmath>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/core/fbx_object.h"
#include "fbx/core/fbx_string.h"
#include "fbx/core/fbx_time.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ObjectTest : public testing::Test {
 protected:
  ~ObjectTest() override { manager->Destroy(); }

  template <typename T = FbxNode>
  T* Make(const char* name = "") {
    return T::Create(manager, name);
  }

  FbxManager* manager = FbxManager::Create();
};

// What a recursive end takes along is what nothing else uses.
TEST_F(ObjectTest, ConnectionsKeepTheirOrderAndEndWithTheirObjects) {
  auto* scene = Make<FbxScene>();
  FbxNode* parent = Make("parent");
  FbxNode* b = Make("b");
  FbxNode* a = Make("a");
  auto* mesh = Make<FbxMesh>();
  EXPECT_TRUE(parent->ConnectSrcObject(b) && parent->ConnectSrcObject(mesh));
  EXPECT_TRUE(a->ConnectDstObject(parent) && parent->IsConnectedSrcObject(a));
  EXPECT_FALSE(parent->ConnectSrcObject(b) || parent->ConnectSrcObject(nullptr) ||
               parent->ConnectSrcObject(parent));
  EXPECT_THAT(parent->Children(), ElementsAre(b, a));
  EXPECT_EQ(parent->GetSrcObject<FbxNode>(1), a);
  EXPECT_EQ(parent->GetSrcObject<FbxNode>(2), nullptr);
  EXPECT_EQ(mesh->GetDstObject(), parent);
  scene->ConnectSrcObject(a);
  a->ConnectSrcObject(mesh);
  parent->Destroy(true);
  EXPECT_EQ(a->GetParent(), nullptr);
  EXPECT_EQ(mesh->GetDstObjectCount(), 1);
  EXPECT_EQ(scene->GetSrcObjectCount<FbxNode>(), 2) << "the root is the other";
  a->Destroy();
  EXPECT_EQ(scene->GetSrcObjectCount<FbxNode>(), 1);
}

// A found scene may be several connections away.
TEST_F(ObjectTest, FindsItsScene) {
  auto* scene = Make<FbxScene>();
  auto* skin = Make<FbxSkin>();
  auto* cluster = Make<FbxCluster>();
  skin->ConnectSrcObject(cluster);
  cluster->ConnectSrcObject(skin);
  EXPECT_EQ(cluster->GetScene(), nullptr);
  scene->ConnectSrcObject(skin);
  EXPECT_EQ(cluster->GetScene(), scene);
}

// Properties: defaults of the class, values of the object, conversions.

class PropertyTest : public testing::Test {
 protected:
  ~PropertyTest() override { manager->Destroy(); }

  // A property of its own that holds `value`.
  template <typename T>
  FbxProperty Make(const char* type, const T& value) {
    const std::string name = std::to_string(count_++);
    FbxProperty property = FbxProperty::Create(node, GetDataTypeFromName(type), name);
    EXPECT_TRUE(property.Set(value)) << type;
    return property;
  }

  FbxManager* manager = FbxManager::Create();
  FbxNode* node = FbxNode::Create(manager, "node");

 private:
  int count_ = 0;
};

TEST_F(PropertyTest, ConvertsAmongTypes) {
  const auto toInt = [this](const char* type, double value) {
    return Make(type, value).Get<int>();
  };
  EXPECT_EQ(toInt("Number", 3.75), 3);
  EXPECT_EQ(toInt("Number", 1e300), std::numeric_limits<int>::max());
  EXPECT_EQ(toInt("Number", -1e300), std::numeric_limits<int>::min());
  EXPECT_EQ(toInt("Number", std::nan("")), 0);
  EXPECT_EQ(Make("Byte", 300).Get<int>(), 300 - 256) << "a value is narrowed to its type's width";
  EXPECT_EQ(toInt("Bool", 5), 1);
  EXPECT_EQ(Make("Float", 0.1).Get<double>(), static_cast<double>(0.1F));
  EXPECT_EQ(Make("Integer", -1).Get<uint64_t>(), std::numeric_limits<uint64_t>::max());
  EXPECT_EQ(Make("Time", FbxTime(FbxTime::kTicksPerSecond / 4)).Get<double>(), 0.25);
  const FbxProperty four = Make("Vector4", FbxDouble4{1, 2, 3, 4});
  EXPECT_EQ(four.Get<FbxDouble3>(), (FbxDouble3{1, 2, 3}));
  EXPECT_EQ(four.Get<double>(), 1.0);
  FbxDouble4 longer{9, 9, 9, 9};
  EXPECT_TRUE(Make("Vector", FbxDouble3{1, 2, 3}).Get(&longer, eFbxDouble4));
  EXPECT_EQ(longer, (FbxDouble4{1, 2, 3, 9}));
  // Without a rule the target is left alone.
  FbxDouble3 triple{7, 7, 7};
  EXPECT_FALSE(Make("KString", "12").Get(&triple, eFbxInt) ||
               Make("Number", 1.0).Get(&triple, eFbxDouble3) ||
               Make("Vector2", FbxDouble2{}).Get(&triple, eFbxDouble3) ||
               Make("Integer", 1).Get(&triple, eFbxTime));
  EXPECT_EQ(triple, (FbxDouble3{7, 7, 7}));
  EXPECT_FALSE(node->FindProperty("Lcl Scaling").Set("text"));
}

TEST_F(PropertyTest, HoldsNumbersOfEveryWidth) {
  const std::vector<std::pair<const char*, double>> kinds = {
      {"Byte", -100},  {"UByte", 200},       {"Short", -300},     {"UShort", 40000},
      {"Float", 0.5},  {"UInteger", 3e9},    {"LongLong", -5e15}, {"ULongLong", 9e15},
      {"Integer", -7}, {"HalfFloat", 0.125}, {"Enum", 3}};
  for (const auto& [type, value] : kinds) EXPECT_EQ(Make(type, value).Get<double>(), value) << type;
  // More of them than are searched one by one.
  std::vector<FbxProperty> many;
  for (int i = 0; i < 50; ++i) many.push_back(Make("Integer", i));
  for (int i = 0; i < 50; ++i) EXPECT_EQ(many[static_cast<size_t>(i)].Get<int>(), i);
}

// Time, strings and statuses.

TEST(FbxString, Pieces) {
  FbxString text("ab");
  text += "cab";
  text += text;
  EXPECT_EQ(text.Text(), "abcababcab");
  EXPECT_EQ(text.Find("ab", 1), 3);
  EXPECT_EQ(text.Find("x"), -1);
  EXPECT_EQ(text.ReverseFind('c'), 7);
  EXPECT_EQ(text.ReverseFind('x'), -1);
  EXPECT_EQ(text.Mid(7, 2) + text.Mid(9) + text.Mid(10), "cab");
  EXPECT_TRUE(text.FindAndReplace("ab", "a") && !text.FindAndReplace("x", "y"));
  EXPECT_EQ(text, "acaaca");
}

TEST(FbxTime, CountsFramesFromTicks) {
  const FbxTime second(FbxTime::kTicksPerSecond);
  EXPECT_EQ(second.GetFrameCount(FbxTime::eNTSCFullFrame), 29);
  EXPECT_NEAR(second.GetFrameCountPrecise(FbxTime::eNTSCFullFrame), 30.0 / 1.001, 1e-7);
  for (const int none : {7, 18, -1, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(second.GetFrameCount(static_cast<FbxTime::EMode>(none)), 0) << none;
    EXPECT_EQ(second.GetFrameCountPrecise(static_cast<FbxTime::EMode>(none)), 0.0) << none;
  }
  EXPECT_EQ(FbxTime(-FbxTime::kTicksPerSecond / 3).GetFrameCount(FbxTime::ePAL), -8);
  EXPECT_EQ(FbxTime(-FbxTime::kTicksPerSecond / 4).GetFrameCountPrecise(FbxTime::ePAL), -6.25);
  // Each rate's frame time is the second's, cut to whole ticks.
  const std::vector<std::pair<int, double>> rates = {
      {1, 120}, {2, 100}, {3, 60},    {4, 50},          {5, 48},  {6, 30},  {8, 30 / 1.001},
      {10, 25}, {11, 24}, {12, 1000}, {13, 24 / 1.001}, {15, 96}, {16, 72}, {17, 60 / 1.001}};
  for (const auto& [mode, rate] : rates) {
    FbxTime frame;
    frame.SetFrame(1, static_cast<FbxTime::EMode>(mode));
    EXPECT_NEAR(static_cast<double>(frame.Get()), FbxTime::kTicksPerSecond / rate, 1.0) << mode;
  }
}

TEST(FbxTime, FollowsTheGlobalMode) {
  const FbxTime second(FbxTime::kTicksPerSecond);
  FbxTime::SetGlobalTimeMode(FbxTime::eFrames24);
  EXPECT_EQ(second.GetFrameCount(), 24);
  FbxTime::SetGlobalTimeMode(FbxTime::eDefaultMode);
  EXPECT_EQ(second.GetFrameCount(), 30);
  FbxTime::SetGlobalTimeMode(FbxTime::eCustom, 10.0);
  EXPECT_EQ(second.GetFrameCount(), 10);
  EXPECT_EQ(second.GetFrameCount(FbxTime::eFrames24), 24);
  FbxTime::SetGlobalTimeMode(FbxTime::eCustom, -1.0);
  EXPECT_EQ(second.GetFrameCountPrecise(), 12.5) << "the rate where the file has none";
  FbxTime::SetGlobalTimeMode(FbxTime::eDefaultMode);
}

TEST(FbxTime, TruncatesSecondsAndStopsAtItsRange) {
  const auto ticks = [](double seconds) {
    FbxTime time(7);
    time.SetSecondDouble(seconds);
    return time.Get();
  };
  EXPECT_EQ(ticks(1.5), FbxTime::kTicksPerSecond / 2 * 3);
  EXPECT_EQ(ticks(-0.5 / FbxTime::kTicksPerSecond), 0);
  EXPECT_EQ(ticks(1e300), FbxTime::Infinite().Get());
  EXPECT_EQ(ticks(-1e300), std::numeric_limits<int64_t>::min());
  EXPECT_EQ(ticks(std::nan("")), 0);
}

TEST(FbxStatus, HasATextForEachCode) {
  FbxStatus status;
  status.SetCode(FbxStatus::eIndexOutOfRange);
  EXPECT_STREQ(status.GetErrorString(), "Index out of range");
  status.SetCode(FbxStatus::eInvalidFile, "File %s, %d", std::string(5000, 'x').c_str(), 7);
  EXPECT_EQ(status.GetErrorString(), "File " + std::string(5000, 'x') + ", 7");
}

}  // namespace
