#include "fbx/scene/fbx_node.h"

#include <algorithm>
#include <array>
#include <string>

#include "fbx/core/fbx_property_page.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_mesh.h"

FbxVector4 FbxLimits::Apply(const FbxVector4& value) const {
  FbxVector4 limited = value;
  if (!active) return limited;
  for (size_t i = 0; i < 3; ++i) {
    if (minActive[i] && limited[i] < min[i]) limited[i] = min[i];
    if (maxActive[i] && limited[i] > max[i]) limited[i] = max[i];
  }
  return limited;
}

bool FbxLimits::HasAny() const {
  for (size_t i = 0; i < 3; ++i) {
    if (minActive[i] || maxActive[i]) return active;
  }
  return false;
}

FbxAMatrix FbxTransform::DoF2LRM(const FbxVector4& rotation, bool forLimits) const {
  FbxAMatrix matrix;
  if (!rotationActive || (rotationSpaceForLimitOnly && !forLimits)) {
    matrix.SetROnly(rotation);
    return matrix;
  }
  rotationOrder.V2M(matrix, rotation);
  if (hasPreRotation) matrix = preRotation * matrix;
  if (hasPostRotation) matrix *= inversePostRotation;
  return matrix;
}

FbxVector4 FbxTransform::LRM2DoF(const FbxAMatrix& matrix, bool forLimits) const {
  if (!rotationActive || (rotationSpaceForLimitOnly && !forLimits)) return matrix.GetR();
  FbxAMatrix rotation = matrix;
  if (hasPreRotation) rotation = preRotation.Inverse() * rotation;
  if (hasPostRotation) rotation *= postRotation;
  return rotationOrder.M2V(rotation);
}

FbxVector4 FbxTransform::ApplyRotationLimits(const FbxVector4& rotation) const {
  if (!rotationLimits.HasAny()) return rotation;
  if (!rotationSpaceForLimitOnly) return rotationLimits.Apply(rotation);
  // The limits' space has an order and pre and post rotations that the rotation itself lacks.
  const FbxVector4 limited = rotationLimits.Apply(LRM2DoF(DoF2LRM(rotation), true));
  return LRM2DoF(DoF2LRM(limited, true));
}

FbxVector4 FbxTransform::DoF2LT(const FbxVector4& translation, const FbxAMatrix& localRotation,
                                const FbxVector4& scaling) const {
  FbxVector4 v(0.0, 0.0, 0.0);
  if (hasScalingPivot) {
    for (size_t i = 0; i < 3; ++i) v[i] = (1.0 - scaling[i]) * scalingPivot[i];
  }
  if (hasScalingOffset) v += scalingOffset;
  if (hasRotationPivot) {
    v = localRotation.MultT(v - rotationPivot) + rotationPivot;
  } else if (hasScalingPivot || hasScalingOffset) {
    v = localRotation.MultT(v);
  }
  if (hasRotationOffset) v += rotationOffset;
  return {translation[0] + v[0], translation[1] + v[1], translation[2] + v[2]};
}

namespace {

void DeclareSkeleton(FbxPropertyPage& page) {
  page.Declare("Size", FbxDoubleDT, 100.0);
  page.Declare("LimbLength", FbxDoubleDT, 1.0);
  page.Declare("Color", FbxColor3DT, FbxDouble3{0.8, 0.8, 0.8});
}

void DeclareNull(FbxPropertyPage& page) { page.Declare("Size", FbxDoubleDT, 100.0); }

void DeclareLight(FbxPropertyPage& page) {
  page.Declare("LightType", FbxEnumDT, int64_t{FbxLight::ePoint}, 0, -1,
               {"Point Light", "Infinite Light", "Spot Light", "Area Light", "Volume Light"});
  page.Declare("CastLight", FbxBoolDT, int64_t{1});
  page.Declare("CastShadows", FbxBoolDT, int64_t{0});
  page.Declare("Color", FbxColor3DT, FbxDouble3{1.0, 1.0, 1.0}, kAnimatable);
  page.Declare("Intensity", FbxDoubleDT, 100.0, kAnimatable);
  page.Declare("InnerAngle", FbxDoubleDT, 0.0, kAnimatable);
  page.Declare("OuterAngle", FbxDoubleDT, 45.0, kAnimatable);
}

}  // namespace

FBX_OBJECT_DEFINE(FbxNodeAttribute, FbxObject, "NodeAttribute", nullptr)
FBX_OBJECT_DEFINE(FbxNull, FbxNodeAttribute, "NodeAttribute", DeclareNull)
FBX_OBJECT_DEFINE(FbxSkeleton, FbxNodeAttribute, "NodeAttribute", DeclareSkeleton)
FBX_OBJECT_DEFINE(FbxCamera, FbxNodeAttribute, "NodeAttribute", nullptr)
FBX_OBJECT_DEFINE(FbxLight, FbxNodeAttribute, "NodeAttribute", DeclareLight)

FbxNode* FbxNodeAttribute::GetNode(int index) const { return GetDstObject<FbxNode>(index); }

int FbxLight::GetLightType() const { return FindProperty("LightType").Get<int>(); }

FbxDouble3 FbxLight::GetColor() const { return FindProperty("Color").Get<FbxDouble3>(); }

namespace {

// Declares the minimum and maximum of a triple, then a switch for each axis of both; returns the
// index of the first switch.
int DeclareLimits(FbxPropertyPage& page, const std::string& what, double max, int& minIndex,
                  int& maxIndex) {
  minIndex = page.Declare(what + "Min", FbxDouble3DT);
  maxIndex = page.Declare(what + "Max", FbxDouble3DT, FbxDouble3{max, max, max});
  int first = -1;
  for (const char* end : {"Min", "Max"}) {
    for (const char* axis : {"X", "Y", "Z"}) {
      const int index = page.Declare(what + end + axis, FbxBoolDT);
      if (first < 0) first = index;
    }
  }
  return first;
}

FbxNode::PropertyIndex Declare(FbxPropertyPage& page) {
  FbxNode::PropertyIndex i{};
  const auto triple = [&page](const char* name, const char* type, double value, uint32_t flags) {
    return page.Declare(name, GetDataTypeFromName(type), FbxDouble3{value, value, value}, flags);
  };
  i.lclTranslation = triple("Lcl Translation", "Lcl Translation", 0.0, kAnimatable);
  i.lclRotation = triple("Lcl Rotation", "Lcl Rotation", 0.0, kAnimatable);
  i.lclScaling = triple("Lcl Scaling", "Lcl Scaling", 1.0, kAnimatable);
  i.visibility = page.Declare("Visibility", GetDataTypeFromName("Visibility"), 1.0, kAnimatable);
  i.visibilityInheritance = page.Declare("Visibility Inheritance",
                                         GetDataTypeFromName("Visibility Inheritance"), int64_t{1});
  i.rotationOffset = triple("RotationOffset", "Vector", 0.0, 0);
  i.rotationPivot = triple("RotationPivot", "Vector", 0.0, 0);
  i.scalingOffset = triple("ScalingOffset", "Vector", 0.0, 0);
  i.scalingPivot = triple("ScalingPivot", "Vector", 0.0, 0);
  i.preRotation = triple("PreRotation", "Vector", 0.0, 0);
  i.postRotation = triple("PostRotation", "Vector", 0.0, 0);
  i.rotationOrder = page.Declare("RotationOrder", FbxEnumDT, int64_t{0}, 0, -1,
                                 {"Euler XYZ", "Euler XZY", "Euler YZX", "Euler YXZ", "Euler ZXY",
                                  "Euler ZYX", "Spheric XYZ"});
  i.rotationActive = page.Declare("RotationActive", FbxBoolDT);
  i.rotationSpaceForLimitOnly = page.Declare("RotationSpaceForLimitOnly", FbxBoolDT);
  i.inheritType =
      page.Declare("InheritType", FbxEnumDT, int64_t{0}, 0, -1, {"RrSs", "RSrs", "Rrs"});
  i.geometricTranslation = triple("GeometricTranslation", "Vector", 0.0, 0);
  i.geometricRotation = triple("GeometricRotation", "Vector", 0.0, 0);
  i.geometricScaling = triple("GeometricScaling", "Vector", 1.0, 0);
  i.translationActive = page.Declare("TranslationActive", FbxBoolDT);
  i.scalingActive = page.Declare("ScalingActive", FbxBoolDT);
  i.translationLimitFlags =
      DeclareLimits(page, "Translation", 0.0, i.translationMin, i.translationMax);
  i.rotationLimitFlags = DeclareLimits(page, "Rotation", 0.0, i.rotationMin, i.rotationMax);
  i.scalingLimitFlags = DeclareLimits(page, "Scaling", 1.0, i.scalingMin, i.scalingMax);
  i.defaultAttributeIndex = page.Declare("DefaultAttributeIndex", FbxIntDT);
  page.Declare("Show", FbxBoolDT, int64_t{1});
  page.Declare("Freeze", FbxBoolDT);
  page.Declare("LODBox", FbxBoolDT);
  return i;
}

void DeclareNode(FbxPropertyPage& page) { Declare(page); }

}  // namespace

FBX_OBJECT_DEFINE(FbxNode, FbxObject, "Model", DeclareNode)

const FbxNode::PropertyIndex& FbxNode::Properties() {
  // The page of the class is declared by the same function, so the indices are the same.
  static const PropertyIndex kIndex = [] {
    FbxPropertyPage page;
    return Declare(page);
  }();
  return kIndex;
}

FbxProperty FbxNode::Property(int PropertyIndex::*which) const {
  return {const_cast<FbxNode*>(this), Properties().*which};
}

void FbxNode::ConnectNotify(FbxObject& source, bool connected) {
  const auto keep = [connected](auto& list, auto* entry) {
    if (connected) {
      list.push_back(entry);
    } else {
      list.erase(std::remove(list.begin(), list.end(), entry), list.end());
    }
  };
  if (source.Is<FbxNode>()) {
    auto& child = static_cast<FbxNode&>(source);
    keep(children_, &child);
    if (connected) {
      if (child.parent_ == nullptr) child.parent_ = this;
    } else if (child.parent_ == this) {
      child.parent_ = nullptr;
    }
  } else if (source.Is<FbxNodeAttribute>()) {
    keep(attributes_, static_cast<FbxNodeAttribute*>(&source));
  } else if (source.Is<FbxSurfaceMaterial>()) {
    keep(materials_, static_cast<FbxSurfaceMaterial*>(&source));
  }
}

int FbxNode::GetChildCount(bool recursive) const {
  if (!recursive) return static_cast<int>(children_.size());
  std::vector<const FbxNode*> nodes{this};
  for (size_t i = 0; i < nodes.size(); ++i) {
    nodes.insert(nodes.end(), nodes[i]->children_.begin(), nodes[i]->children_.end());
  }
  return static_cast<int>(nodes.size()) - 1;
}

FbxNode* FbxNode::GetChild(int index) const {
  return index < 0 || index >= GetChildCount() ? nullptr : children_[static_cast<size_t>(index)];
}

FbxNodeAttribute* FbxNode::GetNodeAttribute() const {
  if (attributes_.empty()) return nullptr;
  return GetNodeAttributeByIndex(Property(&PropertyIndex::defaultAttributeIndex).Get<int>());
}

FbxNodeAttribute* FbxNode::GetNodeAttributeByIndex(int index) const {
  return index < 0 || index >= GetNodeAttributeCount() ? nullptr
                                                       : attributes_[static_cast<size_t>(index)];
}

template <typename T>
T* FbxNode::TypedAttribute() const {
  // Most nodes have one, which is then meant without asking which is the default.
  FbxNodeAttribute* attribute = attributes_.size() == 1 ? attributes_.front() : GetNodeAttribute();
  if (attribute == nullptr || !attribute->Is<T>()) {
    const auto found = std::find_if(attributes_.begin(), attributes_.end(),
                                    [](const FbxNodeAttribute* a) { return a->Is<T>(); });
    if (found == attributes_.end()) return nullptr;
    attribute = *found;
  }
  return static_cast<T*>(attribute);
}

FbxMesh* FbxNode::GetMesh() const { return TypedAttribute<FbxMesh>(); }
FbxLight* FbxNode::GetLight() const { return TypedAttribute<FbxLight>(); }
FbxCamera* FbxNode::GetCamera() const { return TypedAttribute<FbxCamera>(); }
FbxGeometry* FbxNode::GetGeometry() const { return TypedAttribute<FbxGeometry>(); }

FbxSurfaceMaterial* FbxNode::GetMaterial(int index) const {
  return index < 0 || index >= GetMaterialCount() ? nullptr
                                                  : materials_[static_cast<size_t>(index)];
}

FbxVector4 FbxNode::GetGeometricTranslation(EPivotSet /*set*/) const {
  return FbxVector4(Property(&PropertyIndex::geometricTranslation).Get<FbxDouble3>());
}

FbxVector4 FbxNode::GetGeometricRotation(EPivotSet /*set*/) const {
  return FbxVector4(Property(&PropertyIndex::geometricRotation).Get<FbxDouble3>());
}

FbxVector4 FbxNode::GetGeometricScaling(EPivotSet /*set*/) const {
  return FbxVector4(Property(&PropertyIndex::geometricScaling).Get<FbxDouble3>());
}

const FbxTransform& FbxNode::GetTransform() const {
  if (transform_ == nullptr) transform_ = std::make_unique<const FbxTransform>(MakeTransform());
  return *transform_;
}

void FbxNode::UpdatePivotsAndLimitsFromProperties() {
  transform_.reset();
  ++transformRevision_;
}

FbxTransform FbxNode::MakeTransform() const {
  const auto vector = [this](int PropertyIndex::*which) {
    return FbxVector4(Property(which).Get<FbxDouble3>());
  };
  const auto flag = [this](int PropertyIndex::*which) { return Property(which).Get<bool>(); };
  const auto pivot = [&](int PropertyIndex::*which, FbxVector4& target) {
    target = vector(which);
    return !target.IsZero(3);
  };
  const auto rotation = [&](int PropertyIndex::*which, FbxAMatrix& target) {
    target.SetIdentity();
    const FbxVector4 angles = vector(which);
    if (angles.IsZero(3)) return false;
    target.SetROnly(angles);
    return !target.IsIdentity();
  };
  const auto limits = [&](int PropertyIndex::*active, int PropertyIndex::*min,
                          int PropertyIndex::*max, int PropertyIndex::*flags) {
    FbxLimits result;
    result.active = flag(active);
    result.min = vector(min);
    result.max = vector(max);
    FbxProperty isOn = Property(flags);
    for (std::array<bool, 3>* switches : {&result.minActive, &result.maxActive}) {
      for (bool& isActive : *switches) {
        isActive = isOn.Get<bool>();
        isOn = GetNextProperty(isOn);
      }
    }
    return result;
  };

  FbxTransform t;
  t.rotationOrder = FbxRotationOrder(
      static_cast<EFbxRotationOrder>(Property(&PropertyIndex::rotationOrder).Get<int>()));
  t.rotationActive = flag(&PropertyIndex::rotationActive);
  t.rotationSpaceForLimitOnly = flag(&PropertyIndex::rotationSpaceForLimitOnly);
  t.translationLimits =
      limits(&PropertyIndex::translationActive, &PropertyIndex::translationMin,
             &PropertyIndex::translationMax, &PropertyIndex::translationLimitFlags);
  t.rotationLimits = limits(&PropertyIndex::rotationActive, &PropertyIndex::rotationMin,
                            &PropertyIndex::rotationMax, &PropertyIndex::rotationLimitFlags);
  t.scalingLimits = limits(&PropertyIndex::scalingActive, &PropertyIndex::scalingMin,
                           &PropertyIndex::scalingMax, &PropertyIndex::scalingLimitFlags);
  t.hasRotationOffset = pivot(&PropertyIndex::rotationOffset, t.rotationOffset);
  t.hasRotationPivot = pivot(&PropertyIndex::rotationPivot, t.rotationPivot);
  t.hasScalingOffset = pivot(&PropertyIndex::scalingOffset, t.scalingOffset);
  t.hasScalingPivot = pivot(&PropertyIndex::scalingPivot, t.scalingPivot);
  t.hasPreRotation = rotation(&PropertyIndex::preRotation, t.preRotation);
  t.hasPostRotation = rotation(&PropertyIndex::postRotation, t.postRotation);
  t.inversePostRotation = t.postRotation.Inverse();
  return t;
}
