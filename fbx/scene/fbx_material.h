// Surface materials and the textures that feed their properties. A texture is a source of the
// material's property, a layered texture's textures are sources of that texture, a video is a
// source of its texture.
#pragma once

#include <string>
#include <vector>

#include "fbx/core/fbx_object.h"

class FbxSurfaceMaterial : public FbxObject {
  FBX_OBJECT(FbxSurfaceMaterial)
};

class FbxSurfaceLambert : public FbxSurfaceMaterial {
  FBX_OBJECT(FbxSurfaceLambert)
};

class FbxSurfacePhong : public FbxSurfaceLambert {
  FBX_OBJECT(FbxSurfacePhong)
};

class FbxTexture : public FbxObject {
  FBX_OBJECT(FbxTexture)
};

class FbxFileTexture : public FbxTexture {
  FBX_OBJECT(FbxFileTexture)
  // The absolute name as stored, and the one relative to the scene's file.
  const char* GetFileName() const { return fileName_.c_str(); }
  const char* GetRelativeFileName() const { return relativeFileName_.c_str(); }
  void SetFileName(std::string_view name) { fileName_ = name; }
  void SetRelativeFileName(std::string_view name) { relativeFileName_ = name; }
  const char* GetMediaName() const { return mediaName_.c_str(); }
  void SetMediaName(std::string_view name) { mediaName_ = name; }

 private:
  std::string fileName_;
  std::string relativeFileName_;
  std::string mediaName_;
};

class FbxLayeredTexture : public FbxTexture {
  FBX_OBJECT(FbxLayeredTexture)
  struct Input {
    int blendMode = 0;
    double alpha = 1.0;
  };
  // One for each texture source, in connection order. What a file says about inputs comes before
  // the textures are connected, so there may be more.
  std::vector<Input> inputs;

 protected:
  void ConnectNotify(FbxObject& source, bool connected) override;

 private:
  size_t textureCount_ = 0;
};

class FbxVideo : public FbxObject {
  FBX_OBJECT(FbxVideo)
  const char* GetFileName() const { return fileName_.c_str(); }
  const char* GetRelativeFileName() const { return relativeFileName_.c_str(); }
  void SetFileName(std::string_view name) { fileName_ = name; }
  void SetRelativeFileName(std::string_view name) { relativeFileName_ = name; }
  bool useMipMap = false;

 private:
  std::string fileName_;
  std::string relativeFileName_;
};
