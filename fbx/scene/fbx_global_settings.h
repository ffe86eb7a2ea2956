// The settings of a whole scene, all of them properties.
#pragma once

#include "fbx/core/fbx_object.h"
#include "fbx/core/fbx_time.h"
#include "fbx/scene/fbx_axis_system.h"

class FbxGlobalSettings : public FbxObject {
  FBX_OBJECT(FbxGlobalSettings)

  // Y up, Z front, X right where the file says nothing.
  FbxAxisSystem GetAxisSystem() const;
  void SetAxisSystem(const FbxAxisSystem& system);
  // Centimetres in one unit.
  double GetSystemUnit() const;
  FbxTime::EMode GetTimeMode() const;
  FbxTime::EProtocol GetTimeProtocol() const;
  // Frames a second for the custom mode; 0 or below when the file has none.
  double GetCustomFrameRate() const;
  FbxColor GetAmbientColor() const;
  void SetAmbientColor(const FbxColor& color);
};
