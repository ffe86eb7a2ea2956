#include "fbx/reader/fbx_reader_fbx7.h"

#include <algorithm>
#include <unordered_set>

#include "fbx/reader/fbx_io_settings.h"
#include "fbx/reader/read_animation.h"
#include "fbx/reader/read_properties.h"
#include "fbx/reader/read_video.h"
#include "fbx/reader/target_shapes.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

namespace {

constexpr const char* kCorrupted = "File is corrupted (or invalid)";

}  // namespace

FbxReaderFbx7::FbxReaderFbx7(FbxManager& manager, FbxStatus& status, const FbxIOSettings* settings)
    : manager_(manager), status_(status), settings_(settings) {}

FbxReaderFbx7::~FbxReaderFbx7() = default;

bool FbxReaderFbx7::GetOption(const char* name, bool fallback) const {
  return settings_ == nullptr
             ? fallback
             : settings_->GetBoolProp(std::string("Import|AdvOptGrp|FileFormat|Fbx|") + name,
                                      fallback);
}

template <typename Source>
bool FbxReaderFbx7::Open(const Source& source) {
  for (const auto type : {FbxIO::eBinary64, FbxIO::eBinary32}) {
    io_ = std::make_unique<FbxIO>(type, status_);
    io_->Fbx7Support(true);
    headerInfo_ = {};
    if (io_->ProjectOpen(source, false, &headerInfo_)) {
      // What the first attempt found may have been the other width's doing.
      status_.Clear();
      return true;
    }
  }
  // A width that doesn't match leaves no status; any other failure does.
  io_.reset();
  if (!status_.Error()) status_.SetCode(FbxStatus::eFailure, "%s", kCorrupted);
  return false;
}

bool FbxReaderFbx7::FileOpen(const std::string& fileName) {
  media_ = GetOption("ExtractEmbeddedData", true) ? FbxMediaFolder(fileName) : FbxMediaFolder();
  return Open(fileName.c_str());
}

bool FbxReaderFbx7::FileOpenFromMemory(std::string_view bytes) {
  media_ = FbxMediaFolder();
  return Open(bytes);
}

void FbxReaderFbx7::FileClose() { io_.reset(); }

bool FbxReaderFbx7::EnterBlock(std::string_view field) {
  return io_->FieldReadBegin(field) && io_->FieldReadBlockBegin();
}

void FbxReaderFbx7::LeaveBlock() { io_->FieldReadBlockEnd(); }

void FbxReaderFbx7::ReadOutline(FbxGlobalSettings& settings) {
  if (!io_->ProjectOpenMainSection()) {
    // Import says what is wrong with it.
    status_.Clear();
    return;
  }
  int major = 0;
  int minor = 0;
  int revision = 0;
  FbxIO::ProjectConvertVersionNumber(static_cast<int>(io_->ProjectGetSectionVersion(0)), major,
                                     minor, revision);
  // The first files of this version keep the settings among the objects.
  const bool isAmongObjects = minor == 0 && EnterBlock("Objects");
  ReadGlobalSettings(settings);
  if (isAmongObjects) LeaveBlock();
  io_->ProjectCloseSection();
}

bool FbxReaderFbx7::Read(FbxDocument* document) {
  templates_.Clear();
  objects_.clear();
  status_.Clear();
  if (document == nullptr) {
    status_.SetCode(FbxStatus::eFailure, "Invalid document handle");
    return false;
  }
  if (!IsFileOpen()) {
    status_.SetCode(FbxStatus::eFailure, "File not opened");
    return false;
  }
  if (io_->ProjectGetCurrentSection() < 0 && !io_->ProjectOpenMainSection()) {
    status_.SetCode(FbxStatus::eFailure, "%s", kCorrupted);
    return false;
  }
  const std::string password =
      settings_ == nullptr
          ? std::string()
          : settings_->GetStringProp("Import|AdvOptGrp|FileFormat|Fbx|Password", "");
  if (!io_->ProjectGetPassword().empty() && io_->ProjectGetPassword() != password) {
    status_.SetCode(FbxStatus::ePasswordError, "Wrong password");
    return false;
  }

  document_ = document;
  scene_ = document->Is<FbxScene>() ? static_cast<FbxScene*>(document) : nullptr;
  FbxNode* rootNode = scene_ == nullptr ? nullptr : scene_->GetRootNode();
  io_->FieldReadResetPosition();
  if (scene_ != nullptr) ReadGlobalSettings(scene_->GetGlobalSettings());
  if (!ReadDescriptionSection()) return false;
  ReadDefinitionSection();
  io_->FieldReadResetPosition();
  ReadObjectSection();
  ReadConnections(*io_, objects_, *document_, rootNode);
  FindEmbeddedTextures(*document_, media_);
  if (GetOption("Animation", true)) ReadTakes(*io_, *document_);
  if (scene_ != nullptr) {
    scene_->FixInheritType(rootNode);
    if (GetOption("Shape", true)) RebuildTargetShapes(*scene_);
    const FbxGlobalSettings& settings = scene_->GetGlobalSettings();
    FbxTime::SetGlobalTimeMode(settings.GetTimeMode(), settings.GetCustomFrameRate());
    FbxTime::SetGlobalTimeProtocol(settings.GetTimeProtocol());
  }
  io_->ProjectCloseSection();
  // Parts that could not be read have left their mark here; the document has the rest.
  status_.Clear();
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
  if (!hasDocument) status_.SetCode(FbxStatus::eFailure, "%s", kCorrupted);
  return hasDocument;
}

void FbxReaderFbx7::ReadDefinitionSection() {
  types_.clear();
  if (!EnterBlock("Definitions")) return;
  std::unordered_set<std::string> seen;
  const int32_t types = io_->FieldGetInstanceCount("ObjectType");
  for (int32_t i = 0; i < types; ++i) {
    io_->FieldReadBegin("ObjectType", i);
    std::string type(io_->FieldReadC());
    if (seen.insert(type).second) types_.push_back(std::move(type));
    if (!io_->FieldReadBlockBegin()) continue;
    const int32_t templates = io_->FieldGetInstanceCount("PropertyTemplate");
    for (int32_t k = 0; k < templates; ++k) {
      io_->FieldReadBegin("PropertyTemplate", k);
      templates_.ReadTemplate(*io_, manager_);
    }
    LeaveBlock();
  }
  LeaveBlock();
  OrderTypeInfoSection();
}

void FbxReaderFbx7::OrderTypeInfoSection() {
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
