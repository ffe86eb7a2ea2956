// A take and its layers, as objects. A layer is a source of its stack, a curve node of its layer.
#pragma once

#include "fbx/core/fbx_time.h"
#include "fbx/scene/fbx_scene.h"

class FbxAnimLayer : public FbxCollection {
  FBX_OBJECT(FbxAnimLayer)
  enum EBlendMode { eBlendAdditive = 0, eBlendOverride = 1, eBlendOverridePassthrough = 2 };
  // Percent.
  double GetWeight() const;
  int GetBlendMode() const;
  bool IsMuted() const;
};

class FbxAnimStack : public FbxCollection {
  FBX_OBJECT(FbxAnimStack)
  FbxTimeSpan GetLocalTimeSpan() const;
  FbxTimeSpan GetReferenceTimeSpan() const;
  int GetLayerCount() const { return GetSrcObjectCount<FbxAnimLayer>(); }
  // The first one is the base.
  FbxAnimLayer* GetLayer(int index) const { return GetSrcObject<FbxAnimLayer>(index); }
};
