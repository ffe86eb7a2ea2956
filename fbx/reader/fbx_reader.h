// What the readers of all versions share: the front and the tail of a load, and the rules by which
// a record of `Objects` becomes an object.
//
// A bad part never fails a load: what can't be understood is passed over, and the rest is read.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fbx/core/fbx_object.h"
#include "fbx/core/fbx_string.h"
#include "fbx/io/fbx_io.h"
#include "fbx/reader/media_folder.h"
#include "fbx/reader/read_records.h"

class FbxGlobalSettings;
class FbxIOSettings;

class FbxReader : protected FbxObjectReferences {
 public:
  // Takes over an open file. `manager`, `status` and `settings`, which may be null, are kept alive
  // by the caller. Failures are told to `status`.
  FbxReader(FbxManager& manager, FbxStatus& status, const FbxIOSettings* settings,
            std::unique_ptr<FbxIO> io, FbxMediaFolder media);
  ~FbxReader() override;

  // Reads global settings into `settings` ahead of the document.
  bool ReadOutline(FbxGlobalSettings& settings);
  // Loads the document of the file, which must be empty. For a scene, the global time mode and
  // protocol become the scene's. False with the status set; what the document holds then is no
  // scene to be used.
  bool Read(FbxDocument& document);
  // What went wrong beside the document, each in a sentence.
  const std::vector<std::string>& GetMessages() const { return media_.GetMessages(); }

 protected:
  // The settings in the main section, which is open; what is wrong with it is said by Read.
  virtual void ReadSettings(FbxGlobalSettings& settings) = 0;
  // Reads all that the main section holds; the cursor stands at its top. False with the status set.
  virtual bool ReadSections() = 0;
  // A new object with what the file gives to all objects of its class.
  virtual FbxObject* NewObject(FbxClassId classId, std::string_view name);

  bool GetOption(const char* name, bool fallback) const;
  // Enters the list in the first record of the name; false if there is none.
  bool EnterBlock(std::string_view field);
  void LeaveBlock();
  // Makes an object of the record whose list is the current one, and connects it to the document.
  // Null if there is no rule for records of that type and subclass, or it makes no object.
  FbxObject* ReadRecord(std::string_view type, const std::string& subclass, std::string_view name);
  FbxNode* RootNode() const;

  FbxManager& manager_;
  FbxStatus& status_;
  const FbxIOSettings* settings_;
  std::unique_ptr<FbxIO> io_;
  FbxMediaFolder media_;

  FbxDocument* document_ = nullptr;
  FbxScene* scene_ = nullptr;  // null when the document isn't a scene

 private:
  struct ObjectRule;
  static const ObjectRule* FindRule(std::string_view type, std::string_view subclass);

  FbxAttributeReader curveAttributes_;
};
