#include "converter/skeleton/bone_lights.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fbx/core/fbx_manager.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_node_attribute.h"

namespace {

struct Light {
  CalLightType type = CalLightType::kNone;
  std::string name;
  CalVector color;
};

class BoneLights : public testing::Test {
 protected:
  ~BoneLights() override { manager_->Destroy(); }

  Light Of(const std::string& name, FbxLight* attached = nullptr) {
    FbxNode* node = FbxNode::Create(manager_, name.c_str());
    if (attached != nullptr) node->ConnectSrcObject(attached);
    Light light;
    getLightFromBone(node, name, light.type, light.name, light.color);
    return light;
  }

  FbxManager* manager_ = FbxManager::Create();
};

TEST_F(BoneLights, TypesByName) {
  using enum CalLightType;
  const struct {
    const char* name;
    CalLightType type;
  } cases[] = {
      {"Hips", kNone},          {"Omni01", kPoint},
      {"myLIGHTPOINT", kPoint}, {"lightDirection", kDirectional},
      {"lightTarget", kSpot},   {"lightAmbient", kAmbient},
      {"lightbulb", kNone},     {"lightTargetOmni", kPoint},  // the first word of the list wins
  };
  for (const auto& c : cases) EXPECT_EQ(Of(c.name).type, c.type) << c.name;
  EXPECT_EQ(Of("Omni01").color, (CalVector{0.5F, 0.5F, 0.5F}));
}

TEST_F(BoneLights, NamesWithOptions) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"lightPoint_rgbff0000_bright0.5", "lightPoint:bright=0.5"},
      {"lightTarget.spot.cone45", "lightTarget:type=spot:cone=45"},
      {"lightTarget.cone.45", "lightTarget:cone=45"},
      {"lightPoint_res100", "lightPoint"},
      {"lightPoint_res1024_res32", "lightPoint:res=32"},  // the last one wins
      {"lightPoint_nearOffset3_farOffset4", "lightPoint"},
      {"lightPoint_soft2_radius.5_shadow=off_bright12",
       "lightPoint:shadow=off:bright=12:radius=5:soft=2"},
      {"lightPoint_bright2.5", "lightPoint:bright=2"},  // only 0 and 1 stand before a point
      {"lightPoint_shadowon", "lightPoint:shadow=on"},
      {"lightPoint_radius1234567", "lightPoint:radius=1.23457e+06"},
      {"lightTarget_type.spot", "lightTarget:type=spot"},
      {"LightPoint-01 cone=.25", "LightPoint:cone=0.25"},
      {"lightPoint_cone", "lightPoint"},
      // Two line ends leave no place to split at.
      {"lightPoint\n_cone4\n", "lightPoint\n_cone4\n"},
      {"lightPoint\ncone4", "lightPoint:cone=4"},
      {"light_cone4", "light_cone4"},  // no type, so no light
  };
  for (const auto& [name, expected] : cases) EXPECT_EQ(Of(name).name, expected) << name;
}

TEST_F(BoneLights, Colors) {
  const CalVector grey{0.5F, 0.5F, 0.5F};
  EXPECT_EQ(Of("lightPoint_rgbff0000").color, (CalVector{1.0F, 0.0F, 0.0F}));
  EXPECT_EQ(Of("lightPoint_rgb:00FF00").color, (CalVector{0.0F, 1.0F, 0.0F}));
  EXPECT_EQ(Of("lightPoint_rgbff").color, (CalVector{0.0F, 0.0F, 1.0F}));  // right-aligned
  EXPECT_EQ(Of("lightPoint_rgb").color, grey);
  EXPECT_EQ(Of("lightAmbient_rgb101010").color,
            (CalVector{16.0F / 255.0F, 16.0F / 255.0F, 16.0F / 255.0F}));
}

TEST_F(BoneLights, AttachedLights) {
  FbxLight* spot = FbxLight::Create(manager_, "");
  spot->FindProperty("LightType").Set(2);
  spot->FindProperty("Color").Set(FbxDouble3{1.0, 0.25, 0.0});
  const Light plain = Of("Lamp", spot);
  EXPECT_EQ(plain.type, CalLightType::kSpot);
  EXPECT_EQ(plain.name, "Lamp");
  EXPECT_EQ(plain.color, (CalVector{1.0F, 0.25F, 0.0F}));
  // A name's type replaces the attached one, and any separator cuts the name.
  EXPECT_EQ(Of("Omni", spot).type, CalLightType::kPoint);
  EXPECT_EQ(Of("Lamp_left", spot).name, "Lamp");
  FbxLight* area = FbxLight::Create(manager_, "");
  area->FindProperty("LightType").Set(3);
  EXPECT_EQ(Of("Lamp", area).type, CalLightType::kNone);
}

TEST_F(BoneLights, NamesOfAnyLengthAndBytes) {
  const std::string digits(200000, '1');
  EXPECT_EQ(Of("lightPoint_cone" + digits).name, "lightPoint");  // no float is that large
  EXPECT_EQ(Of("lightPoint_" + std::string(200000, 'r')).name, "lightPoint");
  EXPECT_EQ(Of("lightPoint\xff\x80_cone2").name, "lightPoint:cone=2");
}

}  // namespace
