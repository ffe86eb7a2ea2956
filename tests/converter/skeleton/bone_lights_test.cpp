#include "converter/skeleton/bone_lights.h"

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fbx/core/fbx_object.h"
#include "fbx/scene/fbx_node.h"

namespace {

class BoneLights : public testing::Test {
 protected:
  ~BoneLights() override { manager_->Destroy(); }

  // The type of the node's light and its new name, and its colour unless that is the default grey.
  std::string Of(const std::string& name, FbxLight* attached = nullptr) {
    FbxNode* node = FbxNode::Create(manager_, name.c_str());
    if (attached != nullptr) node->ConnectSrcObject(attached);
    CalLightType type = CalLightType::kNone;
    std::string newName;
    CalVector color;
    getLightFromBone(node, name, type, newName, color);
    constexpr std::array<const char*, 5> kTypes = {"none ", "point ", "directional ", "spot ",
                                                   "ambient "};
    std::string text = kTypes.at(static_cast<size_t>(type)) + newName;
    if (color == CalVector{0.5F, 0.5F, 0.5F}) return text;
    for (const float component : {color.x, color.y, color.z}) {
      text.append(" ").append(std::to_string(std::lround(component * 255.0F)));
    }
    return text;
  }
  FbxLight* Attached(int type) {
    FbxLight* light = FbxLight::Create(manager_, "");
    light->FindProperty("LightType").Set(type);
    light->FindProperty("Color").Set(FbxDouble3{1.0, 0.2, 0.0});
    return light;
  }

  FbxManager* manager_ = FbxManager::Create();
};

TEST_F(BoneLights, FromTheirNames) {
  const std::string digits(200000, '1');
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"Hips", "none Hips"},
      {"lightbulb", "none lightbulb"},
      {"light_cone4", "none light_cone4"},  // no type, so no light
      {"Omni01", "point Omni01"},
      {"myLIGHTPOINT", "point myLIGHTPOINT"},
      {"lightDirection", "directional lightDirection"},
      {"lightTarget", "spot lightTarget"},
      {"lightTargetOmni", "point lightTargetOmni"},  // the first word of the list wins
      {"lightAmbient_rgb101010", "ambient lightAmbient 16 16 16"},
      {"lightPoint_rgbff0000_bright0.5", "point lightPoint:bright=0.5 255 0 0"},
      {"lightPoint_rgb:00FF00", "point lightPoint 0 255 0"},
      {"lightPoint_rgbff", "point lightPoint 0 0 255"},  // right-aligned
      {"lightPoint_rgb", "point lightPoint"},
      {"lightPoint_rgbff000080", "point lightPoint 255 0 0"},
      {"lightTarget.spot.cone45", "spot lightTarget:type=spot:cone=45"},
      {"Omni_spot", "point Omni"},
      {"lightTarget_type.spot", "spot lightTarget:type=spot"},
      {"lightTarget.cone.45", "spot lightTarget:cone=45"},
      {"lightPoint_res100", "point lightPoint"},
      {"lightPoint_res1024_res32", "point lightPoint:res=32"},  // the last one wins
      {"lightPoint_nearOffset3_farOffset4", "point lightPoint"},
      {"lightPoint_soft2_radius.5_shadow=off_bright12",
       "point lightPoint:shadow=off:bright=12:radius=5:soft=2"},
      {"lightPoint_bright2.5", "point lightPoint:bright=2"},  // only 0 and 1 stand before a point
      {"lightPoint_shadowon", "point lightPoint:shadow=on"},
      {"lightPoint_radius1234567", "point lightPoint:radius=1.23457e+06"},
      {"LightPoint-01 cone=.25", "point LightPoint:cone=0.25"},
      {"lightPoint_cone", "point lightPoint"},
      // Two line ends leave no place to split at.
      {"lightPoint\n_cone4\n", "point lightPoint\n_cone4\n"},
      {"lightPoint\ncone4", "point lightPoint:cone=4"},
      // Any length and any bytes; no float is that large.
      {"lightPoint_cone" + digits, "point lightPoint"},
      {"lightPoint_" + digits, "point lightPoint"},
      {"lightPoint\xff\x80_cone2", "point lightPoint:cone=2"},
  };
  for (const auto& [name, expected] : cases) EXPECT_EQ(Of(name), expected) << name.substr(0, 80);
}

TEST_F(BoneLights, FromAttachedLights) {
  EXPECT_EQ(Of("Lamp", Attached(FbxLight::eSpot)), "spot Lamp 255 51 0");
  EXPECT_EQ(Of("Lamp", Attached(FbxLight::eArea)), "none Lamp 255 51 0");
  // A name's type replaces the attached one, and any separator cuts the name.
  EXPECT_EQ(Of("Omni", Attached(FbxLight::eSpot)), "point Omni 255 51 0");
  EXPECT_EQ(Of("Lamp_left", Attached(FbxLight::eSpot)), "spot Lamp 255 51 0");
}

}  // namespace
