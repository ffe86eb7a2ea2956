#include "fbx/core/fbx_class_id.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "fbx/core/fbx_property_page.h"

namespace {

// The records link themselves in while the program starts, in no given order.
constinit const FbxClassRecord* firstRecord = nullptr;

}  // namespace

FbxClassRecord::FbxClassRecord(const char* name, const FbxClassRecord* parent, Factory factory,
                               const char* fileType, DeclareProperties declare)
    : name_(name),
      parent_(parent),
      factory_(factory),
      fileType_(fileType),
      declare_(declare),
      next_(firstRecord) {
  firstRecord = this;
}

FbxClassRecord::~FbxClassRecord() = default;

const FbxPropertyPage& FbxClassRecord::Page() const {
  if (page_ == nullptr) {
    // Put in place whole: memory may end on the way, and the next scene needs the page again.
    auto page = parent_ == nullptr ? std::make_unique<FbxPropertyPage>()
                                   : std::make_unique<FbxPropertyPage>(parent_->Page());
    if (declare_ != nullptr) declare_(*page);
    page_ = std::move(page);
  }
  return *page_;
}

const std::vector<const FbxClassRecord*>& FbxClassRecord::All() {
  static const std::vector<const FbxClassRecord*> all = [] {
    std::vector<const FbxClassRecord*> records;
    for (const FbxClassRecord* r = firstRecord; r != nullptr; r = r->next_) records.push_back(r);
    std::sort(records.begin(), records.end(), [](const auto* a, const auto* b) {
      return std::string_view(a->Name()) < std::string_view(b->Name());
    });
    return records;
  }();
  return all;
}

bool FbxClassId::Is(FbxClassId other) const {
  if (!other.IsValid()) return false;
  for (const FbxClassRecord* r = record_; r != nullptr; r = r->Parent()) {
    if (r == other.record_) return true;
  }
  return false;
}

const char* FbxClassId::GetFbxFileTypeName(bool askParent) const {
  for (const FbxClassRecord* r = record_; r != nullptr; r = r->Parent()) {
    if (!askParent || *r->FileType() != '\0') return r->FileType();
  }
  return "";
}
