// A scene made of objects in memory, for tests of animation: nodes under the root, stacks, layers,
// and curves that drive a node's transform.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "fbx/anim/fbx_anim_curve.h"
#include "fbx/anim/fbx_anim_stack.h"
#include "fbx/core/fbx_manager.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

inline FbxTime Seconds(double seconds) {
  FbxTime time;
  time.SetSecondDouble(seconds);
  return time;
}

// A curve with keys one second apart, from second 0 on, that all share one attribute.
inline KFCurve Curve(std::vector<float> values, const KFCurveKeyAttr& attr) {
  std::vector<int64_t> times;
  for (size_t i = 0; i < values.size(); ++i) {
    times.push_back(static_cast<int64_t>(i) * FbxTime::kTicksPerSecond);
  }
  KFCurve curve;
  const uint32_t count = static_cast<uint32_t>(values.size());
  curve.SetKeys(ShareArray(std::move(times)), std::move(values));
  curve.SetAttributes({attr}, {count});
  return curve;
}

class AnimScene {
 public:
  AnimScene() : manager_(FbxManager::Create()), scene(FbxScene::Create(manager_, "scene")) {}
  ~AnimScene() { manager_->Destroy(); }
  AnimScene(const AnimScene&) = delete;
  AnimScene& operator=(const AnimScene&) = delete;

  template <typename T>
  T* Add(const char* name = "") {
    T* object = T::Create(manager_, name);
    scene->ConnectSrcObject(object);
    return object;
  }

  struct Setting {
    const char* name;
    FbxDouble3 triple{};
    int number = 0;
  };
  // A child of `parent`, or of the root.
  FbxNode* Node(const char* name, FbxNode* parent = nullptr,
                std::initializer_list<Setting> settings = {}) {
    auto* node = Add<FbxNode>(name);
    (parent == nullptr ? scene->GetRootNode() : parent)->ConnectSrcObject(node);
    for (const Setting& setting : settings) {
      FbxProperty property = node->FindProperty(setting.name);
      if (property.GetPropertyDataType().GetType() == eFbxDouble3) {
        property.Set(setting.triple);
      } else {
        property.Set(setting.number);
      }
    }
    node->UpdatePivotsAndLimitsFromProperties();
    return node;
  }

  // A stack with one layer, which becomes the current one.
  FbxAnimLayer* Stack() {
    auto* stack = Add<FbxAnimStack>("stack");
    FbxAnimLayer* layer = Layer(stack);
    scene->SetCurrentAnimationStack(stack);
    return layer;
  }
  FbxAnimLayer* Layer(FbxAnimStack* stack) {
    auto* layer = Add<FbxAnimLayer>("layer");
    stack->ConnectSrcObject(layer);
    return layer;
  }

  FbxAnimCurveNode* CurveNode(FbxAnimLayer* layer, FbxProperty property) {
    auto* node = Add<FbxAnimCurveNode>();
    layer->ConnectSrcObject(node);
    property.ConnectSrcObject(node);
    return node;
  }
  // Linear keys one second apart, from second 0 on.
  FbxAnimCurve* Linear(std::vector<float> values) {
    auto* curve = Add<FbxAnimCurve>();
    curve->curve = Curve(std::move(values), {KFCurveKeyAttr::kLinear, {}});
    return curve;
  }
  void Connect(FbxAnimCurveNode* node, const char* channel, FbxAnimCurve* curve) {
    node->CreateChannel(channel, GetDataTypeFromName("Number")).ConnectSrcObject(curve);
  }

  // Drives a component of a property with linear keys one second apart.
  FbxAnimCurveNode* Drive(FbxAnimLayer* layer, FbxProperty property, const char* channel,
                          std::vector<float> values) {
    FbxAnimCurveNode* node = property.GetCurveNode(layer);
    if (node == nullptr) node = CurveNode(layer, property);
    Connect(node, channel, Linear(std::move(values)));
    return node;
  }

 private:
  FbxManager* manager_;

 public:
  FbxScene* scene;
};
