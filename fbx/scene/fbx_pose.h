// A pose: the matrices of some nodes at a moment, usually the bind of a skin.
#pragma once

#include <unordered_map>
#include <vector>

#include "fbx/core/fbx_object.h"
#include "fbx/math/fbx_matrix.h"

class FbxNode;
class FbxScene;

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
