// Nodes: the members of the scene tree, their transforms, and what they can carry.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include <boost/container/small_vector.hpp>

#include "fbx/core/fbx_object.h"
#include "fbx/core/fbx_time.h"
#include "fbx/math/fbx_matrix.h"

class FbxGeometry;
class FbxMesh;
class FbxNode;
class FbxSurfaceMaterial;

// How a parent's scaling reaches a child: R and S are the parent's, r and s the child's.
enum EFbxInheritType { eInheritRrSs = 0, eInheritRSrs = 1, eInheritRrs = 2 };

// The inherit type of a number in a file; RrSs for an unknown one.
constexpr EFbxInheritType ToInheritType(int number) {
  return number == eInheritRSrs || number == eInheritRrs ? static_cast<EFbxInheritType>(number)
                                                         : eInheritRrSs;
}

// Limits of a triple of values.
struct FbxLimits {
  bool active = false;
  std::array<bool, 3> minActive{};
  std::array<bool, 3> maxActive{};
  FbxVector4 min{0.0, 0.0, 0.0};
  FbxVector4 max{0.0, 0.0, 0.0};

  // Clamps each component whose axis has a limit; nothing while the limits aren't active.
  FbxVector4 Apply(const FbxVector4& value) const;
  // Whether Apply can change anything.
  bool HasAny() const;
};

// The fixed parts of a node's transform: what its properties say about rotation order, pre and post
// rotation, pivots and limits, in the form in which the evaluator needs them.
struct FbxTransform {
  FbxRotationOrder rotationOrder{eEulerXYZ};
  bool rotationActive = false;
  bool rotationSpaceForLimitOnly = false;

  FbxLimits translationLimits;
  FbxLimits rotationLimits;
  FbxLimits scalingLimits;

  bool hasRotationOffset = false;
  bool hasRotationPivot = false;
  bool hasScalingOffset = false;
  bool hasScalingPivot = false;
  FbxVector4 rotationOffset;
  FbxVector4 rotationPivot;
  FbxVector4 scalingOffset;
  FbxVector4 scalingPivot;

  bool hasPreRotation = false;
  bool hasPostRotation = false;
  FbxAMatrix preRotation;
  FbxAMatrix postRotation;
  FbxAMatrix inversePostRotation;

  // The local rotation matrix of angles in degrees. `forLimits` asks for the form that applies the
  // rotation space even where it is there for the limits only.
  FbxAMatrix DoF2LRM(const FbxVector4& rotation, bool forLimits = false) const;
  // The angles of a local rotation matrix: the inverse of DoF2LRM.
  FbxVector4 LRM2DoF(const FbxAMatrix& matrix, bool forLimits = false) const;
  // The angles after the rotation limits, which apply in the node's rotation space.
  FbxVector4 ApplyRotationLimits(const FbxVector4& rotation) const;
  // The local translation: `translation` plus what the pivots and offsets add.
  FbxVector4 DoF2LT(const FbxVector4& translation, const FbxAMatrix& localRotation,
                    const FbxVector4& scaling) const;
};

// What a node can carry: null, skeleton, camera, light, geometry.
class FbxNodeAttribute : public FbxObject {
  FBX_OBJECT(FbxNodeAttribute)

  enum EType {
    eUnknown = 0,
    eNull,
    eMarker,
    eSkeleton,
    eMesh,
    eNurbs,
    ePatch,
    eCamera,
    eCameraStereo,
    eCameraSwitcher,
    eLight,
    eOpticalReference,
    eOpticalMarker,
    eNurbsCurve,
    eTrimNurbsSurface,
    eBoundary,
    eNurbsSurface,
    eShape,
    eLODGroup,
    eSubDiv,
    eCachedEffect,
    eLine,
  };
  virtual EType GetAttributeType() const { return eUnknown; }

  // The nodes that carry this attribute, in connection order.
  FbxNode* GetNode(int index = 0) const;
};

class FbxNull : public FbxNodeAttribute {
  FBX_OBJECT(FbxNull)
  EType GetAttributeType() const override { return eNull; }
};

class FbxSkeleton : public FbxNodeAttribute {
  FBX_OBJECT(FbxSkeleton)
  enum ESkeletonType { eRoot = 0, eLimb = 1, eLimbNode = 2, eEffector = 3 };

  EType GetAttributeType() const override { return FbxNodeAttribute::eSkeleton; }
  ESkeletonType GetSkeletonType() const { return type_; }
  void SetSkeletonType(ESkeletonType type) { type_ = type; }

 private:
  ESkeletonType type_ = eRoot;
};

class FbxCamera : public FbxNodeAttribute {
  FBX_OBJECT(FbxCamera)
  EType GetAttributeType() const override { return eCamera; }
};

class FbxLight : public FbxNodeAttribute {
  FBX_OBJECT(FbxLight)
  enum ELightType { ePoint = 0, eDirectional = 1, eSpot = 2, eArea = 3, eVolume = 4 };

  EType GetAttributeType() const override { return eLight; }
  // The file's number as it stands; values beyond the list are possible.
  int GetLightType() const;
  // Red, green, blue; 1 is full.
  FbxDouble3 GetColor() const;
};

// A member of the scene tree. Its place, attributes and materials are connections; the lists here
// only keep them at hand. Its transform is a set of properties with pivots, of which a FbxTransform
// is made for the evaluator.
class FbxNode : public FbxObject {
  FBX_OBJECT(FbxNode)

  enum EPivotSet { eSourcePivot = 0, eDestinationPivot = 1 };

  // The node that this one was first connected to; null for the root and for a node that hangs
  // nowhere. A tree is a tree: the reader drops a connection that would close a ring or give a node
  // a second parent.
  FbxNode* GetParent() const { return parent_; }
  // Children in connection order; with `recursive` the count takes all descendants.
  int GetChildCount(bool recursive = false) const;
  FbxNode* GetChild(int index) const;
  const std::vector<FbxNode*>& Children() const { return children_; }

  // The attribute at `DefaultAttributeIndex`; null when there is none at that index.
  FbxNodeAttribute* GetNodeAttribute() const;
  int GetNodeAttributeCount() const { return static_cast<int>(attributes_.size()); }
  FbxNodeAttribute* GetNodeAttributeByIndex(int index) const;
  // The default attribute if it is of that kind, else the first that is, else null.
  FbxMesh* GetMesh() const;
  FbxLight* GetLight() const;
  FbxCamera* GetCamera() const;
  FbxGeometry* GetGeometry() const;

  // Materials in connection order, one that was connected twice twice.
  int GetMaterialCount() const { return static_cast<int>(materials_.size()); }
  FbxSurfaceMaterial* GetMaterial(int index) const;

  // The offset of the node's own attribute, which children don't inherit; degrees for the rotation.
  FbxVector4 GetGeometricTranslation(EPivotSet set = eSourcePivot) const;
  FbxVector4 GetGeometricRotation(EPivotSet set = eSourcePivot) const;
  FbxVector4 GetGeometricScaling(EPivotSet set = eSourcePivot) const;

  // Transforms at a time, the infinite one giving the values without animation. They come from the
  // scene's evaluator, which computes a node once for a time; a caller that has changed a property
  // since passes `forceEval`. Only the source pivot set exists, and no node has a target.
  FbxAMatrix EvaluateGlobalTransform(FbxTime time = FbxTime::Infinite(),
                                     EPivotSet set = eSourcePivot, bool applyTarget = false,
                                     bool forceEval = false) const;
  // The inverse of the parent's global transform times this node's; the node's own transform where
  // a scaling of 0 leaves the parent's without an inverse.
  FbxAMatrix EvaluateLocalTransform(FbxTime time = FbxTime::Infinite(),
                                    EPivotSet set = eSourcePivot, bool applyTarget = false,
                                    bool forceEval = false) const;
  // The animated values after limits, without pivots and pre and post rotations.
  FbxVector4 EvaluateLocalTranslation(FbxTime time = FbxTime::Infinite(),
                                      EPivotSet set = eSourcePivot, bool applyTarget = false,
                                      bool forceEval = false) const;
  FbxVector4 EvaluateLocalRotation(FbxTime time = FbxTime::Infinite(), EPivotSet set = eSourcePivot,
                                   bool applyTarget = false, bool forceEval = false) const;
  FbxVector4 EvaluateLocalScaling(FbxTime time = FbxTime::Infinite(), EPivotSet set = eSourcePivot,
                                  bool applyTarget = false, bool forceEval = false) const;

  // The transform's fixed parts, made when they are first asked for: a listing of 23,000 nodes,
  // which asks for none, takes a tenth less time and a quarter less memory. Whoever changes a
  // property that they are made of calls UpdatePivotsAndLimitsFromProperties.
  const FbxTransform& GetTransform() const;
  void UpdatePivotsAndLimitsFromProperties();
  // Changes with every such call.
  uint64_t GetTransformRevision() const { return transformRevision_; }
  // A node whose stored inherit type follows an old convention, for FbxScene::FixInheritType.
  void SetCorrectInheritType(bool correct) { correctInheritType_ = correct; }
  bool GetCorrectInheritType() const { return correctInheritType_; }

  // Indices of the class's properties, for access without a look-up by name.
  struct PropertyIndex {
    int lclTranslation, lclRotation, lclScaling;
    int visibility, visibilityInheritance;
    int rotationOffset, rotationPivot, scalingOffset, scalingPivot;
    int preRotation, postRotation;
    int rotationOrder, rotationActive, rotationSpaceForLimitOnly, inheritType;
    int geometricTranslation, geometricRotation, geometricScaling;
    int translationActive, scalingActive;
    int translationMin, translationMax, rotationMin, rotationMax, scalingMin, scalingMax;
    // First of six in a row: MinX, MinY, MinZ, MaxX, MaxY, MaxZ.
    int translationLimitFlags, rotationLimitFlags, scalingLimitFlags;
    int defaultAttributeIndex;
  };
  static const PropertyIndex& Properties();
  FbxProperty Property(int PropertyIndex::*which) const;
  FbxProperty LclTranslation() const { return Property(&PropertyIndex::lclTranslation); }
  FbxProperty LclRotation() const { return Property(&PropertyIndex::lclRotation); }
  FbxProperty LclScaling() const { return Property(&PropertyIndex::lclScaling); }

 protected:
  void ConnectNotify(FbxObject& source, bool connected) override;

 private:
  friend class FbxAnimEvaluator;

  // The default attribute if it is a T, else the first T, else null.
  template <typename T>
  T* TypedAttribute() const;
  FbxTransform MakeTransform() const;

  FbxNode* parent_ = nullptr;
  std::vector<FbxNode*> children_;
  boost::container::small_vector<FbxNodeAttribute*, 1> attributes_;
  boost::container::small_vector<FbxSurfaceMaterial*, 1> materials_;
  mutable std::unique_ptr<const FbxTransform> transform_;
  uint64_t transformRevision_ = 0;
  bool correctInheritType_ = false;
  // Where the evaluator last kept this node's state.
  mutable uint32_t evalSlot_ = UINT32_MAX;
};
