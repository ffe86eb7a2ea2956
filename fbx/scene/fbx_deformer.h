// Deformers of a geometry: skins tie its control points to bones, blend shapes to target shapes.
// Clusters are sources of their skin, channels of their blend shape, shapes of their channel, and a
// bone of its cluster. And poses, which say where bones were when a skin was bound.
#pragma once

#include <unordered_map>
#include <vector>

#include "fbx/core/fbx_object.h"
#include "fbx/math/fbx_matrix.h"

class FbxGeometry;
class FbxNode;
class FbxScene;
class FbxShape;

class FbxDeformer : public FbxObject {
  FBX_OBJECT(FbxDeformer)
  enum EDeformerType { eUnknown = 0, eSkin = 1, eBlendShape = 2 };
  virtual EDeformerType GetDeformerType() const { return eUnknown; }
  // The geometry that it deforms, null if it hangs on none.
  FbxGeometry* GetGeometry() const;
};

class FbxSubDeformer : public FbxObject {
  FBX_OBJECT(FbxSubDeformer)
};

class FbxCluster : public FbxSubDeformer {
  FBX_OBJECT(FbxCluster)
  enum ELinkMode { eNormalize = 0, eAdditive = 1, eTotalOne = 2 };

  // The bone; null when the file connects none.
  FbxNode* GetLink() const;
  ELinkMode GetLinkMode() const { return linkMode; }
  int GetControlPointIndicesCount() const { return static_cast<int>(indices.size()); }
  const int* GetControlPointIndices() const { return indices.empty() ? nullptr : indices.data(); }
  const double* GetControlPointWeights() const {
    return weights.empty() ? nullptr : weights.data();
  }
  // The geometry's global matrix at bind.
  void GetTransformMatrix(FbxAMatrix& out) const { out = transform; }

  ELinkMode linkMode = eNormalize;
  std::vector<int> indices;     // of control points, from the file and unchecked
  std::vector<double> weights;  // as many as indices
  FbxAMatrix transform;
  FbxAMatrix transformLink;  // the bone's global matrix at bind
};

class FbxSkin : public FbxDeformer {
  FBX_OBJECT(FbxSkin)
  enum ESkinningType { eLinear = 0, eDualQuaternion, eBlend };
  EDeformerType GetDeformerType() const override { return FbxDeformer::eSkin; }
  int GetClusterCount() const { return GetSrcObjectCount<FbxCluster>(); }
  FbxCluster* GetCluster(int index) const { return GetSrcObject<FbxCluster>(index); }

  double deformAccuracy = 0.0;
  ESkinningType skinningType = eLinear;
  std::vector<int> blendIndices;
  std::vector<double> blendWeights;
};

class FbxBlendShapeChannel : public FbxSubDeformer {
  FBX_OBJECT(FbxBlendShapeChannel)
  int GetTargetShapeCount() const;
  FbxShape* GetTargetShape(int index) const;
  // Percent at which each target is in full force, parallel to the targets; may be shorter.
  const std::vector<double>& GetTargetShapeFullWeights() const { return fullWeights; }
  FbxProperty DeformPercent() const { return FindProperty("DeformPercent"); }

  std::vector<double> fullWeights;
};

class FbxBlendShape : public FbxDeformer {
  FBX_OBJECT(FbxBlendShape)
  EDeformerType GetDeformerType() const override { return FbxDeformer::eBlendShape; }
  int GetBlendShapeChannelCount() const { return GetSrcObjectCount<FbxBlendShapeChannel>(); }
  FbxBlendShapeChannel* GetBlendShapeChannel(int index) const {
    return GetSrcObject<FbxBlendShapeChannel>(index);
  }
};

// A pose: the matrices of some nodes at a moment, usually that of a skin's bind.
class FbxPose : public FbxObject {
  FBX_OBJECT(FbxPose)

  enum EFindBy { eInitialName = 1, eCurrentName = 2 };

  void SetIsBindPose(bool isBindPose) { isBindPose_ = isBindPose; }
  bool IsBindPose() const { return isBindPose_; }
  // 'b' for a bind pose, 'r' for a rest pose.
  char TypeLetter() const { return isBindPose_ ? 'b' : 'r'; }

  void Add(FbxNode* node, const FbxMatrix& matrix, bool local);
  int GetCount() const { return static_cast<int>(entries_.size()); }
  // Out of range: null, the identity, false.
  FbxNode* GetNode(int index) const;
  const FbxMatrix& GetMatrix(int index) const;
  bool IsLocalMatrix(int index) const;
  void SetMatrix(int index, const FbxMatrix& matrix);

  // Index of the node's first entry; -1 if it has none.
  int Find(const FbxNode* node) const;
  // By name without its "::" prefixes; `what` is a sum of EFindBy.
  int Find(const char* name, int what) const;

  // Collects the bind poses of the scene, in order, that hold the node, with the node's index in
  // each. True if there is one; false for a null scene or node.
  static bool GetBindPoseContaining(const FbxScene* scene, const FbxNode* node,
                                    std::vector<FbxPose*>& poses, std::vector<int>& indices);

 private:
  struct Entry {
    FbxNode* node;
    FbxMatrix matrix;
    bool local;
  };
  bool isBindPose_ = false;
  std::vector<Entry> entries_;
  std::unordered_map<const FbxNode*, int> firstByNode_;
};
