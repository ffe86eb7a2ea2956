#include "fbx/reader/fbx_reader_fbx7.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

namespace {

// Whether the record that the cursor stands on has an id, or its name first. Text files don't tell
// a number from a text.
bool BeginsWithId(FbxIO& io) {
  if (io.IsBinary()) return io.FieldReadGetType() != 'S';
  if (io.FieldReadGetCount() > 2) return true;
  std::string_view first = io.FieldReadC();
  if (first.starts_with('-')) first.remove_prefix(1);
  return !first.empty() && first.find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace

void FbxReaderFbx7::ReadSettings(FbxGlobalSettings& settings) {
  int major = 0;
  int minor = 0;
  int revision = 0;
  FbxIO::ProjectConvertVersionNumber(static_cast<int>(io_->ProjectGetSectionVersion(0)), major,
                                     minor, revision);
  // The first files of this version keep the settings among the objects.
  const bool isAmongObjects = minor == 0 && EnterBlock("Objects");
  ReadGlobalSettings(settings);
  if (isAmongObjects) LeaveBlock();
}

bool FbxReaderFbx7::ReadSections() {
  if (scene_ != nullptr) ReadGlobalSettings(scene_->GetGlobalSettings());
  if (!ReadDescriptionSection()) return false;
  ReadDefinitionSection();
  io_->FieldReadResetPosition();
  ReadObjectSection();
  MakeConnections(ReadConnections(*io_, *document_, *this), RootNode());
  FindEmbeddedTextures(*document_, media_);
  if (GetOption("Animation", true)) ReadTakes(*io_, *document_);
  return true;
}

void FbxReaderFbx7::ReadGlobalSettings(FbxGlobalSettings& settings) {
  if (!EnterBlock("GlobalSettings")) return;
  ReadProperties(*io_, settings);
  LeaveBlock();
}

bool FbxReaderFbx7::ReadDescriptionSection() {
  if (!EnterBlock("Documents")) return true;
  const bool hasDocument = io_->FieldReadI("Count") >= 1;
  if (hasDocument && io_->FieldReadBegin("Document", 0)) {
    io_->FieldReadLL();  // the document's id, which nothing refers to
    const std::string name = StripPrefix(io_->FieldReadC());
    document_->SetName(name);
    document_->SetInitialName(name);
    if (io_->FieldReadBlockBegin()) {
      const int64_t rootNode = io_->FieldReadLL("RootNode", -1);
      if (rootNode != -1 && scene_ != nullptr) objects_.emplace(rootNode, scene_->GetRootNode());
      ReadProperties(*io_, *document_);
      LeaveBlock();
    }
  }
  LeaveBlock();
  if (!hasDocument) status_.SetCode(FbxStatus::eFailure, "File is corrupted (or invalid)");
  return hasDocument;
}

void FbxReaderFbx7::ReadDefinitionSection() {
  types_.clear();
  if (!EnterBlock("Definitions")) return;
  const int32_t types = io_->FieldGetInstanceCount("ObjectType");
  for (int32_t i = 0; i < types; ++i) {
    io_->FieldReadBegin("ObjectType", i);
    types_.emplace_back(io_->FieldReadC());
    if (!io_->FieldReadBlockBegin()) continue;
    const int32_t templates = io_->FieldGetInstanceCount("PropertyTemplate");
    for (int32_t k = 0; k < templates; ++k) {
      io_->FieldReadBegin("PropertyTemplate", k);
      ReadTemplate();
    }
    LeaveBlock();
  }
  LeaveBlock();
}

void FbxReaderFbx7::OrderTypeInfoSection() {
  // Types that aren't defined come behind those that are.
  for (const FbxIORecordPlace place : io_->FieldGetFileOrder()) {
    if (place.instance == 0) types_.emplace_back(io_->FieldGetName(place.field));
  }
  std::unordered_set<std::string> seen;
  std::erase_if(types_, [&](const std::string& type) { return !seen.insert(type).second; });
  // Each goes to the front in turn, so the last one here comes first.
  for (const char* name :
       {"Video", "Texture", "ProceduralTexture", "Material", "Model", "NodeAttribute"}) {
    const auto at = std::find(types_.begin(), types_.end(), name);
    if (at != types_.end()) std::rotate(types_.begin(), at, at + 1);
  }
  for (const char* name : {"Constraint", "TimelineX", "TimelineXTrack", "Clip", "Folder"}) {
    const auto at = std::find(types_.begin(), types_.end(), name);
    if (at != types_.end()) std::rotate(at, at + 1, types_.end());
  }
}

void FbxReaderFbx7::ReadTemplate() {
  const FbxClassId classId = manager_.FindClass(io_->FieldReadC());
  if (!classId.IsValid() || templates_.contains(classId.Record())) return;
  const std::string name = std::string(classId.GetName()) + "_TemplateObject";
  FbxObject* object = manager_.CreateNewObjectFromClassId(classId, name.c_str());
  if (object == nullptr) return;
  templates_.emplace(classId.Record(), object);
  if (io_->FieldReadBlockBegin()) {
    ReadProperties(*io_, *object);
    LeaveBlock();
  }
}

FbxObject* FbxReaderFbx7::NewObject(FbxClassId classId, std::string_view name) {
  FbxObject* object = FbxReader::NewObject(classId, name);
  const auto found = templates_.find(object->GetRuntimeClassId().Record());
  if (found != templates_.end()) object->SetPropertyTemplate(*found->second);
  return object;
}

void FbxReaderFbx7::ReadObjectSection() {
  if (!EnterBlock("Objects")) return;
  size_t records = 0;
  for (int32_t i = 0; i < io_->FieldGetCount(); ++i) {
    records += static_cast<size_t>(io_->FieldGetInstanceCount(io_->FieldGetName(i)));
  }
  objects_.reserve(records);
  OrderTypeInfoSection();
  for (const std::string& type : types_) ReadObjectsOfType(type);
  LeaveBlock();
}

void FbxReaderFbx7::ReadObjectsOfType(const std::string& type) {
  const int32_t count = io_->FieldGetInstanceCount(type);
  for (int32_t i = 0; i < count; ++i) {
    io_->FieldReadBegin(type, i);
    const bool hasId = BeginsWithId(*io_);
    io_->FieldReadBegin(type, i);
    const int64_t id = hasId ? io_->FieldReadLL() : 0;
    const std::string name = StripPrefix(io_->FieldReadC());
    const std::string subclass(io_->FieldReadC());
    // Of several objects with one id the first is kept.
    const bool isTaken = id != 0 && objects_.contains(id);
    if (isTaken || !io_->FieldReadBlockBegin()) continue;
    FbxObject* object = ReadRecord(type, subclass, name);
    if (object != nullptr && id != 0) objects_.emplace(id, object);
    LeaveBlock();
  }
}

FbxObject* FbxReaderFbx7::ReadObject() {
  const auto found = objects_.find(io_->FieldReadLL());
  return found == objects_.end() ? nullptr : found->second;
}

FbxObject* FbxReaderFbx7::ReadEnd(bool /*isDestination*/) {
  const int64_t id = io_->FieldReadLL();
  if (id == 0) return RootNode();
  const auto found = objects_.find(id);
  return found == objects_.end() ? nullptr : found->second;
}
