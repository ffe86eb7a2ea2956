#include "fbx/reader/fbx_importer.h"

#include <boost/filesystem.hpp>

#include "fbx/reader/fbx_io_settings.h"
#include "fbx/reader/fbx_reader_fbx7.h"
#include "fbx/scene/fbx_global_settings.h"
#include "fbx/scene/fbx_scene.h"

FBX_OBJECT_DEFINE(FbxImporter, FbxObject, "", "", nullptr)

FbxImporter::FbxImporter() = default;
FbxImporter::~FbxImporter() = default;

void FbxImporter::Reset(FbxIOSettings* settings) {
  status_.Clear();
  version_ = 0;
  fileSettings_ = nullptr;
  reader_ = std::make_unique<FbxReaderFbx7>(*GetFbxManager(), status_, settings);
}

bool FbxImporter::Initialize(const char* fileName, int /*fileFormat*/, FbxIOSettings* settings) {
  Reset(settings);
  if (fileName == nullptr || *fileName == '\0') {
    status_.SetCode(FbxStatus::eFailure, "Uninitialized filename");
    return false;
  }
  boost::system::error_code error;
  const boost::filesystem::path folder = boost::filesystem::current_path(error);
  return reader_->FileOpen(boost::filesystem::absolute(fileName, folder).string()) &&
         FinishInitialize();
}

bool FbxImporter::InitializeFromMemory(std::string_view bytes, FbxIOSettings* settings) {
  Reset(settings);
  return reader_->FileOpenFromMemory(bytes) && FinishInitialize();
}

bool FbxImporter::FinishInitialize() {
  version_ = reader_->GetFileVersion();
  int major = 0;
  int minor = 0;
  int revision = 0;
  GetFileVersion(major, minor, revision);
  if (major == 7) {
    fileSettings_ = FbxGlobalSettings::Create(GetFbxManager(), "GlobalSettings");
    reader_->ReadOutline(*fileSettings_);
    return true;
  }
  if (major > 7) {
    status_.SetCode(FbxStatus::eInvalidFileVersion,
                    "FBX File version %d is not supported in this product", version_);
  } else {
    status_.SetCode(FbxStatus::eFailure, "Unexpected file type");
  }
  reader_->FileClose();
  return false;
}

bool FbxImporter::Import(FbxDocument* document, bool /*nonBlocking*/) {
  if (reader_ == nullptr) Reset(nullptr);
  return reader_->Read(document);
}

const FbxIOFileHeaderInfo* FbxImporter::GetFileHeaderInfo() const {
  return fileSettings_ == nullptr ? nullptr : &reader_->GetFileHeaderInfo();
}

void FbxImporter::GetFileVersion(int& major, int& minor, int& revision) const {
  FbxIO::ProjectConvertVersionNumber(version_, major, minor, revision);
}
