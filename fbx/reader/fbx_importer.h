// The front of the reader: picks the reader of a file's major version, and loads the file into a
// scene.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fbx/core/fbx_object.h"
#include "fbx/core/fbx_string.h"
#include "fbx/io/fbx_io.h"

class FbxDocument;
class FbxGlobalSettings;
class FbxMediaFolder;
class FbxReader;

// Named options of an import; "|" separates the levels of a name.
class FbxIOSettings : public FbxObject {
  FBX_OBJECT(FbxIOSettings)
  bool GetBoolProp(const std::string& path, bool fallback) const;
  std::string GetStringProp(const std::string& path, const std::string& fallback) const;
  void SetBoolProp(const std::string& path, bool value) { bools_[path] = value; }
  void SetStringProp(const std::string& path, const std::string& value) { strings_[path] = value; }

 private:
  std::map<std::string, bool> bools_;
  std::map<std::string, std::string> strings_;
};

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
  // The errno that made Initialize fail; 0 if the file itself was the reason.
  int GetSystemError() const { return systemError_; }
  // What went wrong beside the document: embedded pictures that can't be written. Each names the
  // file that it is about. Complete after Import.
  std::vector<std::string> GetMessages() const;
  // Known after Initialize, also of a file that is refused because no reader reads its version.
  void GetFileVersion(int& major, int& minor, int& revision) const;
  // What the file says of itself, known from Initialize on; null before.
  const FbxGlobalSettings* GetFileGlobalSettings() const { return fileSettings_; }
  const FbxIOFileHeaderInfo* GetFileHeaderInfo() const;

 protected:
  FbxImporter();
  ~FbxImporter() override;

 private:
  void Reset();
  // Opens a file, whose offsets may have either width, and picks its reader. `media` is where files
  // that belong to it are.
  template <typename Source>
  bool Open(const Source& source, FbxMediaFolder media, FbxIOSettings* settings);

  FbxStatus status_;
  std::unique_ptr<FbxReader> reader_;
  FbxGlobalSettings* fileSettings_ = nullptr;
  FbxIOFileHeaderInfo headerInfo_;
  int version_ = 0;
  int systemError_ = 0;
};
