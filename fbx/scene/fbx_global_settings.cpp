#include "fbx/scene/fbx_global_settings.h"

#include "fbx/core/fbx_property_page.h"

namespace {

void DeclareSettings(FbxPropertyPage& page) {
  const auto axis = [&page](const char* name, int64_t number) {
    page.Declare(name, FbxIntDT, number);
    page.Declare(std::string(name) + "Sign", FbxIntDT, int64_t{1});
  };
  axis("UpAxis", 1);
  axis("FrontAxis", 2);
  axis("CoordAxis", 0);
  axis("OriginalUpAxis", -1);
  page.Declare("UnitScaleFactor", FbxDoubleDT, 1.0);
  page.Declare("OriginalUnitScaleFactor", FbxDoubleDT, 1.0);
  page.Declare("AmbientColor", FbxColor3DT);
  page.Declare("DefaultCamera", FbxStringDT);
  page.Declare("TimeMode", FbxEnumDT, int64_t{FbxTime::eDefaultMode});
  page.Declare("TimeProtocol", FbxEnumDT, int64_t{FbxTime::eDefaultProtocol});
  page.Declare("CustomFrameRate", FbxDoubleDT, -1.0);
}

}  // namespace

FBX_OBJECT_DEFINE(FbxGlobalSettings, FbxObject, "GlobalSettings", DeclareSettings)

FbxAxisSystem FbxGlobalSettings::GetAxisSystem() const {
  const auto axis = [this](const std::string& name) {
    const int sign = FindProperty(name + "Sign").Get<int>();
    return FbxAxisSystem::Axis{FindProperty(name).Get<int>(), sign < 0 ? -1 : 1};
  };
  const FbxAxisSystem system(axis("UpAxis"), axis("FrontAxis"), axis("CoordAxis"));
  return system.IsValid() ? system : FbxAxisSystem();
}

void FbxGlobalSettings::SetAxisSystem(const FbxAxisSystem& system) {
  const auto set = [this](const std::string& name, FbxAxisSystem::Axis axis) {
    FindProperty(name).Set(axis.axis);
    FindProperty(name + "Sign").Set(axis.sign);
  };
  set("UpAxis", system.GetUp());
  set("FrontAxis", system.GetFront());
  set("CoordAxis", system.GetRight());
}

double FbxGlobalSettings::GetSystemUnit() const {
  return FindProperty("UnitScaleFactor").Get<double>();
}

FbxTime::EMode FbxGlobalSettings::GetTimeMode() const {
  return static_cast<FbxTime::EMode>(FindProperty("TimeMode").Get<int>());
}

FbxTime::EProtocol FbxGlobalSettings::GetTimeProtocol() const {
  return static_cast<FbxTime::EProtocol>(FindProperty("TimeProtocol").Get<int>());
}

double FbxGlobalSettings::GetCustomFrameRate() const {
  return FindProperty("CustomFrameRate").Get<double>();
}

FbxColor FbxGlobalSettings::GetAmbientColor() const {
  const auto rgb = FindProperty("AmbientColor").Get<FbxDouble3>();
  return {rgb[0], rgb[1], rgb[2], 1.0};
}

void FbxGlobalSettings::SetAmbientColor(const FbxColor& color) {
  FindProperty("AmbientColor").Set(FbxDouble3{color.mRed, color.mGreen, color.mBlue});
}
