#include "fbx/scene/fbx_scene.h"

#include <array>
#include <unordered_set>

#include "fbx/core/fbx_property_page.h"
#include "fbx/scene/fbx_node.h"

// Up, front, right.
constinit const FbxAxisSystem FbxAxisSystem::MayaZUp{{2, 1}, {1, -1}, {0, 1}};
constinit const FbxAxisSystem FbxAxisSystem::MayaYUp{{1, 1}, {2, 1}, {0, 1}};
constinit const FbxAxisSystem FbxAxisSystem::Max{{2, 1}, {1, -1}, {0, 1}};
constinit const FbxAxisSystem FbxAxisSystem::Motionbuilder{{1, 1}, {2, 1}, {0, 1}};
constinit const FbxAxisSystem FbxAxisSystem::OpenGL{{1, 1}, {2, 1}, {0, 1}};
constinit const FbxAxisSystem FbxAxisSystem::DirectX{{1, 1}, {2, 1}, {0, -1}};
constinit const FbxAxisSystem FbxAxisSystem::Lightwave{{1, 1}, {2, 1}, {0, -1}};

FbxAxisSystem::FbxAxisSystem(EPreDefinedAxisSystem system) {
  static constexpr std::array<const FbxAxisSystem*, 7> kSystems = {
      &MayaZUp, &MayaYUp, &Max, &Motionbuilder, &OpenGL, &DirectX, &Lightwave};
  const size_t index = static_cast<size_t>(system);
  if (index < kSystems.size()) *this = *kSystems[index];
}

bool FbxAxisSystem::IsValid() const {
  std::array<bool, 3> named{};
  for (const Axis& axis : {up_, front_, right_}) {
    if (axis.axis < 0 || axis.axis > 2 || (axis.sign != 1 && axis.sign != -1)) return false;
    named[static_cast<size_t>(axis.axis)] = true;
  }
  return named[0] && named[1] && named[2];
}

FbxAMatrix FbxAxisSystem::GetConversionMatrix(const FbxAxisSystem& from) const {
  if (!IsValid() || !from.IsValid()) return {};
  FbxMatrix matrix;
  const auto take = [&matrix](Axis source, Axis target) {
    for (int column = 0; column < 3; ++column) matrix.At(source.axis, column) = 0.0;
    matrix.At(source.axis, target.axis) = source.sign * target.sign;
  };
  take(from.right_, right_);
  take(from.up_, up_);
  take(from.front_, front_);
  return FbxAMatrix(matrix);
}

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

FBX_OBJECT_DEFINE(FbxCollection, FbxObject, "Collection", nullptr)
FBX_OBJECT_DEFINE(FbxDocument, FbxCollection, "Document", nullptr)
FBX_OBJECT_DEFINE(FbxScene, FbxDocument, "Scene", nullptr)
FBX_OBJECT_DEFINE(FbxDocumentInfo, FbxObject, "SceneInfo", nullptr)

FbxScene* FbxObject::GetScene() const {
  // Nearly everything is connected to the scene itself; only what isn't is worth a search.
  if (auto* scene = GetDstObject<FbxScene>()) return scene;
  std::unordered_set<const FbxObject*> seen{this};
  std::vector<const FbxObject*> next{this};
  for (size_t i = 0; i < next.size(); ++i) {
    if (auto* scene = next[i]->GetDstObject<FbxScene>()) return scene;
    for (const FbxProperty& destination : next[i]->RootProperty().Destinations()) {
      const FbxObject* object = destination.GetFbxObject();
      if (seen.insert(object).second) next.push_back(object);
    }
  }
  return nullptr;
}

void FbxDocument::SetTakeInfo(const FbxTakeInfo& info) { takes_[info.name] = info; }

const FbxTakeInfo* FbxDocument::GetTakeInfo(const char* name) const {
  const auto found = takes_.find(name == nullptr ? "" : name);
  return found == takes_.end() ? nullptr : &found->second;
}

void FbxScene::Construct() {
  rootNode_ = FbxNode::Create(GetFbxManager(), "RootNode");
  globalSettings_ = FbxGlobalSettings::Create(GetFbxManager(), "GlobalSettings");
  ConnectSrcObject(rootNode_);
  ConnectSrcObject(globalSettings_);
}

void FbxScene::ConnectNotify(FbxObject& source, bool connected) {
  if (connected) return;
  // What goes may be the animation that evaluations show.
  if (&source == currentStack_) currentStack_ = nullptr;
  ++animationRevision_;
}

void FbxScene::FixInheritType(FbxNode* node) {
  const auto isSkeleton = [](const FbxNode& n) {
    const FbxNodeAttribute* attribute = n.GetNodeAttribute();
    return attribute != nullptr && attribute->GetAttributeType() == FbxNodeAttribute::eSkeleton;
  };
  std::vector<FbxNode*> nodes;
  if (node != nullptr) nodes.push_back(node);
  for (size_t i = 0; i < nodes.size(); ++i) {
    FbxNode& parent = *nodes[i];
    for (FbxNode* child : parent.Children()) {
      nodes.push_back(child);
      FbxProperty type = child->Property(&FbxNode::PropertyIndex::inheritType);
      if (child->GetCorrectInheritType() && isSkeleton(*child) && !isSkeleton(parent) &&
          type.Get<int>() == eInheritRrs) {
        type.Set(int{eInheritRSrs});
      }
    }
  }
}
