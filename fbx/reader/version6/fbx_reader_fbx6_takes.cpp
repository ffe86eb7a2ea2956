// Animation, which lies in `Takes`: for each take the models that move, and for each of these its
// channels with their keys.
#include <array>
#include <limits>

#include "fbx/anim/fbx_animation.h"
#include "fbx/reader/version6/fbx_reader_fbx6.h"
#include "fbx/reader/version6/key_list.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"

void FbxReaderFbx6::ReadTakeSection() {
  if (!EnterBlock("Takes")) return;
  const int32_t count = io_->FieldGetInstanceCount("Take");
  for (int32_t i = 0; i < count; ++i) {
    io_->FieldReadBegin("Take", i);
    const std::string name(io_->FieldReadC());
    if (!io_->FieldReadBlockBegin()) continue;
    ReadTake(name);
    LeaveBlock();
  }
  LeaveBlock();
}

void FbxReaderFbx6::ReadTake(const std::string& name) {
  const FbxTakeInfo info = ReadTakeInfo(*io_, name);
  document_->SetTakeInfo(info);
  FbxObject& stack = *AddObject(FbxAnimStack::ClassId, name);
  stack.FindProperty("LocalStart").Set(info.localTime.start);
  stack.FindProperty("LocalStop").Set(info.localTime.stop);
  stack.FindProperty("ReferenceStart").Set(info.referenceTime.start);
  stack.FindProperty("ReferenceStop").Set(info.referenceTime.stop);
  FbxObject& layer = *AddObject(FbxAnimLayer::ClassId, "BaseLayer");
  stack.ConnectSrcObject(&layer);

  AnimatedProperties animated;
  const int32_t models = io_->FieldGetInstanceCount("Model");
  for (int32_t i = 0; i < models; ++i) {
    io_->FieldReadBegin("Model", i);
    const FbxObject* node = ReadObject();
    if (node == nullptr || !node->Is<FbxNode>() || !io_->FieldReadBlockBegin()) continue;
    ReadModelChannels(static_cast<const FbxNode&>(*node), layer, animated);
    LeaveBlock();
  }
}

void FbxReaderFbx6::ReadModelChannels(const FbxNode& node, FbxObject& layer,
                                      AnimatedProperties& animated) {
  const auto shapes = shapeChannels_.find(node.GetMesh());
  ForEachChannel([&](const std::string& name) {
    if (name == "Transform") {
      ForEachChannel([&](const std::string& part) {
        if (part == "T") ReadCurveNode(part, node.LclTranslation(), layer, animated);
        if (part == "R") ReadCurveNode(part, node.LclRotation(), layer, animated);
        if (part == "S") ReadCurveNode(part, node.LclScaling(), layer, animated);
      });
    } else if (shapes != shapeChannels_.end()) {
      const auto shape = shapes->second.find(name);
      if (shape == shapes->second.end()) return;
      ReadCurveNode("DeformPercent", shape->second->DeformPercent(), layer, animated);
    }
  });
}

template <typename ReadChannel>
void FbxReaderFbx6::ForEachChannel(const ReadChannel& read) {
  const int32_t count = io_->FieldGetInstanceCount("Channel");
  for (int32_t i = 0; i < count; ++i) {
    io_->FieldReadBegin("Channel", i);
    const std::string name(io_->FieldReadC());
    if (!io_->FieldReadBlockBegin()) continue;
    read(name);
    LeaveBlock();
  }
}

void FbxReaderFbx6::ReadCurveNode(const std::string& name, FbxProperty property, FbxObject& layer,
                                  AnimatedProperties& animated) {
  // The first block for a property counts.
  if (!animated.emplace(property.GetFbxObject(), property.GetIndex()).second) return;
  auto& node = static_cast<FbxAnimCurveNode&>(*AddObject(FbxAnimCurveNode::ClassId, name));
  layer.RootProperty().ConnectSrcObject(&node, true);
  property.ConnectSrcObject(&node, true);
  const auto add = [&node](const char* channel, double value) {
    FbxProperty made = node.CreateChannel(channel, FbxDoubleDT);
    made.Set(value);
    return made;
  };
  if (property.GetPropertyDataType().GetType() == eFbxDouble) {
    ReadCurve(add(name.c_str(), property.Get<double>()));
    return;
  }
  constexpr std::array<const char*, 3> kAxes = {"X", "Y", "Z"};
  const auto values = property.Get<FbxDouble3>();
  std::array<FbxProperty, 3> channels;
  for (size_t axis = 0; axis < kAxes.size(); ++axis) {
    channels[axis] = add(kAxes[axis], values[axis]);
  }
  std::array<bool, 3> isRead = {};
  ForEachChannel([&](const std::string& axisName) {
    for (size_t axis = 0; axis < kAxes.size(); ++axis) {
      if (axisName == kAxes[axis] && !isRead[axis]) {
        isRead[axis] = true;
        ReadCurve(channels[axis]);
      }
    }
  });
}

void FbxReaderFbx6::ReadCurve(FbxProperty channel) {
  double defaultValue = 0.0;
  if (io_->FieldReadBegin("Default")) {
    defaultValue = io_->FieldReadD();
    channel.Set(defaultValue);
  }
  const int32_t most = io_->FieldReadI("KeyCount", std::numeric_limits<int32_t>::max());
  if (!io_->FieldReadBegin("Key")) return;
  FbxKeyList keys = ReadKeyList(*io_, most);
  if (keys.times.empty()) return;
  // Baked curves have the same times, channel by channel.
  if (times_ == nullptr || *times_ != keys.times) times_ = ShareArray(std::move(keys.times));
  auto& curve = static_cast<FbxAnimCurve&>(*AddObject(FbxAnimCurve::ClassId, ""));
  curve.curve.SetDefaultValue(static_cast<float>(defaultValue));
  curve.curve.SetKeys(times_, std::move(keys.values));
  curve.curve.SetAttributes(std::move(keys.attributes), keys.counts);
  ReadExtrapolations(*io_, curve.curve);
  channel.ConnectSrcObject(&curve, true);
}
