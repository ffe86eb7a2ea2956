// Properties: defaults of the class, values of the object, conversions.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "fbx/core/fbx_object.h"
#include "fbx/scene/fbx_node.h"

namespace {

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

TEST_F(PropertyTest, ReadsThroughToItsClass) {
  FbxProperty scaling = node->FindProperty("Lcl Scaling");
  EXPECT_EQ(scaling.Get<FbxDouble3>(), (FbxDouble3{1, 1, 1}));
  EXPECT_EQ(scaling.GetValueInheritType(), FbxProperty::eInherit);
  EXPECT_TRUE(scaling.Set(FbxDouble3{2, 3, 4}));
  scaling.ModifyFlag(FbxPropertyFlags::eAnimatable, false);
  const FbxProperty other = FbxNode::Create(manager, "other")->FindProperty("Lcl Scaling");
  EXPECT_EQ(other.Get<FbxDouble3>(), (FbxDouble3{1, 1, 1}));
  EXPECT_TRUE(other.GetFlag(FbxPropertyFlags::eAnimatable));
  scaling.SetValueInheritType(FbxProperty::eInherit);
  EXPECT_EQ(scaling.Get<FbxDouble3>(), (FbxDouble3{1, 1, 1}));
  EXPECT_FALSE(scaling.Modified());
}

TEST_F(PropertyTest, ConvertsAmongTypes) {
  const FbxProperty number = Make("Number", 3.75);
  EXPECT_EQ(number.Get<int>(), 3);
  EXPECT_EQ(number.Get<float>(), 3.75F);
  EXPECT_EQ(Make("Number", 1e300).Get<int>(), std::numeric_limits<int>::max());
  EXPECT_EQ(Make("Number", -1e300).Get<int>(), std::numeric_limits<int>::min());
  EXPECT_EQ(Make("Number", std::nan("")).Get<int>(), 0);
  EXPECT_EQ(Make("Integer", -1).Get<uint64_t>(), std::numeric_limits<uint64_t>::max());
  EXPECT_EQ(Make("Time", FbxTime(FbxTime::kTicksPerSecond / 4)).Get<double>(), 0.25);
  const FbxProperty four = Make("Vector4", FbxDouble4{1, 2, 3, 4});
  EXPECT_EQ(four.Get<FbxDouble3>(), (FbxDouble3{1, 2, 3}));
  EXPECT_EQ(four.Get<double>(), 1.0);
  FbxDouble4 longer{9, 9, 9, 9};
  EXPECT_TRUE(Make("Vector", FbxDouble3{1, 2, 3}).Get(&longer, eFbxDouble4));
  EXPECT_EQ(longer, (FbxDouble4{1, 2, 3, 9}));
  // A value is narrowed to its type's width.
  EXPECT_EQ(Make("Byte", 300).Get<int>(), 300 - 256);
  EXPECT_EQ(Make("Float", 0.1).Get<double>(), static_cast<double>(0.1F));
  EXPECT_EQ(Make("Bool", 5).Get<int>(), 1);
  // Without a rule the target is left alone.
  FbxDouble3 triple{7, 7, 7};
  int whole = 7;
  FbxDouble4x4 matrix{};
  FbxTime time(7);
  EXPECT_FALSE(Make("KString", "12").Get(&whole, eFbxInt));
  EXPECT_FALSE(Make("Number", 1.0).Get(&triple, eFbxDouble3));
  EXPECT_FALSE(Make("Vector4", FbxDouble4{}).Get(&matrix, eFbxDouble4x4));
  EXPECT_FALSE(Make("Vector2", FbxDouble2{}).Get(&triple, eFbxDouble3));
  EXPECT_FALSE(Make("Integer", 1).Get(&time, eFbxTime));
  EXPECT_TRUE(whole == 7 && triple[0] == 7 && time.Get() == 7);
  EXPECT_FALSE(node->FindProperty("Lcl Scaling").Set("text"));
}

TEST_F(PropertyTest, FormsTreesAndHasItems) {
  const FbxProperty group = FbxProperty::Create(node, FbxCompoundDT, "group");
  const FbxProperty x = FbxProperty::Create(group, FbxDoubleDT, "x");
  EXPECT_EQ(FbxProperty::Create(group, FbxDoubleDT, "x"), x);
  EXPECT_EQ(x.GetHierarchicalName(), "group|x");
  EXPECT_EQ(node->RootProperty().FindHierarchical("GROUP|X", false), x);
  EXPECT_FALSE(node->RootProperty().FindHierarchical("GROUP|X").IsValid());
  FbxProperty order = node->FindProperty("RotationOrder");
  EXPECT_EQ(order.AddEnumValue("extra"), 7);
  EXPECT_EQ(order.GetEnumValue(0), "Euler XYZ");
  EXPECT_EQ(order.GetEnumValue(7), "extra");
  EXPECT_EQ(FbxNode::Create(manager, "")->FindProperty("RotationOrder").GetEnumCount(), 7);
}

TEST_F(PropertyTest, InvalidHandlesAnswerWithDefaults) {
  FbxProperty none;
  EXPECT_FALSE(none.Set(1.0) || none.Modified() || none.HasMinLimit());
  EXPECT_EQ(none.Get<double>(), 0.0);
  EXPECT_EQ(none.GetName(), "");
  EXPECT_FALSE(none.GetParent().IsValid() || none.FindHierarchical("x").IsValid());
  EXPECT_FALSE(none.ConnectSrcObject(node) || none.ConnectSrcProperty(node->RootProperty()));
  EXPECT_EQ(none.GetSrcObject(), nullptr);
}

}  // namespace
