#include "fbx/anim/fbx_anim_evaluator.h"

#include <algorithm>
#include <bit>
#include <optional>

#include "fbx/anim/fbx_animation.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

namespace {

const KFCurve* FirstCurve(const FbxProperty& channel) {
  const auto* curve = channel.GetSrcObject<FbxAnimCurve>();
  return curve == nullptr ? nullptr : &curve->curve;
}

// The curve that animates a layer's weight, in whichever layer of the stack it lies; null mostly.
const KFCurve* WeightCurve(const FbxAnimLayer& layer, const FbxAnimStack& stack) {
  for (const FbxProperty& source : layer.FindProperty("Weight").Sources()) {
    if (!source.IsRoot() || !source.GetFbxObject()->Is<FbxAnimCurveNode>()) continue;
    for (const FbxProperty& destination : source.Destinations()) {
      if (!destination.IsRoot() || !stack.IsConnectedSrcObject(destination.GetFbxObject()))
        continue;
      const auto& node = static_cast<const FbxAnimCurveNode&>(*source.GetFbxObject());
      if (const KFCurve* curve = FirstCurve(node.GetChannel(0))) return curve;
    }
  }
  return nullptr;
}

// Which of a node's animated properties it is, if any.
std::optional<FbxNodeEvalDriver::EProperty> AnimatedProperty(const FbxProperty& property) {
  if (property.IsRoot() || !property.GetFbxObject()->Is<FbxNode>()) return {};
  const auto& node = static_cast<const FbxNode&>(*property.GetFbxObject());
  if (property == node.LclTranslation()) return FbxNodeEvalDriver::eTranslation;
  if (property == node.LclRotation()) return FbxNodeEvalDriver::eRotation;
  if (property == node.LclScaling()) return FbxNodeEvalDriver::eScaling;
  return {};
}

std::array<FbxNodeEvalDriver::Channel, 3> ChannelsOf(const FbxAnimCurveNode& node) {
  static constexpr std::array<const char*, 3> kNames = {"X", "Y", "Z"};
  std::array<FbxNodeEvalDriver::Channel, 3> channels;
  for (size_t i = 0; i < 3; ++i) {
    const FbxProperty channel = node.GetChannel(kNames[i]);
    channels[i].curve = FirstCurve(channel);
    channels[i].hasValue = channel.Modified();
    channels[i].value = channel.Get<double>();
  }
  return channels;
}

// The value of one of the three animated properties, as if nothing animated it.
FbxVector4 PropertyValue(const FbxNode& node, size_t property) {
  using Indices = FbxNode::PropertyIndex;
  static constexpr std::array kProperties = {&Indices::lclTranslation, &Indices::lclRotation,
                                             &Indices::lclScaling};
  return FbxVector4(node.Property(kProperties[property]).Get<FbxDouble3>());
}

// One layer's value of a property: components that nothing drives keep the value at rest.
FbxVector4 LayerValue(const FbxVector4& rest, FbxNodeEvalDriver& driver, FbxTime time) {
  FbxVector4 value = rest;
  for (size_t i = 0; i < 3; ++i) {
    FbxNodeEvalDriver::Channel& channel = driver.channels[i];
    if (channel.curve != nullptr) {
      value[i] = static_cast<double>(channel.curve->Evaluate(time, &channel.last));
    } else if (channel.hasValue) {
      value[i] = channel.value;
    }
  }
  return value;
}

// Blends a layer's value into the result of the layers below it, component by component.
void Blend(FbxVector4& result, const FbxVector4& value, const FbxAnimEvalState::Layer& layer,
           FbxNodeEvalDriver::EProperty property) {
  const double w = layer.weight;
  for (size_t i = 0; i < 3; ++i) {
    if (layer.blendMode == FbxAnimLayer::eBlendOverride) {
      result[i] = value[i] * w;
    } else if (layer.blendMode == FbxAnimLayer::eBlendOverridePassthrough) {
      result[i] = value[i] * w + result[i] * (1.0 - w);
    } else if (property == FbxNodeEvalDriver::eScaling) {
      result[i] *= 1.0 + (value[i] - 1.0) * w;
    } else {
      result[i] += value[i] * w;
    }
  }
}

// Whether two vectors are the same to the sign of their zeros.
bool SameBits(const FbxVector4& a, const FbxVector4& b) {
  uint64_t differing = 0;
  for (size_t i = 0; i < 4; ++i) {
    differing |= std::bit_cast<uint64_t>(a[i]) ^ std::bit_cast<uint64_t>(b[i]);
  }
  return differing == 0;
}

void ScaleRows(FbxAMatrix& matrix, const FbxVector4& scaling) {
  FbxDouble4x4 rows = matrix.ToMatrix().data;
  for (size_t i = 0; i < 12; ++i) rows[i] *= scaling[i / 4];
  matrix = FbxAMatrix(rows);
}

// The local transform where the parent's global one, flattened by a scaling of 0, doesn't tell it.
FbxAMatrix OwnTransform(const FbxTransform& transform, const FbxNodeEvalState& state) {
  FbxAMatrix matrix = transform.DoF2LRM(state.rotation);
  matrix.SetTOnly(transform.DoF2LT(state.translation, matrix, state.scaling));
  ScaleRows(matrix, state.scaling);
  return matrix;
}

}  // namespace

FbxAnimEvaluator::FbxAnimEvaluator(const FbxScene* scene) : scene_(scene) { Reset(); }

void FbxAnimEvaluator::Reset() {
  state_.generation = ++lastGeneration_;
  driversGeneration_ = 0;
  ++epoch_;
}

FbxNodeEvalState& FbxAnimEvaluator::Update(const FbxNode& node, FbxTime time, bool forceEval) {
  if (scene_ != nullptr && scene_->GetAnimationRevision() != sceneRevision_) {
    sceneRevision_ = scene_->GetAnimationRevision();
    Reset();
  }
  if (forceEval) Reset();
  if (forceEval || time != state_.time) GoTo(time);
  return Compute(node);
}

const FbxNodeEvalState& FbxAnimEvaluator::GetNodeEvalState(const FbxNode& node, FbxTime time,
                                                           bool forceEval) {
  return Update(node, time, forceEval);
}

const FbxNodeEvalState& FbxAnimEvaluator::GetNodeEvalStateWithLocal(const FbxNode& node,
                                                                    FbxTime time, bool forceEval) {
  FbxNodeEvalState& state = Update(node, time, forceEval);
  if (!state.hasLocal_) {
    if (state.parent_ == nullptr) {
      state.local = state.global;
    } else if (const FbxAMatrix& above = state.parent_->global; !above.IsFlat()) {
      state.local = above.Inverse() * state.global;
    } else {
      state.local = OwnTransform(node.GetTransform(), state);
    }
    state.hasLocal_ = true;
  }
  return state;
}

void FbxAnimEvaluator::ConvertFileAxes(const FbxAMatrix& conversion) {
  fromFileAxes_ = conversion * fromFileAxes_;
  toFileAxes_ = fromFileAxes_.Inverse();
  Reset();
}

void FbxAnimEvaluator::GoTo(FbxTime time) {
  state_.time = time;
  state_.generation = ++lastGeneration_;
}

// The slot may be another evaluator's, of a scene in which the node was before.
FbxNodeEvalState& FbxAnimEvaluator::StateOf(const FbxNode& node) {
  if (node.evalSlot_ >= states_.size() || states_[node.evalSlot_]->node_ != &node) {
    node.evalSlot_ = static_cast<uint32_t>(states_.size());
    states_.push_back(std::make_unique<FbxNodeEvalState>());
    states_.back()->node_ = &node;
  }
  return *states_[node.evalSlot_];
}

// Mostly the one of the last time, which is at hand: looking states up took 4 % of an export.
FbxNodeEvalState* FbxAnimEvaluator::ParentOf(const FbxNodeEvalState& state) {
  const FbxNode* parent = state.node_->GetParent();
  if (parent == nullptr) return nullptr;
  const bool isAtHand =
      state.epoch_ == epoch_ && state.parent_ != nullptr && state.parent_->node_ == parent;
  return isAtHand ? state.parent_ : &StateOf(*parent);
}

// Which curves drive which node. Found from the layers' side, so that the cost is that of the
// connections: a curve node leads to the properties that it is connected to.
void FbxAnimEvaluator::FindDrivers() {
  driversGeneration_ = ++lastGeneration_;
  state_.layers.clear();
  const FbxAnimStack* stack = scene_ == nullptr ? nullptr : scene_->GetCurrentAnimationStack();
  if (stack == nullptr) return;
  const int count = stack->GetLayerCount();
  for (int i = 0; i < count; ++i) {
    FbxAnimEvalState::Layer layer;
    layer.layer = stack->GetLayer(i);
    layer.weightCurve = WeightCurve(*layer.layer, *stack);
    FindDriversOfLayer(*layer.layer, state_.layers.size());
    state_.layers.push_back(layer);
  }
}

void FbxAnimEvaluator::FindDriversOfLayer(const FbxAnimLayer& layer, size_t index) {
  for (const FbxProperty& source : layer.RootProperty().Sources()) {
    if (!source.IsRoot() || !source.GetFbxObject()->Is<FbxAnimCurveNode>()) continue;
    const auto& curves = static_cast<const FbxAnimCurveNode&>(*source.GetFbxObject());
    std::optional<FbxNodeEvalDriver> driver;
    for (const FbxProperty& destination : curves.RootProperty().Destinations()) {
      const auto property = AnimatedProperty(destination);
      if (!property) continue;
      if (!driver) driver = {index, *property, false, ChannelsOf(curves)};
      driver->property = *property;
      AddDriver(layer, destination, *driver);
    }
  }
}

void FbxAnimEvaluator::AddDriver(const FbxAnimLayer& layer, const FbxProperty& property,
                                 const FbxNodeEvalDriver& driver) {
  FbxNodeEvalState& state = StateOf(static_cast<const FbxNode&>(*property.GetFbxObject()));
  if (state.driversGeneration_ != driversGeneration_) state.drivers_.clear();
  state.driversGeneration_ = driversGeneration_;
  // Those of the layer are the last ones, one for each property at most.
  const auto end = state.drivers_.rbegin() +
                   static_cast<std::ptrdiff_t>(std::min<size_t>(3, state.drivers_.size()));
  const auto other =
      std::find_if(state.drivers_.rbegin(), end, [&driver](const FbxNodeEvalDriver& candidate) {
        return candidate.layer == driver.layer && candidate.property == driver.property;
      });
  if (other == end) {
    state.drivers_.push_back(driver);
  } else if (!other->isOneOfSeveral) {
    other->isOneOfSeveral = true;
    other->channels = ChannelsOf(*property.GetCurveNode(&layer));
  }
}

void FbxAnimEvaluator::ReadLayers() {
  for (FbxAnimEvalState::Layer& layer : state_.layers) {
    const double percent = layer.weightCurve == nullptr
                               ? layer.layer->GetWeight()
                               : static_cast<double>(layer.weightCurve->Evaluate(state_.time));
    layer.weight = percent / 100.0;
    layer.blendMode = layer.layer->GetBlendMode();
    layer.muted = layer.layer->IsMuted();
  }
  state_.layersGeneration = state_.generation;
}

FbxNodeEvalState& FbxAnimEvaluator::Compute(const FbxNode& node) {
  FbxNodeEvalState& wanted = StateOf(node);
  if (wanted.generation_ == state_.generation) return wanted;
  if (!state_.time.IsInfinite()) {
    if (driversGeneration_ == 0) FindDrivers();
    if (state_.layersGeneration != state_.generation) ReadLayers();
  }
  chain_.clear();
  FbxNodeEvalState* top = &wanted;
  while (top != nullptr && top->generation_ != state_.generation) {
    chain_.push_back(top);
    top = ParentOf(*top);
  }
  FbxNodeEvalState* parent = top;
  for (size_t i = chain_.size(); i-- > 0;) {
    FbxNodeEvalState& state = *chain_[i];
    const bool moved = ComputeTRSLocal(state);
    const uint64_t transformRevision = state.node_->GetTransformRevision();
    const uint64_t parentVersion = parent == nullptr ? 0 : parent->version_;
    if (moved || state.epoch_ != epoch_ || state.transformRevision_ != transformRevision ||
        state.parent_ != parent || state.parentVersion_ != parentVersion) {
      state.hasLocal_ = false;
      state.hasParts_ = false;
      state.epoch_ = epoch_;
      state.transformRevision_ = transformRevision;
      state.parent_ = parent;
      state.parentVersion_ = parentVersion;
      ++state.version_;
      ComputeGlobalTransform(state);
    }
    state.generation_ = state_.generation;
    parent = &state;
  }
  return wanted;
}

bool FbxAnimEvaluator::ComputeTRSLocal(FbxNodeEvalState& state) {
  const FbxNode& node = *state.node_;
  bool changed = false;
  if (state.restRevision_ != node.GetPropertyRevision()) {
    for (size_t i = 0; i < 3; ++i) state.restValues_[i] = PropertyValue(node, i);
    state.inheritType_ =
        ToInheritType(node.Property(&FbxNode::PropertyIndex::inheritType).Get<int>());
    state.restRevision_ = node.GetPropertyRevision();
    changed = true;
  }
  std::array<FbxVector4, 3> results = state.restValues_;
  if (!state_.time.IsInfinite() && state.driversGeneration_ == driversGeneration_) {
    for (FbxNodeEvalDriver& driver : state.drivers_) {
      const FbxAnimEvalState::Layer& layer = state_.layers[driver.layer];
      if (layer.muted) continue;
      const FbxVector4 value = LayerValue(state.restValues_[driver.property], driver, state_.time);
      if (driver.layer == 0) {
        results[driver.property] = value;
      } else {
        Blend(results[driver.property], value, layer, driver.property);
      }
    }
  }
  const FbxTransform& transform = node.GetTransform();
  const auto update = [&changed](FbxVector4& value, const FbxVector4& result) {
    if (SameBits(value, result)) return;
    value = result;
    changed = true;
  };
  update(state.translation,
         transform.translationLimits.Apply(results[FbxNodeEvalDriver::eTranslation]));
  update(state.rotation, transform.ApplyRotationLimits(results[FbxNodeEvalDriver::eRotation]));
  update(state.scaling, transform.scalingLimits.Apply(results[FbxNodeEvalDriver::eScaling]));
  return changed;
}

// Angles read off a matrix with shear depend on the axes of the world, so they are read in the axes
// of the file: converting the scene to other axes then turns it and changes nothing else. The root
// itself is never converted.
FbxAMatrix FbxAnimEvaluator::PureRotation(const FbxNode& node, const FbxAMatrix& global) const {
  if (scene_ != nullptr && &node == scene_->GetRootNode()) return global.GetPureRotation();
  return fromFileAxes_ * (toFileAxes_ * global).GetPureRotation();
}

// Rotation, scaling with shear, and translation are carried on separately: GRM, GSM, GT. The node's
// own scaling comes last in GSM for all inherit types, so everything before it is kept apart: a
// child that inherits no scaling of its parent's takes that instead of dividing by it, and so
// survives a scaling of 0.
void FbxAnimEvaluator::ComputeGlobalTransform(FbxNodeEvalState& state) {
  const FbxTransform& transform = state.node_->GetTransform();
  FbxNodeEvalState* const parent = state.parent_;
  const FbxAMatrix lrm = transform.DoF2LRM(state.rotation);
  const FbxVector4 lt = transform.DoF2LT(state.translation, lrm, state.scaling);
  FbxAMatrix& unscaled = state.globalWithoutScaling_;
  if (parent == nullptr) {
    unscaled = lrm;
    unscaled.SetTOnly(lt);
  } else {
    // Where the parent's rotation and scaling come as one, the product of the parts is simply the
    // parent's matrix; only type 0 puts the node's rotation between them.
    switch (state.inheritType_) {
      case eInheritRrSs:
        if (!parent->hasParts_) {
          parent->globalRotation_ = PureRotation(*parent->node_, parent->global);
          parent->globalScaling_ = parent->globalRotation_.Inverse() * parent->global;
          parent->globalScaling_.SetTOnly({0.0, 0.0, 0.0});
          parent->hasParts_ = true;
        }
        unscaled = parent->globalRotation_ * lrm * parent->globalScaling_;
        break;
      case eInheritRSrs:
        unscaled = parent->global * lrm;
        break;
      case eInheritRrs:
        unscaled = parent->globalWithoutScaling_ * lrm;
        break;
    }
    unscaled.SetTOnly(parent->global.MultT(lt));
  }
  state.global = unscaled;
  ScaleRows(state.global, state.scaling);
}

FbxAnimEvaluator& FbxScene::GetAnimationEvaluator() const {
  if (evaluator_ == nullptr) evaluator_ = std::make_shared<FbxAnimEvaluator>(this);
  return *evaluator_;
}

namespace {

// What a question to the node's evaluator gives.
template <typename Question>
auto Evaluate(const FbxNode& node, Question&& question) {
  if (const FbxScene* scene = node.GetScene()) return question(scene->GetAnimationEvaluator());
  FbxAnimEvaluator unattached(nullptr);
  return question(unattached);
}

}  // namespace

FbxAMatrix FbxNode::EvaluateGlobalTransform(FbxTime time, EPivotSet /*set*/, bool /*applyTarget*/,
                                            bool forceEval) const {
  return Evaluate(*this, [&](FbxAnimEvaluator& evaluator) {
    return evaluator.GetNodeEvalState(*this, time, forceEval).global;
  });
}

FbxAMatrix FbxNode::EvaluateLocalTransform(FbxTime time, EPivotSet /*set*/, bool /*applyTarget*/,
                                           bool forceEval) const {
  return Evaluate(*this, [&](FbxAnimEvaluator& evaluator) {
    return evaluator.GetNodeEvalStateWithLocal(*this, time, forceEval).local;
  });
}

FbxVector4 FbxNode::EvaluateLocalTranslation(FbxTime time, EPivotSet /*set*/, bool /*applyTarget*/,
                                             bool forceEval) const {
  return Evaluate(*this, [&](FbxAnimEvaluator& evaluator) {
    return evaluator.GetNodeEvalState(*this, time, forceEval).translation;
  });
}

FbxVector4 FbxNode::EvaluateLocalRotation(FbxTime time, EPivotSet /*set*/, bool /*applyTarget*/,
                                          bool forceEval) const {
  return Evaluate(*this, [&](FbxAnimEvaluator& evaluator) {
    return evaluator.GetNodeEvalState(*this, time, forceEval).rotation;
  });
}

FbxVector4 FbxNode::EvaluateLocalScaling(FbxTime time, EPivotSet /*set*/, bool /*applyTarget*/,
                                         bool forceEval) const {
  return Evaluate(*this, [&](FbxAnimEvaluator& evaluator) {
    return evaluator.GetNodeEvalState(*this, time, forceEval).scaling;
  });
}
