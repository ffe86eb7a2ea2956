#include "converter/material/material_master_map.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <string_view>
#include <unordered_map>

#include "converter/base/records.h"
#include "converter/scene/mesh_holder.h"

namespace {

constexpr int kNoSlot = -1;

enum class Order { kMissingKey, kLesser, kGreater, kNoDifference };

// How b's value at the first key of `a` with another value, or with none, stands to a's.
Order FirstDifference(const MaterialMap& a, const MaterialMap& b) {
  auto other = b.begin();
  for (const auto& [key, value] : a) {
    while (other != b.end() && other->first < key) ++other;
    if (other == b.end() || other->first != key) return Order::kMissingKey;
    const int order = other->second.compare(value);
    if (order != 0) return order < 0 ? Order::kLesser : Order::kGreater;
  }
  return Order::kNoDifference;
}

// Hands out ids upward from above the highest slot. Where a slot stands at the end of the range of
// int, they go on with the smallest numbers that are no slot.
class IdSource {
 public:
  IdSource(int64_t next, const std::map<int, std::vector<std::string>>& slots)
      : next_(next), slots_(slots) {}

  int Next() {
    if (next_ > std::numeric_limits<int>::max()) {
      next_ = 0;
      avoidSlots_ = true;
    }
    while (avoidSlots_ && slots_.count(static_cast<int>(next_)) != 0) ++next_;
    return static_cast<int>(next_++);
  }

 private:
  int64_t next_;
  const std::map<int, std::vector<std::string>>& slots_;
  bool avoidSlots_ = false;
};

void WarnOfSharedSlot(int slot, const std::vector<std::string>& names) {
  std::string text = "Multiple materials using slot " + std::to_string(slot) + ": assigned to " +
                     names.front() + ".";
  for (size_t i = 1; i < names.size(); ++i) text += " " + names[i];
  AddWarning(text +
             (names.size() == 2 ? " is assigned another slot" : " are assigned other slots"));
}

// All distinct materials under the id kNoSlot.
MaterialMasterMap GatherMaterials(const std::vector<MeshHolder_*>& meshes) {
  MaterialMasterMap master;
  std::unordered_map<std::string_view, const MaterialMap*> firstOfName;
  for (MeshHolder_* mesh : meshes) {
    for (const auto& [index, map] : GetMeshMaterialMap(*mesh)) {
      const std::string& name = MaterialName(map);
      const auto [known, isNew] = firstOfName.emplace(name, &map);
      if (isNew) {
        master.Insert(map, kNoSlot);
      } else if (!CompareMaterialMap::equal(map, *known->second)) {
        AddWarning("Two materials named " + name + " have different textures.");
      }
    }
  }
  return master;
}

}  // namespace

bool CompareMaterialMap::operator()(const MaterialMap& a, const MaterialMap& b) const {
  return FirstDifference(a, b) == Order::kLesser;
}

bool CompareMaterialMap::equal(const MaterialMap& a, const MaterialMap& b) {
  const Order order = FirstDifference(a, b);
  return order == Order::kNoDifference || order == Order::kLesser;
}

template <typename GoesBack>
size_t MaterialMasterMap::FindGap(GoesBack&& goesBack) const {
  size_t first = 0;
  size_t last = places_.size();
  while (first < last) {
    const size_t middle = first + (last - first) / 2;
    if (goesBack(places_[middle]->map)) {
      first = middle + 1;
    } else {
      last = middle;
    }
  }
  return first;
}

MaterialMasterMap::Entry& MaterialMasterMap::Insert(const MaterialMap& map, int id) {
  const CompareMaterialMap isBefore;
  const size_t gap = FindGap([&](const MaterialMap& middle) { return !isBefore(map, middle); });
  if (gap > 0 && !isBefore(places_[gap - 1]->map, map)) return *places_[gap - 1];
  const auto behind = gap == places_.size() ? entries_.end() : places_[gap];
  const auto place = entries_.insert(behind, {map, id});
  places_.insert(places_.begin() + static_cast<ptrdiff_t>(gap), place);
  return *place;
}

int& MaterialMasterMap::operator[](const MaterialMap& map) {
  const CompareMaterialMap isBefore;
  const size_t gap = FindGap([&](const MaterialMap& middle) { return isBefore(middle, map); });
  if (gap < places_.size() && !isBefore(map, places_[gap]->map)) return places_[gap]->id;
  return Insert(map, 0).id;
}

MaterialMasterMap BuildMaterialMasterMap(const std::vector<MeshHolder_*>& meshes) {
  MaterialMasterMap master = GatherMaterials(meshes);
  int64_t next = 0;
  std::map<int, std::vector<std::string>> slots;
  for (auto& [map, id] : master) {
    const std::string& name = MaterialName(map);
    const int slot = GetMaterialSlot(name);
    if (slot >= next) next = int64_t{slot} + 1;
    if (slot == kNoSlot) continue;
    std::vector<std::string>& names = slots[slot];
    names.push_back(name);
    if (names.size() == 1) id = slot;
  }
  for (const auto& [slot, names] : slots) {
    if (names.size() > 1) WarnOfSharedSlot(slot, names);
  }
  IdSource ids(next, slots);
  for (auto& [map, id] : master) {
    if (id == kNoSlot) id = ids.Next();
  }
  if (master.empty()) master.Insert(MaterialMap(), 0);
  return master;
}

int GetMaterialSlot(const std::string& name) {
  const size_t open = name.rfind('[');
  const size_t close = name.rfind(']');
  if (open == std::string::npos || close == std::string::npos || close <= open) return kNoSlot;
  std::string_view text(name.data() + open + 1, close - open - 1);
  const size_t start = text.find_first_not_of(" \t\n\v\f\r");
  if (start == std::string_view::npos) return kNoSlot;
  text.remove_prefix(start);
  if (text.front() == '+') {
    text.remove_prefix(1);
    if (text.starts_with('-')) return kNoSlot;
  }
  int slot = kNoSlot;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), slot);
  return result.ec == std::errc() ? slot : kNoSlot;
}

std::string GetMaterialListFromMesh(MeshHolder_& holder, MaterialMasterMap& master) {
  const MaterialMaps& maps = GetMeshMaterialMap(holder);
  const int last = maps.rbegin()->first;
  std::string list;
  for (int i = 0; i <= last; ++i) {
    const auto found = maps.find(i);
    const int id = master[found == maps.end() ? MaterialMap() : found->second];
    list += std::to_string(id) + ' ';
  }
  return list;
}
