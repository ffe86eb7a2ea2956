// The properties of all objects.
#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "fbx/core/fbx_object.h"
#include "fbx/core/fbx_property_page.h"
#include "fbx/io/fbx_io.h"
#include "fbx/reader/read_records.h"

namespace {

constexpr uint32_t kLetterFlags = FbxPropertyFlags::eAnimatable | FbxPropertyFlags::eAnimated |
                                  FbxPropertyFlags::eUserDefined | FbxPropertyFlags::eHidden |
                                  FbxPropertyFlags::eLockedAll | FbxPropertyFlags::eMutedAll;

// The four member bits behind `letter`: a digit, or all of them. 0 without the letter.
uint32_t MemberBits(std::string_view letters, char letter) {
  const size_t at = letters.find(letter);
  if (at == std::string_view::npos) return 0;
  const char digit = at + 1 < letters.size() ? letters[at + 1] : '\0';
  if (digit >= '1' && digit <= '9') return static_cast<uint32_t>(digit - '0');
  if (digit >= 'a' && digit <= 'e') return static_cast<uint32_t>(digit - 'a' + 10);
  return 15;
}

uint32_t FlagsFromLetters(std::string_view letters) {
  const auto flag = [letters](char letter, uint32_t bit) {
    return letters.find(letter) == std::string_view::npos ? 0 : bit;
  };
  return flag('A', FbxPropertyFlags::eAnimatable) | flag('+', FbxPropertyFlags::eAnimated) |
         flag('U', FbxPropertyFlags::eUserDefined) | flag('H', FbxPropertyFlags::eHidden) |
         MemberBits(letters, 'L') << 7 | MemberBits(letters, 'M') << 11;
}

FbxDataType ResolveType(std::string_view type, std::string_view subType) {
  const FbxDataType resolved = subType.empty() ? FbxDataType() : GetDataTypeFromName(subType);
  return resolved.IsValid() ? resolved : GetDataTypeFromName(type);
}

FbxProperty FindOrCreate(FbxObject& object, const std::string& name, FbxDataType type) {
  const FbxProperty root = object.RootProperty();
  FbxProperty property = root.FindHierarchical(name);
  if (property.IsValid()) return property;
  const size_t last = name.rfind(*FbxProperty::sHierarchicalSeparator);
  if (last == std::string::npos) {
    property = FbxProperty::Create(&object, type, name);
  } else {
    const FbxProperty parent = root.FindHierarchical(std::string_view(name).substr(0, last));
    if (!parent.IsValid()) return {};
    property = FbxProperty::Create(parent, type, std::string_view(name).substr(last + 1));
  }
  property.ModifyFlag(FbxPropertyFlags::eImported, true);
  return property;
}

template <typename Vector>
Vector ReadVector(FbxIO& io) {
  Vector vector{};
  io.FieldReadDn(vector.data(), static_cast<int>(vector.size()));
  return vector;
}

std::string ReadBlob(FbxIO& io) {
  const int32_t size = io.FieldReadI();
  std::string bytes;
  while (io.FieldReadGetRemain() > 0 && static_cast<int64_t>(bytes.size()) < size) {
    bytes += io.FieldReadR();
  }
  return bytes;
}

FbxDistance ReadDistance(FbxIO& io) {
  FbxDistance distance;
  distance.value = io.FieldReadF();
  distance.unit = io.FieldReadC();
  return distance;
}

FbxPropertyValue ReadValue(FbxIO& io, EFbxType type) {
  switch (type) {
    case eFbxChar:
      return int64_t{io.FieldReadByte()};
    case eFbxUChar:
      return uint64_t{io.FieldReadUByte()};
    case eFbxShort:
      return int64_t{io.FieldReadShort()};
    case eFbxUShort:
      return uint64_t{io.FieldReadUShort()};
    case eFbxUInt:
      return uint64_t{io.FieldReadUI()};
    case eFbxLongLong:
      return io.FieldReadLL();
    case eFbxULongLong:
      return io.FieldReadULL();
    case eFbxHalfFloat:
    case eFbxFloat:
      return static_cast<double>(io.FieldReadF());
    case eFbxBool:
      return int64_t{io.FieldReadI() != 0 ? 1 : 0};
    case eFbxInt:
    case eFbxEnum:
      return int64_t{io.FieldReadI()};
    case eFbxDouble:
      return io.FieldReadD();
    case eFbxDouble2:
      return ReadVector<FbxDouble2>(io);
    case eFbxDouble3:
      return ReadVector<FbxDouble3>(io);
    case eFbxDouble4:
      return ReadVector<FbxDouble4>(io);
    case eFbxDouble4x4:
      return std::make_shared<const FbxDouble4x4>(ReadVector<FbxDouble4x4>(io));
    case eFbxString:
    case eFbxDateTime:
      return std::string(io.FieldReadC());
    case eFbxTime:
      return io.FieldReadT();
    case eFbxBlob:
      return ReadBlob(io);
    case eFbxDistance:
      return std::make_shared<const FbxDistance>(ReadDistance(io));
    case eFbxUndefined:
    case eFbxReference:
      break;
  }
  return {};
}

// The limits of a user's number, or the items of a user's enum, which stand behind the value.
void ReadExtras(FbxIO& io, FbxProperty& property, EFbxType type) {
  if (io.FieldReadGetRemain() <= 0) return;
  if (type == eFbxEnum) {
    const std::string items(io.FieldReadC());
    for (size_t start = 0; start < items.size();) {
      const size_t end = std::min(items.find('~', start), items.size());
      property.AddEnumValue(std::string_view(items).substr(start, end - start));
      start = end + 1;
    }
    return;
  }
  double limit = 0.0;
  const auto read = [&] { return ConvertPropertyValue(ReadValue(io, type), &limit, eFbxDouble); };
  const bool isScalar = (type >= eFbxChar && type <= eFbxDouble) || type == eFbxTime;
  if (!isScalar) return;
  if (read()) property.SetMinLimit(limit);
  if (io.FieldReadGetRemain() > 0 && read()) property.SetMaxLimit(limit);
}

// What stands before a property's value. Copies, since a view of a long text is good only until the
// record's next one; their storage serves one property after the other.
struct PropertyHead {
  std::string name;
  std::string type;
  std::string subType;
  std::string letters;

  static int32_t Count(const FbxIO& io) { return io.IsBeforeVersion7() ? 3 : 4; }
  void Read(FbxIO& io) {
    name = io.FieldReadC();
    type = io.FieldReadC();
    subType = io.IsBeforeVersion7() ? std::string_view() : io.FieldReadC();
    letters = io.FieldReadC();
  }
};

// A property, and how its value is to be read.
struct PropertyTarget {
  FbxProperty property;
  FbxDataType type;
  uint32_t flags = 0;
};

// The target that the head of the current record names; invalid if there is none.
PropertyTarget ReadTarget(FbxIO& io, FbxObject& object, PropertyHead& head) {
  head.Read(io);
  const FbxDataType type = ResolveType(head.type, head.subType);
  if (!type.IsValid()) return {};
  return {FindOrCreate(object, head.name, type), type, FlagsFromLetters(head.letters)};
}

// What heads mean to the objects of a class, by their stored bytes. Files repeat the same few heads
// for every object, and knowing them takes a third off the time of reading properties. Only the
// properties that the class declares are here: the same for all its objects in all files. Those of
// old files are kept apart: a newer head may begin with the bytes of an older one, which is
// shorter.
class KnownHeads {
 public:
  static KnownHeads& Of(FbxClassId classId, bool isOld) {
    static std::array<std::unordered_map<const FbxClassRecord*, KnownHeads>, 2> byAgeAndClass;
    return byAgeAndClass[isOld ? 1 : 0]
        .try_emplace(classId.Record(), classId.Record()->Page().Count())
        .first->second;
  }

  explicit KnownHeads(int declared) : declared_(declared) {}

  // The target of the head that the current record begins with, which is passed over; invalid for
  // one that isn't known, and then `stored` receives its bytes.
  PropertyTarget Take(FbxIO& io, FbxObject& object, std::string_view& stored) {
    const int32_t count = PropertyHead::Count(io);
    // Objects write the same properties in the same order, so that mostly one comparison will do.
    Entry* entry = last_ == nullptr ? nullptr : last_->second.next;
    if (entry == nullptr || !io.FieldPassStored(entry->first, count)) {
      stored = io.FieldReadStored(count);
      const auto found = heads_.find(stored);
      entry = found == heads_.end() ? nullptr : &*found;
      if (last_ != nullptr) last_->second.next = entry;
    }
    last_ = entry;
    if (entry == nullptr) return {};
    const Head& head = entry->second;
    return {FbxProperty(&object, head.index), head.type, head.flags};
  }
  void Keep(std::string stored, const PropertyTarget& target) {
    // Others than these no file needs, and so a bad one can't fill the memory.
    constexpr size_t kMostHeads = 256;
    constexpr size_t kLongestHead = 256;
    const int index = target.property.GetIndex();
    if (stored.empty() || stored.size() > kLongestHead || heads_.size() >= kMostHeads ||
        !target.property.IsValid() || index >= declared_) {
      return;
    }
    heads_.try_emplace(std::move(stored), Head{index, target.type, target.flags, nullptr});
  }

 private:
  struct Head;
  using Entry = std::pair<const std::string, Head>;
  struct Head {
    int index;
    FbxDataType type;
    uint32_t flags;
    Entry* next;  // what followed it last time
  };
  struct Hash : std::hash<std::string_view> {
    using is_transparent = void;  // NOLINT(readability-identifier-naming): the library's name
  };

  int declared_;
  Entry* last_ = nullptr;
  std::unordered_map<std::string, Head, Hash, std::equal_to<>> heads_;
};

void ReadProperty(FbxIO& io, PropertyTarget& target) {
  auto& [property, type, flags] = target;
  const uint32_t changed = (property.GetFlags() ^ flags) & kLetterFlags;
  if (changed != 0) property.ModifyFlags(changed, flags);

  if (!type.HasValue()) return;
  FbxPropertyValue value = ReadValue(io, type.GetType());
  const EFbxType held = property.GetPropertyDataType().GetType();
  property.SetValue(held == type.GetType() ? std::move(value) : CoercePropertyValue(value, held));
  if ((flags & FbxPropertyFlags::eUserDefined) != 0) ReadExtras(io, property, type.GetType());
}

}  // namespace

void ReadProperties(FbxIO& io, FbxObject& object) {
  const bool isOld = io.IsBeforeVersion7();
  if (!io.FieldReadBlockBegin(isOld ? "Properties60" : "Properties70")) return;
  const std::string_view record = isOld ? "Property" : "P";
  const int32_t count = io.FieldGetInstanceCount(record);
  object.ReserveProperties(count);
  KnownHeads& known = KnownHeads::Of(object.GetClassId(), isOld);
  PropertyHead head;
  io.FieldReadBegin(record);
  for (int32_t i = 0; i < count; ++i) {
    std::string_view stored;
    PropertyTarget target = known.Take(io, object, stored);
    if (!target.property.IsValid()) {
      // Reading may change the bytes in their place.
      std::string key(stored);
      io.FieldReadBegin(record, i);
      target = ReadTarget(io, object, head);
      known.Keep(std::move(key), target);
    }
    if (target.property.IsValid()) ReadProperty(io, target);
    io.FieldReadEnd();
  }
  io.FieldReadBlockEnd();
  io.FieldReadEnd();
}
