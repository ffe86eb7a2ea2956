// What a node can carry: null, skeleton, camera, light, geometry.
#pragma once

#include "fbx/core/fbx_object.h"

class FbxNode;

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
