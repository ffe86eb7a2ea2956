// Opening a scene file: headers, version gates and sections.
#include "fbx/io/fbx_io.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <utility>

#include <strings.h>

#include "fbx/io/ascii_blocks.h"
#include "fbx/io/fbx_byte_source.h"
#include "fbx/io/fbx_inflater.h"
#include "fbx/io/stored_value.h"

namespace {

constexpr std::string_view kHeaderBlock = "FBXHeaderExtension";
// Magic text and its NUL, a byte that nobody checks, the byte order, the version.
constexpr size_t kBinaryHeaderSize = 27;
constexpr uint32_t kLastOf32Bits = 7400;
constexpr uint32_t kFirstOf64Bits = 7500;

// A section's tail: back offset, version, reserved, and this code.
constexpr int64_t kTailSize = 144;
constexpr size_t kTailCodeOffset = 128;
constexpr std::string_view kExtensionCode =
    "\xF8\x5A\x8C\x6A\xDE\xF5\xD9\x7E\xEC\xE9\x0C\xE3\x75\x8F\x29\x0B";
// Version of a section whose tail tells none.
constexpr uint32_t kUnknownSectionVersion = 4000;

uint32_t MakeVersion(unsigned major, unsigned minor, unsigned revision) {
  return major % 4294966 * 1000 + minor % 10 * 100 + revision % 100;
}

// Versions of files older than the numbering by major, minor and revision.
uint32_t FilmboxVersion(unsigned major, unsigned minor) {
  constexpr std::array<std::array<unsigned, 3>, 6> kVersions = {
      {{1, 5, 1000}, {2, 7, 2001}, {3, 0, 3000}, {4, 0, 4000}, {4, 1, 4001}, {4, 5, 4050}}};
  for (const auto& [knownMajor, knownMinor, version] : kVersions) {
    if (major == knownMajor && minor == knownMinor) return version;
  }
  return MakeVersion(major, minor, 0);
}

}  // namespace

FbxIO::FbxIO(BinaryType type, FbxStatus& status) : status_(status), binaryType_(type) {}

FbxIO::~FbxIO() = default;

bool FbxIO::Corrupted() {
  status_.SetCode(FbxStatus::eInvalidFile, "File is corrupted %s", fileName_.c_str());
  return false;
}

bool FbxIO::CheckRead() {
  if (source_ == nullptr || source_->GetError() == 0) return true;
  systemError_ = source_->GetError();
  status_.SetCode(FbxStatus::eFailure, "Unable to read file %s: %s", fileName_.c_str(),
                  std::generic_category().message(systemError_).c_str());
  return false;
}

bool FbxIO::ProjectOpen(const char* fileName, bool openMainSection, FbxIOFileHeaderInfo* info) {
  ProjectClose();
  fileName_ = fileName;
  std::unique_ptr<FbxByteSource> source = FbxCachedFile::Open(fileName);
  systemError_ = source == nullptr ? errno : 0;
  if (source == nullptr) {
    status_.SetCode(FbxStatus::eFailure, "Unable to open file %s", fileName);
    return false;
  }
  return Open(std::move(source), openMainSection, info);
}

bool FbxIO::ProjectOpen(std::string_view bytes, bool openMainSection, FbxIOFileHeaderInfo* info) {
  ProjectClose();
  systemError_ = 0;
  return Open(std::make_unique<FbxMemoryFile>(bytes), openMainSection, info);
}

bool FbxIO::Open(std::unique_ptr<FbxByteSource> source, bool openMainSection,
                 FbxIOFileHeaderInfo* info) {
  source_ = std::move(source);
  blocks_ = std::make_unique<FbxAsciiBlocks>();
  inflater_ = std::make_shared<FbxInflater>(source_->Size());
  if (!ProjectReadHeader(openMainSection, info)) {
    CheckRead();
    ProjectClose();
    return false;
  }
  // An attempt with the other offset width may have failed before.
  status_.Clear();
  return true;
}

void FbxIO::ProjectClose() {
  current_ = nullptr;
  nested_.clear();
  depth_ = 0;
  mainList_.reset();
  extensionList_.reset();
  sharedArray_.reset();
  sharedBytes_.clear();
  currentSection_ = -1;
  sections_.clear();
  password_.clear();
  source_.reset();
  blocks_.reset();
  inflater_.reset();
  format_ = {};
  isEncrypted_ = false;
  fileVersion_ = 0;
  mainPosition_ = 0;
  fileName_.clear();
}

bool FbxIO::ProjectReadHeader(bool openMainSection, FbxIOFileHeaderInfo* info) {
  if (!BinaryReadHeader() && !ASCIIReadHeader()) {
    status_.SetCode(FbxStatus::eFailure, "File is corrupted %s", fileName_.c_str());
    return false;
  }
  const uint32_t headerVersion = static_cast<uint32_t>(fileVersion_);
  if (binaryType_ == eBinary64 ? headerVersion <= kLastOf32Bits : headerVersion >= kFirstOf64Bits) {
    return false;
  }
  if (!ProjectReadExtendedHeader(info) || !CheckFileVersion()) return false;
  format_.hasPlainLists = IsBeforeVersion7();
  if (isEncrypted_) return Corrupted();

  sections_ = {{mainPosition_, static_cast<uint32_t>(fileVersion_)}};
  if (format_.isBinary) BinaryReadSectionPosition();
  return !openMainSection || ProjectOpenMainSection();
}

bool FbxIO::BinaryReadHeader() {
  const std::string_view bytes = source_->View(0, kBinaryHeaderSize);
  if (bytes.size() < kBinaryHeaderSize) return false;
  const std::string_view magic = bytes.substr(0, 21);
  if (magic != std::string_view("Kaydara FBX Binary  \0", 21) &&
      magic != std::string_view("Autodesk FBX Binary \0", 21)) {
    return false;
  }
  const bool isBigEndian = bytes[22] != 0;
  format_.isBinary = true;
  format_.swap = isBigEndian != (std::endian::native == std::endian::big);
  format_.offsetWidth = binaryType_ == eBinary64 ? 8 : 4;
  fileVersion_ = LoadNumber<int32_t>(bytes.data() + 23, format_.swap);
  mainPosition_ = kBinaryHeaderSize;
  return true;
}

// "; FBX 7.4.0 project file", or the same with two numbers. A byte order mark and blank lines may
// stand before it.
bool FbxIO::ASCIIReadHeader() {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  constexpr size_t kLongestLine = 64;
  format_.isBinary = false;
  // The line is a comment, so the records may begin with it: it may go on behind what is looked at.
  mainPosition_ = source_->View(0, kByteOrderMark.size()).starts_with(kByteOrderMark)
                      ? static_cast<int64_t>(kByteOrderMark.size())
                      : 0;
  while (true) {
    const std::string_view view = source_->View(mainPosition_);
    const auto text = std::find_if_not(view.begin(), view.end(), IsSpace);
    mainPosition_ += text - view.begin();
    if (text != view.end() || view.empty()) break;
  }
  std::string line(source_->View(mainPosition_, kLongestLine).substr(0, kLongestLine));
  line.resize(std::min(line.find('\n'), line.size() - 1) + 1);

  char mark = 0;
  char dot = 0;
  char secondDot = 0;
  int major = 0;
  int minor = 0;
  int revision = 0;
  std::array<char, kLongestLine + 1> product = {};
  std::array<char, kLongestLine + 1> project = {};
  std::array<char, kLongestLine + 1> file = {};
  const bool hasRevision =
      std::sscanf(line.c_str(), "%c %64s %d%c%d%c%d %64s %64s", &mark, product.data(), &major, &dot,
                  &minor, &secondDot, &revision, project.data(), file.data()) == 9;
  if (!hasRevision) {
    secondDot = '.';
    revision = 0;
    if (std::sscanf(line.c_str(), "%c %64s %d%c%d %64s %64s", &mark, product.data(), &major, &dot,
                    &minor, project.data(), file.data()) != 7) {
      return false;
    }
  }
  if (mark != ';' || dot != '.' || secondDot != '.' || strcasecmp(project.data(), "project") != 0 ||
      strcasecmp(file.data(), "file") != 0) {
    return false;
  }
  const unsigned wholeMajor = static_cast<unsigned>(major);
  const unsigned wholeMinor = static_cast<unsigned>(minor);
  fileVersion_ = static_cast<int32_t>(
      !hasRevision && std::strcmp(product.data(), "Filmbox") == 0
          ? FilmboxVersion(wholeMajor, wholeMinor)
          : MakeVersion(wholeMajor, wholeMinor, static_cast<unsigned>(revision)));
  return true;
}

bool FbxIO::CheckFileVersion() {
  const uint32_t version = static_cast<uint32_t>(fileVersion_);
  if (version < (isFbx7Supported_ ? 8000U : 7000U)) return true;
  int major = 0;
  int minor = 0;
  int revision = 0;
  ProjectConvertVersionNumber(fileVersion_, major, minor, revision);
  status_.SetCode(FbxStatus::eInvalidFileVersion,
                  "FBX file version %d.%d.%d is not supported in this product", major, minor,
                  revision);
  return false;
}

void FbxIO::ProjectConvertVersionNumber(int version, int& major, int& minor, int& revision) {
  major = version / 1000;
  minor = version % 1000 / 100;
  revision = version % 100;
}

bool FbxIO::ProjectReadExtendedHeader(FbxIOFileHeaderInfo* info) {
  int64_t block = 0;
  int64_t end = 0;
  if (format_.isBinary) {
    FbxBinaryRecord record;
    if (source_->Size() - mainPosition_ < static_cast<int64_t>(format_.offsetWidth)) return true;
    const std::string_view head = source_->View(mainPosition_, FbxBinaryRecord::kLongestHead);
    if (!record.Read(head, format_, mainPosition_, source_->Size())) return Corrupted();
    if (record.IsNull() || record.name != kHeaderBlock || !record.HasBlock()) return true;
    block = record.values + record.valueBytes;
    end = record.end;
  } else {
    FbxAsciiScanner scanner(*source_, mainPosition_, source_->Size());
    std::vector<char> text;
    if (scanner.Next(&text) != '{') return true;
    std::string_view name(text.data(), text.size());
    name = name.substr(0, name.find_last_not_of(" \t\r\n") + 1);
    if (!name.ends_with(':')) return true;
    name.remove_suffix(1);
    if (name.substr(0, name.find_last_not_of(" \t") + 1) != kHeaderBlock) return true;
    block = scanner.Position();
    end = blocks_->Skip(*source_, block);
  }

  if (!PushList(block, end)) return Corrupted();
  const bool isRead = ReadExtendedHeaderFields(info);
  nested_.clear();
  depth_ = 0;
  current_ = nullptr;
  if (!isRead) return false;

  mainPosition_ = end;
  if (!format_.isBinary) return true;
  FbxBinaryRecord next;
  const std::string_view head = source_->View(end, FbxBinaryRecord::kLongestHead);
  if (next.Read(head, format_, end, source_->Size()) && next.IsNull()) {
    // Old files have the header block in a list of its own.
    mainPosition_ += FbxBinaryRecord::NullSize(format_);
  }
  return true;
}

bool FbxIO::ReadExtendedHeaderFields(FbxIOFileHeaderInfo* info) {
  const int32_t headerVersion = FieldReadI("FBXHeaderVersion", 0);
  fileVersion_ = FieldReadI("FBXVersion", 0);
  if (format_.isBinary) {
    const int32_t encryption = FieldReadI("EncryptionType", 0);
    if (encryption != 0 && encryption != 1) {
      status_.SetCode(FbxStatus::eFailure, "Encryption type is not supported");
      return false;
    }
    isEncrypted_ = encryption == 1;
  }
  if (info == nullptr) return true;

  info->fileVersion = fileVersion_;
  const auto text = [this](std::string_view name) { return FbxString(FieldReadC(name)); };
  if (headerVersion >= 1001 && FieldReadBlockBegin("CurrentCameraResolution")) {
    FbxIOFileHeaderInfo::RenderResolution& resolution = info->defaultRenderResolution;
    resolution.isOK = true;
    resolution.cameraName = text("CameraName");
    resolution.resolutionMode = text("CameraResolutionMode");
    resolution.width = FieldReadD("CameraResolutionW");
    resolution.height = FieldReadD("CameraResolutionH");
    FieldReadBlockEnd();
  }
  if (headerVersion >= 1002 && FieldReadBlockBegin("CreationTimeStamp")) {
    if (FieldReadI("Version", 0) >= 1000) {
      FbxIOFileHeaderInfo::CreationTimeStamp& stamp = info->creationTimeStamp;
      stamp.isOK = true;
      stamp.year = FieldReadI("Year");
      stamp.month = FieldReadI("Month");
      stamp.day = FieldReadI("Day");
      stamp.hour = FieldReadI("Hour");
      stamp.minute = FieldReadI("Minute");
      stamp.second = FieldReadI("Second");
      stamp.millisecond = FieldReadI("Millisecond");
    }
    FieldReadBlockEnd();
  }
  if (headerVersion >= 1002) info->creator = text("Creator");
  if (headerVersion >= 1003 && FieldReadBlockBegin("OtherFlags")) {
    info->ple = FieldReadI("FlagPLE") == 1;
    info->ioPlugin = FieldReadI("FlagIOPlugin") == 1;
    FieldReadBlockEnd();
  }
  info->ReadExtendedHeaderInformation(this);
  return true;
}

// Walks from the file's end from section to section. Finds nothing in a file without a tail.
void FbxIO::BinaryReadSectionPosition() {
  std::vector<Section> extensions;
  int64_t end = source_->Size();
  while (true) {
    const int64_t tail = (end & ~int64_t{15}) - kTailSize;
    if (tail < 0) break;
    const std::string_view bytes =
        source_->View(tail, kTailSize).substr(0, static_cast<size_t>(kTailSize));
    if (bytes.size() < static_cast<size_t>(kTailSize) ||
        bytes.substr(kTailCodeOffset) != kExtensionCode) {
      break;
    }
    const uint32_t backOffset = LoadNumber<uint32_t>(bytes.data(), format_.swap);
    const uint32_t version = LoadNumber<uint32_t>(bytes.data() + 4, format_.swap);
    const int64_t position = backOffset == 0 ? 0 : tail - int64_t{backOffset};
    if (position >= end || position < 0) break;
    if (position == 0) {
      if (version != 0) sections_[0].version = version;
      break;
    }
    extensions.push_back({position, version == 0 ? kUnknownSectionVersion : version});
    end = position;
  }
  sections_.insert(sections_.end(), extensions.rbegin(), extensions.rend());
}

uint32_t FbxIO::ProjectGetSectionVersion(int32_t section) const {
  if (section < 0 || section >= ProjectGetSectionCount()) return 0;
  return sections_[static_cast<size_t>(section)].version;
}

std::unique_ptr<FbxIOFieldList> FbxIO::MakeList() {
  return std::make_unique<FbxIOFieldList>(*source_, *blocks_, inflater_, format_);
}

bool FbxIO::ProjectOpenSection(int32_t section) {
  if (currentSection_ != -1 || section < 0 || section >= ProjectGetSectionCount()) {
    status_.SetCode(FbxStatus::eFailure);
    return false;
  }
  std::unique_ptr<FbxIOFieldList>& list = section == 0 ? mainList_ : extensionList_;
  currentSection_ = section;
  if (section == 0 && list != nullptr) {
    current_ = list.get();
    current_->ResetPosition();
    return true;
  }
  list = MakeList();
  current_ = list.get();
  const int64_t position = sections_[static_cast<size_t>(section)].position;
  if (!current_->Parse(position, source_->Size())) {
    ProjectCloseSection();
    list.reset();
    return Corrupted();
  }
  // The other records that belong to the file rather than the document, its id, its creation time
  // and a footer id, never decide: other programs write what they like there, or nothing.
  if (format_.isBinary) {
    password_ = FieldReadC("NodeId");
    if (password_.empty()) password_ = FieldReadC("Param2a");
  }
  current_->ResetPosition();
  return true;
}

void FbxIO::ProjectCloseSection() {
  nested_.clear();
  depth_ = 0;
  current_ = nullptr;
  currentSection_ = -1;
  extensionList_.reset();
}
