// A member of the scene tree. Its place, attributes and materials are connections; the lists here
// only keep them at hand. Its transform is a set of properties with pivots, copied into a
// FbxTransform after load, from which the evaluator makes matrices.
#pragma once

#include <cstdint>
#include <vector>

#include "fbx/core/fbx_object.h"
#include "fbx/core/fbx_time.h"
#include "fbx/math/fbx_matrix.h"
#include "fbx/scene/fbx_transform.h"

class FbxCamera;
class FbxGeometry;
class FbxLight;
class FbxMesh;
class FbxNodeAttribute;
class FbxSurfaceMaterial;

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

  // The transform's fixed parts. Whoever changes a property that they are made of calls
  // UpdatePivotsAndLimitsFromProperties.
  const FbxTransform& GetTransform() const { return transform_; }
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

  FbxNode* parent_ = nullptr;
  std::vector<FbxNode*> children_;
  std::vector<FbxNodeAttribute*> attributes_;
  std::vector<FbxSurfaceMaterial*> materials_;
  FbxTransform transform_;
  uint64_t transformRevision_ = 0;
  bool correctInheritType_ = false;
  // Where the evaluator last kept this node's state.
  mutable uint32_t evalSlot_ = UINT32_MAX;
};
