// Properties: defaults of the class, values of the object, conversions.
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/core/fbx_manager.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_node.h"

using testing::ElementsAre;

namespace {

class PropertyTest : public testing::Test {
 protected:
  PropertyTest() : manager(FbxManager::Create()), node(FbxNode::Create(manager, "node")) {}
  ~PropertyTest() override { manager->Destroy(); }

  template <typename T>
  FbxProperty Make(const char* name, const char* type, const T& value) {
    FbxProperty property = FbxProperty::Create(node, GetDataTypeFromName(type), name);
    EXPECT_TRUE(property.Set(value)) << name;
    return property;
  }

  FbxManager* manager;
  FbxNode* node;
};

TEST_F(PropertyTest, ReadsThroughToItsClass) {
  FbxProperty scaling = node->FindProperty("Lcl Scaling");
  EXPECT_EQ(scaling.Get<FbxDouble3>(), (FbxDouble3{1, 1, 1}));
  EXPECT_EQ(scaling.GetValueInheritType(), FbxProperty::eInherit);
  EXPECT_TRUE(scaling.GetFlag(FbxPropertyFlags::eAnimatable));
  EXPECT_TRUE(scaling.Set(FbxDouble3{2, 3, 4}));
  scaling.ModifyFlag(FbxPropertyFlags::eAnimatable, false);
  EXPECT_EQ(scaling.GetValueInheritType(), FbxProperty::eOverride);
  const FbxNode* other = FbxNode::Create(manager, "other");
  EXPECT_EQ(other->FindProperty("Lcl Scaling").Get<FbxDouble3>(), (FbxDouble3{1, 1, 1}));
  EXPECT_TRUE(other->FindProperty("Lcl Scaling").GetFlag(FbxPropertyFlags::eAnimatable));
  scaling.SetValueInheritType(FbxProperty::eInherit);
  EXPECT_EQ(scaling.Get<FbxDouble3>(), (FbxDouble3{1, 1, 1}));
  EXPECT_FALSE(scaling.Modified());
}

TEST_F(PropertyTest, ConvertsAmongTypes) {
  const FbxProperty number = Make("number", "Number", 3.75);
  EXPECT_EQ(number.Get<int>(), 3);
  EXPECT_EQ(number.Get<float>(), 3.75F);
  EXPECT_TRUE(number.Get<bool>());
  EXPECT_EQ(number.Get<FbxString>(), "3.75");
  const FbxProperty huge = Make("huge", "Number", 1e300);
  EXPECT_EQ(huge.Get<int>(), std::numeric_limits<int>::max());
  EXPECT_EQ(Make("nan", "Number", std::nan("")).Get<int>(), 0);
  const FbxProperty whole = Make("whole", "Integer", -1);
  EXPECT_EQ(whole.Get<double>(), -1.0);
  EXPECT_EQ(whole.Get<uint64_t>(), std::numeric_limits<uint64_t>::max());
  const FbxProperty time = Make("time", "Time", FbxTime(FbxTime::kTicksPerSecond / 4));
  EXPECT_EQ(time.Get<double>(), 0.25);
  const FbxProperty four = Make("four", "Vector4", FbxDouble4{1, 2, 3, 4});
  EXPECT_EQ(four.Get<FbxDouble3>(), (FbxDouble3{1, 2, 3}));
  EXPECT_EQ(four.Get<double>(), 1.0);
  EXPECT_EQ(four.Get<FbxString>(), "1 2 3 4");
  FbxDouble4 longer{9, 9, 9, 9};
  EXPECT_TRUE(Make("three", "Vector", FbxDouble3{1, 2, 3}).Get(&longer, eFbxDouble4));
  EXPECT_EQ(longer, (FbxDouble4{1, 2, 3, 9}));
}

TEST_F(PropertyTest, LeavesTheTargetAloneWithoutARule) {
  FbxDouble3 triple{7, 7, 7};
  FbxTime time(7);
  FbxDouble4x4 matrix{};
  int whole = 7;
  const FbxProperty text = Make("text", "KString", "12");
  EXPECT_FALSE(text.Get(&whole, eFbxInt));
  EXPECT_FALSE(Make("number", "Number", 1.0).Get(&triple, eFbxDouble3));
  EXPECT_FALSE(Make("four", "Vector4", FbxDouble4{}).Get(&matrix, eFbxDouble4x4));
  EXPECT_FALSE(Make("two", "Vector2", FbxDouble2{}).Get(&triple, eFbxDouble3));
  EXPECT_FALSE(Make("whole", "Integer", 1).Get(&time, eFbxTime));
  EXPECT_TRUE(whole == 7 && triple[0] == 7 && time.Get() == 7);
  EXPECT_FALSE(node->FindProperty("Lcl Scaling").Set("text"));
  EXPECT_FALSE(FbxProperty::Create(node, GetDataTypeFromName("object"), "ref").Set(1));
}

TEST_F(PropertyTest, NarrowsToItsWidth) {
  EXPECT_EQ(Make("byte", "Byte", 300).Get<int>(), 300 - 256);
  EXPECT_EQ(Make("float", "Float", 0.1).Get<double>(), static_cast<double>(0.1F));
  EXPECT_EQ(Make("bool", "Bool", 5).Get<int>(), 1);
}

TEST_F(PropertyTest, FormsTrees) {
  const FbxProperty group = FbxProperty::Create(node, FbxCompoundDT, "group");
  const FbxProperty x = FbxProperty::Create(group, FbxDoubleDT, "x");
  const FbxProperty y = FbxProperty::Create(group, FbxDoubleDT, "y");
  const FbxProperty deep = FbxProperty::Create(x, FbxDoubleDT, "deep");
  EXPECT_EQ(FbxProperty::Create(group, FbxDoubleDT, "x"), x);
  EXPECT_EQ(deep.GetHierarchicalName(), "group|x|deep");
  EXPECT_EQ(node->RootProperty().FindHierarchical("group|x|deep"), deep);
  EXPECT_EQ(node->RootProperty().FindHierarchical("GROUP|X", false), x);
  EXPECT_FALSE(node->RootProperty().FindHierarchical("GROUP|X").IsValid());
  EXPECT_FALSE(node->FindProperty("x").IsValid());
  EXPECT_TRUE(x.IsChildOf(group) && !deep.IsChildOf(group));
  EXPECT_EQ(x.GetSibling(), y);
  EXPECT_THAT(group.GetDescendents(), ElementsAre(x, deep, y));
}

TEST_F(PropertyTest, HasLimitsAndItems) {
  FbxProperty number = Make("number", "Number", 1.0);
  EXPECT_FALSE(number.HasMinLimit() || number.HasMaxLimit());
  number.SetMaxLimit(5);
  EXPECT_TRUE(number.HasMaxLimit() && !number.HasMinLimit());
  EXPECT_EQ(number.AddEnumValue("item"), -1);
  FbxProperty order = node->FindProperty("RotationOrder");
  EXPECT_EQ(order.GetEnumCount(), 7);
  EXPECT_EQ(order.AddEnumValue("extra"), 7);
  EXPECT_EQ(order.GetEnumValue(0), "Euler XYZ");
  EXPECT_EQ(order.GetEnumValue(7), "extra");
  EXPECT_EQ(order.GetEnumValue(8), "");
  EXPECT_EQ(FbxNode::Create(manager, "")->FindProperty("RotationOrder").GetEnumCount(), 7);
}

TEST_F(PropertyTest, InvalidHandlesAnswerWithDefaults) {
  FbxProperty none;
  EXPECT_FALSE(none.Set(1.0) || none.Modified() || none.HasMinLimit());
  EXPECT_EQ(none.Get<double>(), 0.0);
  EXPECT_EQ(none.GetName(), "");
  EXPECT_EQ(none.GetFlags(), 0U);
  EXPECT_FALSE(none.GetParent().IsValid() || none.GetChild().IsValid() ||
               none.FindHierarchical("x").IsValid());
  EXPECT_FALSE(none.ConnectSrcObject(node) || none.ConnectSrcProperty(node->RootProperty()));
  EXPECT_EQ(none.GetSrcObject(), nullptr);
  EXPECT_EQ(none.GetCurve(nullptr), nullptr);
}

TEST_F(PropertyTest, MaterialsHaveTheirClassesDefaults) {
  const auto* phong = FbxSurfacePhong::Create(manager, "");
  const auto text = [&](const char* name) -> std::string {
    return phong->FindProperty(name).Get<FbxString>().Buffer();
  };
  EXPECT_EQ(text("AmbientColor"), "0.2 0.2 0.2");
  EXPECT_EQ(text("DiffuseColor"), "0.8 0.8 0.8");
  EXPECT_EQ(text("TransparencyFactor"), "0");
  EXPECT_EQ(text("DisplacementFactor"), "1");
  EXPECT_EQ(text("SpecularColor"), "0.2 0.2 0.2");
  EXPECT_EQ(text("ShininessExponent"), "20");
  EXPECT_EQ(text("ShadingModel"), "Unknown");
  EXPECT_FALSE(FbxSurfaceLambert::Create(manager, "")->FindProperty("SpecularColor").IsValid());
}

}  // namespace
