// The container of a scene file, binary or ASCII: a tree of named records with typed values, and a
// cursor over it. It knows nothing of objects or scenes.
//
// The cursor stands in one list of records at a time. FieldReadBegin puts it on a record of that
// list, by name (its first record, or the k-th of that name in file order) or by the index of a
// name; names count in byte order, never in file order. Scalars then take the record's values one
// after another, and never fail: a record, a value or a type that isn't there gives the default.
// FieldReadEnd moves on to the next record of the same name. FieldReadBlockBegin enters the list
// nested in the current record and FieldReadBlockEnd returns; the outer list's cursor stays:
//
//   for (int32_t k = 0; k < io.FieldGetInstanceCount("Model"); ++k) {
//     io.FieldReadBegin("Model", k);
//     const int64_t id = io.FieldReadLL();
//     if (io.FieldReadBlockBegin()) {
//       const int32_t version = io.FieldReadI("Version", 100);
//       io.FieldReadBlockEnd();
//     }
//     io.FieldReadEnd();
//   }
//
// A list costs what its own records cost: nested lists are positions until opened, arrays are
// decoded when asked for. Nothing is read past the bytes that the file has.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fbx/core/fbx_string.h"
#include "fbx/core/fbx_time.h"
#include "fbx/io/fbx_io_field_list.h"
#include "fbx/io/fbx_shared_array.h"
#include "fbx/io/fbx_stored_array.h"

class FbxIO;

// What the header block of a scene file says about the file. FbxIO::ProjectOpen fills it in.
class FbxIOFileHeaderInfo {
 public:
  struct RenderResolution {
    bool isOK = false;
    FbxString cameraName;
    FbxString resolutionMode;
    double width = 0.0;
    double height = 0.0;
  };
  struct CreationTimeStamp {
    bool isOK = false;
    int32_t year = 0;
    int32_t month = 0;
    int32_t day = 0;
    int32_t hour = 0;
    int32_t minute = 0;
    int32_t second = 0;
    int32_t millisecond = 0;
  };

  virtual ~FbxIOFileHeaderInfo() = default;

  // Called at the end of the header block, while the block's list is the current one. The result
  // isn't looked at by the container.
  virtual bool ReadExtendedHeaderInformation(FbxIO* /*io*/) { return true; }

  RenderResolution defaultRenderResolution;
  int32_t fileVersion = 0;
  CreationTimeStamp creationTimeStamp;
  FbxString creator;
  bool ioPlugin = false;
  bool ple = false;
};

class FbxIO {
 public:
  // Width of the offsets in binary records. Files up to 7400 have 32 bits, those from 7500 on 64,
  // and the versions between have either; the one that opens the file must match.
  enum BinaryType { eBinary32 = 0, eBinary64 = 1 };
  // Lists nested deeper than this aren't opened.
  static constexpr size_t kMaxDepth = 10000;

  // Failures are told to `status`, which the caller keeps alive.
  FbxIO(BinaryType type, FbxStatus& status);
  ~FbxIO();
  FbxIO(const FbxIO&) = delete;
  FbxIO& operator=(const FbxIO&) = delete;

  // Reads the file header, the header block and the sections' positions. False, with the status set
  // (but for a mismatch of the offset width, which is silent), if the file can't be read; it is
  // closed then. `info`, when given, receives what the header block holds.
  bool ProjectOpen(const char* fileName, bool openMainSection = false,
                   FbxIOFileHeaderInfo* info = nullptr);
  // The same for a block of memory, which the caller keeps alive until ProjectClose.
  bool ProjectOpen(std::string_view bytes, bool openMainSection = false,
                   FbxIOFileHeaderInfo* info = nullptr);
  void ProjectClose();

  bool ProjectOpenMainSection() { return ProjectOpenSection(0); }
  // Stands at the top list of a section. False if one is open, or there is no such section (code
  // 1), or it is corrupt (code 7).
  bool ProjectOpenSection(int32_t section);
  void ProjectCloseSection();
  int32_t ProjectGetSectionCount() const { return static_cast<int32_t>(sections_.size()); }
  // -1 while none is open.
  int32_t ProjectGetCurrentSection() const { return currentSection_; }
  // 0 for a section that isn't there.
  uint32_t ProjectGetSectionVersion(int32_t section) const;
  // The password that the section opened last was saved with, "" for none.
  const std::string& ProjectGetPassword() const { return password_; }

  // major * 1000 + minor * 100 + revision, as 7400.
  int32_t GetFileVersionNumber() const { return fileVersion_; }
  static void ProjectConvertVersionNumber(int version, int& major, int& minor, int& revision);
  // Whether the file is older than the records and arrays of version 7.
  bool IsBeforeVersion7() const { return fileVersion_ < 7000; }
  bool IsBinary() const { return format_.isBinary; }
  bool IsEncrypted() const { return isEncrypted_; }
  // False, with code 1 and the system's reason, once bytes of the open file couldn't be read. To
  // the cursor it looks as if the file ended there.
  bool CheckRead();
  // The errno of the opening or of that read, 0 if neither failed. Closing keeps it.
  int GetSystemError() const { return systemError_; }
  // Without it, files of version 7000 and above are refused.
  void Fbx7Support(bool isSupported) { isFbx7Supported_ = isSupported; }

  // Number of names in the list, and the i-th in byte order; "" past the last.
  int32_t FieldGetCount() const;
  std::string_view FieldGetName(int32_t field) const;
  int32_t FieldGetInstanceCount(std::string_view name) const;

  // All records of the list in file order.
  std::vector<FbxIORecordPlace> FieldGetFileOrder() const;

  bool FieldReadBegin(std::string_view name) { return FieldReadBegin(name, 0); }
  bool FieldReadBegin(std::string_view name, int32_t instance);
  bool FieldReadBegin(int32_t field, int32_t instance);
  void FieldReadEnd();
  // Takes the cursor back to the first record of every name in the list.
  void FieldReadResetPosition();

  // Enters the nested list. False if there is none, or it is corrupt (code 7).
  bool FieldReadBlockBegin();
  // The same for the first record of a name that has one.
  bool FieldReadBlockBegin(std::string_view name);
  // Returns to the list around; everything read from the nested one is gone.
  void FieldReadBlockEnd();
  bool FieldReadIsBlock();

  int32_t FieldReadGetCount();
  int32_t FieldReadGetRemain();
  // The letter of the next value; in ASCII files 'a' for an array and 'S' for all else, also for
  // numbers. 'S' when there is no value.
  char FieldReadGetType();

  // The next value of the current record. In ASCII files numbers are read from the longest prefix
  // of the text that is one. Numbers too small for the type's normal range read as 0.
  char FieldReadCH();
  // What FieldReadCH would give; the cursor stays.
  char FieldPeekCH();
  bool FieldReadB();
  int8_t FieldReadByte();
  uint8_t FieldReadUByte() { return static_cast<uint8_t>(FieldReadByte()); }
  int16_t FieldReadShort();
  uint16_t FieldReadUShort() { return static_cast<uint16_t>(FieldReadShort()); }
  int32_t FieldReadI();
  uint32_t FieldReadUI() { return static_cast<uint32_t>(FieldReadI()); }
  int64_t FieldReadLL();
  uint64_t FieldReadULL() { return static_cast<uint64_t>(FieldReadLL()); }
  float FieldReadF();
  double FieldReadD();
  // Text, object names as "Class::Name". Valid until the list is left or, for a record with more
  // than 4 KiB of values, until its next text is read.
  std::string_view FieldReadC();
  // Raw bytes, base64 in ASCII files. Valid as text is.
  std::string_view FieldReadR();
  // The next `count` values as they are stored, letters included: in one file equal bytes hold
  // equal values. Empty, and nothing is read, in ASCII files, in records with more than 4 KiB of
  // values, and where there aren't as many, whole. Valid until the list is left.
  std::string_view FieldReadStored(int32_t count);
  // Passes over the next `count` values if they are stored as `stored`, which FieldReadStored gave
  // for as many; else reads nothing.
  bool FieldPassStored(std::string_view stored, int32_t count);
  // Ticks, or seconds in files that hold those.
  FbxTime FieldReadT();
  FbxTimeSpan FieldReadTS();

  void FieldReadFn(float* out, int count);
  void FieldReadDn(double* out, int count);
  void FieldRead3D(double* out) { FieldReadDn(out, 3); }
  void FieldRead4D(double* out) { FieldReadDn(out, 4); }

  // The first value of the first record of a name, or the default if there is no such record.
  char FieldReadCH(std::string_view name, char defaultValue = 0) {
    return Named(name, defaultValue, [this] { return FieldReadCH(); });
  }
  bool FieldReadB(std::string_view name, bool defaultValue = false) {
    return Named(name, defaultValue, [this] { return FieldReadB(); });
  }
  int8_t FieldReadByte(std::string_view name, int8_t defaultValue = 0) {
    return Named(name, defaultValue, [this] { return FieldReadByte(); });
  }
  int16_t FieldReadShort(std::string_view name, int16_t defaultValue = 0) {
    return Named(name, defaultValue, [this] { return FieldReadShort(); });
  }
  int32_t FieldReadI(std::string_view name, int32_t defaultValue = 0) {
    return Named(name, defaultValue, [this] { return FieldReadI(); });
  }
  int64_t FieldReadLL(std::string_view name, int64_t defaultValue = 0) {
    return Named(name, defaultValue, [this] { return FieldReadLL(); });
  }
  float FieldReadF(std::string_view name, float defaultValue = 0.0F) {
    return Named(name, defaultValue, [this] { return FieldReadF(); });
  }
  double FieldReadD(std::string_view name, double defaultValue = 0.0) {
    return Named(name, defaultValue, [this] { return FieldReadD(); });
  }
  std::string_view FieldReadC(std::string_view name, std::string_view defaultValue = {}) {
    return Named(name, defaultValue, [this] { return FieldReadC(); });
  }
  FbxTime FieldReadT(std::string_view name, FbxTime defaultValue = FbxTime()) {
    return Named(name, defaultValue, [this] { return FieldReadT(); });
  }
  FbxTimeSpan FieldReadTS(std::string_view name, FbxTimeSpan defaultValue = FbxTimeSpan()) {
    return Named(name, defaultValue, [this] { return FieldReadTS(); });
  }
  // A default that is null leaves `out` as it is.
  void FieldReadDn(std::string_view name, double* out, const double* defaultValue, int count);
  void FieldRead3D(std::string_view name, double* out, const double* defaultValue) {
    FieldReadDn(name, out, defaultValue, 3);
  }
  void FieldRead4D(std::string_view name, double* out, const double* defaultValue) {
    FieldReadDn(name, out, defaultValue, 4);
  }

  // The next value as an array, decoded straight into `out`, whose storage is reused. The element
  // type decides what the value must be: double 'd', float 'f', int64 and uint64 'l', int32 and
  // uint32 'i', int16 and uint16 'h', int8 and uint8 'c', bool 'b'; in ASCII files any "*N" block
  // of N values does, each converted as a scalar. Before version 7 all values of a record are an
  // array, too, converted alike. False, with `out` empty, if there is no such
  // array or it has no elements. A stream that ends early gives the elements that it holds; one
  // that grows beyond all measure, see FbxInflater, none.
  template <class T>
  bool FieldReadArray(std::vector<T>& out) {
    if (Current() != nullptr) return current_->ReadArray(out);
    out.clear();
    return false;
  }
  // The same for the first record of a name.
  template <class T>
  bool FieldReadArray(std::string_view name, std::vector<T>& out) {
    out.clear();
    return FieldReadBegin(name) && FieldReadArray(out);
  }
  // The same for an array, of numbers or of vectors of them, that is decoded when it is asked for.
  // Without one it is empty.
  template <class T>
  void FieldReadArray(std::string_view name, FbxStoredArray<T>& out) {
    out = {};
    if (FieldReadBegin(name)) {
      out = current_->ReadStored<typename FbxStoredArray<T>::Scalar>();
    }
  }
  // The value of the first record of a name as it is stored: equal bytes of one file hold equal
  // values. Empty in text, for long records, and where there isn't just one value. Valid until the
  // list is left.
  std::string_view FieldGetStoredValue(std::string_view name) {
    return FieldReadBegin(name) ? current_->StoredValue() : std::string_view();
  }
  // The int64 array of the first record of a name; null if there is none. Where the array is the
  // one that the last call gave, both share it, and are decoded once if their stored bytes agree.
  FbxSharedArray<int64_t> FieldReadSharedArray(std::string_view name);

 private:
  struct Section {
    int64_t position = 0;
    uint32_t version = 0;
  };

  template <class T, class Read>
  T Named(std::string_view name, T defaultValue, Read read) {
    if (!FieldReadBegin(name)) return defaultValue;
    const T value = read();
    FieldReadEnd();
    return value;
  }

  bool Open(std::unique_ptr<FbxByteSource> source, bool openMainSection, FbxIOFileHeaderInfo* info);
  bool ProjectReadHeader(bool openMainSection, FbxIOFileHeaderInfo* info);
  bool BinaryReadHeader();
  bool ASCIIReadHeader();
  bool CheckFileVersion();
  bool ProjectReadExtendedHeader(FbxIOFileHeaderInfo* info);
  bool ReadExtendedHeaderFields(FbxIOFileHeaderInfo* info);
  void BinaryReadSectionPosition();
  // Sets code 7 with the file's name; false.
  bool Corrupted();

  std::unique_ptr<FbxIOFieldList> MakeList();
  bool PushList(int64_t start, int64_t limit);
  const FbxIOFieldInstance* Current() const {
    return current_ == nullptr ? nullptr : current_->Current();
  }

  FbxStatus& status_;
  const BinaryType binaryType_;
  bool isFbx7Supported_ = false;

  std::string fileName_;
  int systemError_ = 0;
  std::unique_ptr<FbxByteSource> source_;
  std::unique_ptr<FbxAsciiBlocks> blocks_;
  std::shared_ptr<FbxInflater> inflater_;  // of the stored arrays, too
  FbxIOListFormat format_;
  bool isEncrypted_ = false;
  int32_t fileVersion_ = 0;
  // Behind the file header, and then behind the header block.
  int64_t mainPosition_ = 0;

  std::vector<Section> sections_;
  int32_t currentSection_ = -1;
  std::string password_;
  // Kept when the section is closed, since it is opened several times.
  std::unique_ptr<FbxIOFieldList> mainList_;
  std::unique_ptr<FbxIOFieldList> extensionList_;
  // The nested lists that are open are the first `depth_`; those behind are kept for reuse.
  std::vector<std::unique_ptr<FbxIOFieldList>> nested_;
  size_t depth_ = 0;
  FbxIOFieldList* current_ = nullptr;
  // The last shared array, and the bytes that it came from.
  FbxSharedArray<int64_t> sharedArray_;
  std::string sharedBytes_;
};
