// The front of the reader: picks the reader of a file's major version, and loads the file into a
// scene.
#pragma once

#include <memory>
#include <string_view>

#include "fbx/core/fbx_object.h"
#include "fbx/core/fbx_status.h"

class FbxDocument;
class FbxGlobalSettings;
class FbxIOFileHeaderInfo;
class FbxIOSettings;
class FbxReaderFbx7;

class FbxImporter : public FbxObject {
  FBX_OBJECT(FbxImporter)

  // Opens a file and reads its header and global settings. The format comes from the file itself,
  // whatever `fileFormat` and the name's extension say. False with the status set.
  bool Initialize(const char* fileName, int fileFormat = -1, FbxIOSettings* settings = nullptr);
  // The same for a file in memory, which the caller keeps alive as long as the importer. It finds
  // no textures beside it, and media embedded in it aren't written to the disk.
  bool InitializeFromMemory(std::string_view bytes, FbxIOSettings* settings = nullptr);
  // Loads the file into an empty document, after a successful Initialize. The document owns nothing
  // of the file afterwards. `nonBlocking` is not supported and means the same as false. A load sets
  // the global time mode and protocol.
  bool Import(FbxDocument* document, bool nonBlocking = false);
  const FbxStatus& GetStatus() const { return status_; }
  void GetFileVersion(int& major, int& minor, int& revision) const;
  // What the file says of itself, known from Initialize on; null before.
  const FbxGlobalSettings* GetFileGlobalSettings() const { return fileSettings_; }
  const FbxIOFileHeaderInfo* GetFileHeaderInfo() const;

 protected:
  FbxImporter();
  ~FbxImporter() override;

 private:
  void Reset(FbxIOSettings* settings);
  // Checks the version of the file that the reader has opened, and reads what is known ahead of the
  // document.
  bool FinishInitialize();

  FbxStatus status_;
  std::unique_ptr<FbxReaderFbx7> reader_;
  FbxGlobalSettings* fileSettings_ = nullptr;
  int version_ = 0;
};
