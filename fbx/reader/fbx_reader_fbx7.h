// Reads a document of major version 7: the sections of a file in their order, and each record of
// `Objects` by the rule of its type. What the records of a family hold is in the file of that
// family (read_mesh.h and so on).
//
// A bad part never fails a load: what can't be understood is passed over, and the rest is read.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fbx/core/fbx_manager.h"
#include "fbx/core/fbx_status.h"
#include "fbx/io/fbx_io.h"
#include "fbx/reader/class_template_map.h"
#include "fbx/reader/media_folder.h"
#include "fbx/reader/read_connections.h"

class FbxDocument;
class FbxGlobalSettings;
class FbxIOSettings;
class FbxNode;
class FbxObject;
class FbxScene;

class FbxReaderFbx7 {
 public:
  // All are kept alive by the caller; `settings` may be null. Failures are told to `status`.
  FbxReaderFbx7(FbxManager& manager, FbxStatus& status, const FbxIOSettings* settings);
  ~FbxReaderFbx7();

  // Opens a file, whose offsets may have either width, and reads its header. `fileName` is an
  // absolute path.
  bool FileOpen(const std::string& fileName);
  // The same for a file in memory, which the caller keeps alive until FileClose. Having no place on
  // the disk, it finds no textures there, and media embedded in it aren't written.
  bool FileOpenFromMemory(std::string_view bytes);
  void FileClose();
  bool IsFileOpen() const { return io_ != nullptr; }
  // What the header block of the open file says about it.
  const FbxIOFileHeaderInfo& GetFileHeaderInfo() const { return headerInfo_; }
  // major * 1000 + minor * 100 + revision.
  int GetFileVersion() const { return io_ == nullptr ? 0 : io_->GetFileVersionNumber(); }

  // Reads global settings into `settings` ahead of the document.
  void ReadOutline(FbxGlobalSettings& settings);
  // Loads the document of the open file, which must be empty. For a scene, the global time mode and
  // protocol become the scene's.
  bool Read(FbxDocument* document);

 private:
  struct ObjectRule;
  static const ObjectRule* FindRule(std::string_view type, std::string_view subclass);

  template <typename Source>
  bool Open(const Source& source);
  bool GetOption(const char* name, bool fallback) const;
  // Enters the list in the first record of the name; false if there is none.
  bool EnterBlock(std::string_view field);
  void LeaveBlock();

  void ReadGlobalSettings(FbxGlobalSettings& settings);
  bool ReadDescriptionSection();
  // Templates, and which types there are, in the order in which their objects are read.
  void ReadDefinitionSection();
  void OrderTypeInfoSection();
  void ReadObjectSection();
  void ReadObjectsOfType(const std::string& type);
  void ReadObject(const std::string& type, const std::string& subclass, std::string_view name,
                  int64_t id);

  // A new object with its class's defaults of the file.
  FbxObject* NewObject(FbxClassId classId, std::string_view name);

  FbxManager& manager_;
  FbxStatus& status_;
  const FbxIOSettings* settings_;
  std::unique_ptr<FbxIO> io_;
  FbxIOFileHeaderInfo headerInfo_;
  FbxMediaFolder media_;

  FbxDocument* document_ = nullptr;
  FbxScene* scene_ = nullptr;  // null when the document isn't a scene
  std::vector<std::string> types_;
  ClassTemplateMap templates_;
  FbxObjectsById objects_;
};
