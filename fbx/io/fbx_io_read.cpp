// Reading at the cursor.
#include <algorithm>

#include "fbx/io/ascii_blocks.h"
#include "fbx/io/fbx_byte_source.h"
#include "fbx/io/fbx_inflater.h"
#include "fbx/io/fbx_io.h"

int32_t FbxIO::FieldGetCount() const {
  return current_ == nullptr ? 0 : static_cast<int32_t>(current_->FieldCount());
}

std::string_view FbxIO::FieldGetName(int32_t field) const {
  if (current_ == nullptr || field < 0) return {};
  const FbxIOField* found = current_->Field(static_cast<size_t>(field));
  return found == nullptr ? std::string_view() : found->name;
}

int32_t FbxIO::FieldGetInstanceCount(std::string_view name) const {
  const FbxIOField* field = current_ == nullptr ? nullptr : current_->Find(name);
  return field == nullptr ? 0 : field->count;
}

std::vector<FbxIORecordPlace> FbxIO::FieldGetFileOrder() const {
  return current_ == nullptr ? std::vector<FbxIORecordPlace>() : current_->FileOrder();
}

bool FbxIO::FieldReadBegin(std::string_view name, int32_t instance) {
  return current_ != nullptr && current_->Begin(name, instance);
}

bool FbxIO::FieldReadBegin(int32_t field, int32_t instance) {
  return current_ != nullptr && field >= 0 && current_->Begin(static_cast<size_t>(field), instance);
}

FbxSharedArray<int64_t> FbxIO::FieldReadSharedArray(std::string_view name) {
  if (!FieldReadBegin(name)) return nullptr;
  const std::string_view bytes = current_->StoredValue();
  if (!bytes.empty() && bytes == sharedBytes_) return sharedArray_;
  std::vector<int64_t> array;
  FieldReadArray(array);
  if (sharedArray_ == nullptr || *sharedArray_ != array) {
    sharedArray_ = ShareArray(std::move(array));
  }
  sharedBytes_ = bytes;
  return sharedArray_;
}

void FbxIO::FieldReadEnd() {
  if (current_ != nullptr) current_->Next();
}

void FbxIO::FieldReadResetPosition() {
  if (current_ != nullptr) current_->ResetPosition();
}

bool FbxIO::PushList(int64_t start, int64_t limit) {
  if (depth_ >= kMaxDepth) return false;
  if (depth_ == nested_.size()) nested_.push_back(MakeList());
  if (!nested_[depth_]->Parse(start, limit)) {
    nested_[depth_]->Clear();
    return false;
  }
  current_ = nested_[depth_++].get();
  return true;
}

bool FbxIO::FieldReadBlockBegin() {
  const FbxIOFieldInstance* record = Current();
  if (record == nullptr || record->extension == 0) return false;
  return PushList(record->extension, record->end) || Corrupted();
}

bool FbxIO::FieldReadBlockBegin(std::string_view name) {
  for (int32_t i = 0; FieldReadBegin(name, i); ++i) {
    if (FieldReadIsBlock()) return FieldReadBlockBegin();
  }
  return false;
}

void FbxIO::FieldReadBlockEnd() {
  if (depth_ == 0) return;
  nested_[--depth_]->Clear();
  current_ = depth_ > 0             ? nested_[depth_ - 1].get()
             : currentSection_ == 0 ? mainList_.get()
                                    : extensionList_.get();
}

bool FbxIO::FieldReadIsBlock() {
  const FbxIOFieldInstance* record = Current();
  return record != nullptr && record->extension != 0;
}

int32_t FbxIO::FieldReadGetCount() {
  const FbxIOFieldInstance* record = Current();
  return record == nullptr ? 0 : record->valueCount;
}

int32_t FbxIO::FieldReadGetRemain() {
  const FbxIOFieldInstance* record = Current();
  return record == nullptr ? 0 : record->valueCount - current_->ValueIndex();
}

char FbxIO::FieldReadGetType() { return current_ == nullptr ? 'S' : current_->ValueType(); }

char FbxIO::FieldReadCH() { return current_ == nullptr ? '\0' : current_->ReadChar(); }
char FbxIO::FieldPeekCH() { return current_ == nullptr ? '\0' : current_->PeekChar(); }
bool FbxIO::FieldReadB() { return current_ != nullptr && current_->ReadBool(); }
int8_t FbxIO::FieldReadByte() { return current_ == nullptr ? int8_t{0} : current_->ReadByte(); }
int16_t FbxIO::FieldReadShort() { return current_ == nullptr ? int16_t{0} : current_->ReadShort(); }
int32_t FbxIO::FieldReadI() { return current_ == nullptr ? 0 : current_->ReadInt(); }
int64_t FbxIO::FieldReadLL() { return current_ == nullptr ? 0 : current_->ReadLongLong(); }
float FbxIO::FieldReadF() { return current_ == nullptr ? 0.0F : current_->ReadFloat(); }
double FbxIO::FieldReadD() { return current_ == nullptr ? 0.0 : current_->ReadDouble(); }

std::string_view FbxIO::FieldReadC() {
  return current_ == nullptr ? std::string_view() : current_->ReadString();
}

std::string_view FbxIO::FieldReadR() {
  return current_ == nullptr ? std::string_view() : current_->ReadRaw();
}

std::string_view FbxIO::FieldReadStored(int32_t count) {
  return current_ == nullptr ? std::string_view() : current_->TakeStored(count);
}

bool FbxIO::FieldPassStored(std::string_view stored, int32_t count) {
  return current_ != nullptr && current_->PassStored(stored, count);
}

FbxTime FbxIO::FieldReadT() {
  constexpr uint32_t kFirstWithTicks = 2001;
  if (format_.isBinary ? FieldReadGetType() == 'L'
                       : ProjectGetSectionVersion(currentSection_) >= kFirstWithTicks) {
    return FbxTime(FieldReadLL());
  }
  FbxTime time;
  time.SetSecondDouble(FieldReadD());
  return time;
}

FbxTimeSpan FbxIO::FieldReadTS() {
  const FbxTime start = FieldReadT();
  return {start, FieldReadT()};
}

void FbxIO::FieldReadFn(float* out, int count) {
  for (int i = 0; i < count; ++i) out[i] = FieldReadF();
}

void FbxIO::FieldReadDn(double* out, int count) {
  if (current_ != nullptr) {
    current_->ReadDoubles(out, count);
  } else {
    std::fill_n(out, count, 0.0);
  }
}

void FbxIO::FieldReadDn(std::string_view name, double* out, const double* defaultValue, int count) {
  if (FieldReadBegin(name)) {
    FieldReadDn(out, count);
    FieldReadEnd();
  } else if (defaultValue != nullptr) {
    std::copy_n(defaultValue, count, out);
  }
}
