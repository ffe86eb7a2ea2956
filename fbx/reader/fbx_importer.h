// The front of the reader: picks the reader of a file's major version, and loads the file into a
// scene.
#pragma once

#include <memory>

#include "fbx/core/fbx_object.h"
#include "fbx/core/fbx_status.h"

class FbxDocument;
class FbxIOSettings;
class FbxReaderFbx7;

class FbxImporter : public FbxObject {
  FBX_OBJECT(FbxImporter)

  // Opens a file and reads its header and global settings; -1 as the format means by extension.
  // False with the status set.
  bool Initialize(const char* fileName, int fileFormat = -1, FbxIOSettings* settings = nullptr);
  // Loads the file into an empty document, after a successful Initialize. The document owns nothing
  // of the file afterwards. `nonBlocking` is not supported and means the same as false.
  bool Import(FbxDocument* document, bool nonBlocking = false);
  const FbxStatus& GetStatus() const { return status_; }
  void GetFileVersion(int& major, int& minor, int& revision) const;

 protected:
  FbxImporter();
  ~FbxImporter() override;

 private:
  FbxStatus status_;
  std::unique_ptr<FbxReaderFbx7> reader_;
  int version_ = 0;
};
