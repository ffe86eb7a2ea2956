// What the header block of a scene file says about the file. FbxIO::ProjectOpen fills it in.
#pragma once

#include <cstdint>

#include "fbx/core/fbx_string.h"

class FbxIO;

class FbxIOFileHeaderInfo {
 public:
  struct RenderResolution {
    bool isOK = false;
    FbxString cameraName;
    FbxString resolutionMode;
    double width = 0.0;
    double height = 0.0;
  };
  struct CreationTimeStamp {
    bool isOK = false;
    int32_t year = 0;
    int32_t month = 0;
    int32_t day = 0;
    int32_t hour = 0;
    int32_t minute = 0;
    int32_t second = 0;
    int32_t millisecond = 0;
  };

  virtual ~FbxIOFileHeaderInfo() = default;

  // Called at the end of the header block, while the block's list is the current one. The result
  // isn't looked at by the container.
  virtual bool ReadExtendedHeaderInformation(FbxIO* /*io*/) { return true; }

  RenderResolution defaultRenderResolution;
  int32_t fileVersion = 0;
  CreationTimeStamp creationTimeStamp;
  FbxString creator;
  bool ioPlugin = false;
  bool ple = false;
};
