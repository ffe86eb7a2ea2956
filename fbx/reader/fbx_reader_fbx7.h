// Reads a document of major version 7, whose objects are told apart by ids: the sections of a file
// in their order.
#pragma once

#include <cstdint>
#include <memory_resource>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "fbx/reader/fbx_reader.h"

class FbxReaderFbx7 : public FbxReader {
 public:
  using FbxReader::FbxReader;

 protected:
  void ReadSettings(FbxGlobalSettings& settings) override;
  bool ReadSections() override;
  // With its class's defaults of the file. The values aren't copied: the object, which holds no
  // properties yet, looks them up in the template.
  FbxObject* NewObject(FbxClassId classId, std::string_view name) override;
  FbxObject* ReadObject() override;
  FbxObject* ReadEnd(bool isDestination) override;

 private:
  void ReadGlobalSettings(FbxGlobalSettings& settings);
  bool ReadDescriptionSection();
  // Templates, and which types there are.
  void ReadDefinitionSection();
  // A class that isn't known, or that has its template already, is passed over.
  void ReadTemplate();
  // Brings the types into the order in which their objects are read, those that `Objects`, the
  // current list, holds without a definition among them.
  void OrderTypeInfoSection();
  void ReadObjectSection();
  void ReadObjectsOfType(const std::string& type);

  std::vector<std::string> types_;
  // For a class, the object whose property values are the defaults of all objects of exactly that
  // class. The manager owns them, and they live as long as the objects that look there.
  std::unordered_map<const FbxClassRecord*, const FbxObject*> templates_;
  std::pmr::monotonic_buffer_resource objectsPool_;
  std::pmr::unordered_map<int64_t, FbxObject*> objects_{&objectsPool_};
};
