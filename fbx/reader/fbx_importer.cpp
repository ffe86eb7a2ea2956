#include "fbx/reader/fbx_importer.h"

#include <string>
#include <utility>

#include <boost/filesystem.hpp>

#include "fbx/reader/fbx_reader_fbx7.h"
#include "fbx/reader/version6/fbx_reader_fbx6.h"
#include "fbx/scene/fbx_scene.h"

FBX_OBJECT_DEFINE(FbxIOSettings, FbxObject, "", nullptr)

namespace {

template <typename T>
T Find(const std::map<std::string, T>& values, const std::string& path, const T& fallback) {
  const auto found = values.find(path);
  return found == values.end() ? fallback : found->second;
}

}  // namespace

bool FbxIOSettings::GetBoolProp(const std::string& path, bool fallback) const {
  return Find(bools_, path, fallback);
}

std::string FbxIOSettings::GetStringProp(const std::string& path,
                                         const std::string& fallback) const {
  return Find(strings_, path, fallback);
}

FBX_OBJECT_DEFINE(FbxImporter, FbxObject, "", nullptr)

FbxImporter::FbxImporter() = default;
FbxImporter::~FbxImporter() = default;

void FbxImporter::Reset() {
  reader_.reset();
  fileSettings_ = nullptr;
  version_ = 0;
  systemError_ = 0;
  status_.Clear();
}

bool FbxImporter::Initialize(const char* fileName, int /*fileFormat*/, FbxIOSettings* settings) {
  if (fileName == nullptr || *fileName == '\0') {
    Reset();
    status_.SetCode(FbxStatus::eFailure, "Uninitialized filename");
    return false;
  }
  boost::system::error_code error;
  const boost::filesystem::path folder = boost::filesystem::current_path(error);
  const std::string path = boost::filesystem::absolute(fileName, folder).string();
  return Open(path.c_str(), FbxMediaFolder(path), settings);
}

bool FbxImporter::InitializeFromMemory(std::string_view bytes, FbxIOSettings* settings) {
  return Open(bytes, FbxMediaFolder(), settings);
}

template <typename Source>
bool FbxImporter::Open(const Source& source, FbxMediaFolder media, FbxIOSettings* settings) {
  Reset();
  std::unique_ptr<FbxIO> io;
  const auto open = [&](FbxIO::BinaryType type) {
    io = std::make_unique<FbxIO>(type, status_);
    io->Fbx7Support(true);
    headerInfo_ = {};
    const bool isOpen = io->ProjectOpen(source, false, &headerInfo_);
    systemError_ = io->GetSystemError();
    return isOpen;
  };
  // A file that can't be read is no file of the other width.
  if (!open(FbxIO::eBinary64) && (systemError_ != 0 || !open(FbxIO::eBinary32))) {
    // A width that doesn't match leaves no status; any other failure does.
    if (!status_.Error()) status_.SetCode(FbxStatus::eFailure, "File is corrupted (or invalid)");
    return false;
  }
  // What the first attempt found may have been the other width's doing.
  status_.Clear();

  version_ = io->GetFileVersionNumber();
  int major = 0;
  int minor = 0;
  int revision = 0;
  GetFileVersion(major, minor, revision);
  if (major > 7) {
    status_.SetCode(FbxStatus::eInvalidFileVersion,
                    "FBX File version %d is not supported in this product", version_);
    return false;
  }
  if (major < 6) {
    status_.SetCode(FbxStatus::eFailure, "Unexpected file type");
    return false;
  }
  FbxManager& manager = *GetFbxManager();
  if (major == 6) {
    reader_ = std::make_unique<FbxReaderFbx6>(manager, status_, settings, std::move(io),
                                              std::move(media));
  } else {
    reader_ = std::make_unique<FbxReaderFbx7>(manager, status_, settings, std::move(io),
                                              std::move(media));
  }
  fileSettings_ = FbxGlobalSettings::Create(GetFbxManager(), "GlobalSettings");
  return reader_->ReadOutline(*fileSettings_);
}

std::vector<std::string> FbxImporter::GetMessages() const {
  return reader_ == nullptr ? std::vector<std::string>() : reader_->GetMessages();
}

bool FbxImporter::Import(FbxDocument* document, bool /*nonBlocking*/) {
  if (document == nullptr || reader_ == nullptr) {
    status_.SetCode(FbxStatus::eFailure,
                    document == nullptr ? "Invalid document handle" : "File not opened");
    return false;
  }
  status_.Clear();
  return reader_->Read(*document);
}

const FbxIOFileHeaderInfo* FbxImporter::GetFileHeaderInfo() const {
  return fileSettings_ == nullptr ? nullptr : &headerInfo_;
}

void FbxImporter::GetFileVersion(int& major, int& minor, int& revision) const {
  FbxIO::ProjectConvertVersionNumber(version_, major, minor, revision);
}
