// Animation as objects: a stack is a take, and has layers as its sources; a layer has curve nodes,
// each of one property, with a channel for each component of it, and a channel has a curve.
#pragma once

#include <string>
#include <vector>

#include "fbx/anim/kf_curve.h"
#include "fbx/core/fbx_object.h"
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

class FbxAnimCurveBase : public FbxObject {
  FBX_OBJECT(FbxAnimCurveBase)
};

class FbxAnimCurve : public FbxAnimCurveBase {
  FBX_OBJECT(FbxAnimCurve)
  int KeyGetCount() const { return curve.KeyGetCount(); }
  FbxTime KeyGetTime(int index) const { return curve.KeyGetTime(index); }
  float KeyGetValue(int index) const { return curve.KeyGetValue(index); }
  // The value at a time. `last`, if not null, carries the search's position from call to call.
  float Evaluate(FbxTime time, int* last = nullptr) const { return curve.Evaluate(time, last); }

  KFCurve curve;
};

class FbxAnimCurveNode : public FbxObject {
  FBX_OBJECT(FbxAnimCurveNode)
  // Channels are the properties below the compound property "d", as X, Y and Z of a translation.
  int GetChannelsCount() const;
  // -1 for an unknown name, which is given without the compound's.
  int GetChannelIndex(const char* name) const;
  // Invalid handles for an index out of range and an unknown name.
  FbxProperty GetChannel(int channel) const;
  FbxProperty GetChannel(const char* name) const;
  // The channel of that name, made if there is none.
  FbxProperty CreateChannel(const char* name, FbxDataType type);
  // The curves of a channel in connection order.
  int GetCurveCount(int channel) const;
  FbxAnimCurve* GetCurve(int channel, int index = 0) const;

 private:
  const std::vector<FbxProperty>& Channels() const;

  // The channels among the properties up to `lastSeen_`. Properties are only ever appended, so each
  // is looked at once, however many ask for a channel.
  mutable std::vector<FbxProperty> channels_;
  mutable FbxProperty lastSeen_;
};
