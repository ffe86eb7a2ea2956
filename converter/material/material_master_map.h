// The numbering of the distinct materials of a run: from material map to the material id that goes
// into submeshes, records and listings.
#pragma once

#include <list>
#include <string>
#include <vector>

#include "converter/material/material_map.h"

// The order of the master map. It is no strict weak order where maps differ in their keys: a map
// whose keys are a subset of another's, with the same values, is the same material, and an empty
// map is the same as any. Which materials merge follows from this order and from the search of the
// master map, so neither may be tidied up.
struct CompareMaterialMap {
  // In key order of `a`: false at a key that `b` lacks; at the first value that differs, whether
  // b's is the lesser. False if none differs.
  bool operator()(const MaterialMap& a, const MaterialMap& b) const;
  // As above, but true if none differs: false only for a missing key, or a first difference where
  // b's value is the greater.
  static bool equal(const MaterialMap& a, const MaterialMap& b);
};

// Material maps with their ids, in the order of CompareMaterialMap. Where that order is consistent
// this is a sorted map. Where it isn't, a map of the standard library would give ids that depend on
// how it balances its tree; so the sequence and its two searches are our own:
//
// Both halve the sequence: the material is held against the middle entry of those left, of an even
// number against the first of the back half, until none is left and a gap between entries is found.
//   Insert: the material goes to the front half if it comes before the middle entry, else to the
//     back half. It is new if the gap is at the front, or if the entry before the gap comes before
//     it; otherwise that entry is the same material.
//   Look-up: the material goes to the back half if the middle entry comes before it, else to the
//     front half. It is found in the entry behind the gap unless it comes before that one.
class MaterialMasterMap {
 public:
  MaterialMasterMap() = default;
  MaterialMasterMap(MaterialMasterMap&&) = default;
  MaterialMasterMap& operator=(MaterialMasterMap&&) = default;

  struct Entry {
    MaterialMap map;
    int id;
  };

  using Entries = std::list<Entry>;

  // Adds the material with its id unless it is there; returns its entry.
  Entry& Insert(const MaterialMap& map, int id);
  // The id of the material. One that isn't found is inserted with the id 0.
  int& operator[](const MaterialMap& map);

  Entries::iterator begin() { return entries_.begin(); }
  Entries::iterator end() { return entries_.end(); }
  Entries::const_iterator begin() const { return entries_.begin(); }
  Entries::const_iterator end() const { return entries_.end(); }
  size_t size() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }

 private:
  // The number of entries before the gap.
  template <typename GoesBack>
  size_t FindGap(GoesBack&& goesBack) const;

  // In order, beside a vector of their places for the search. An insertion moves the places behind
  // it, 8 bytes each: nothing for the thousands of materials of a large scene; a hundred thousand,
  // which only a hostile one has, take some seconds.
  Entries entries_;
  std::vector<Entries::iterator> places_;
};

// Numbers the materials of `meshes`, whose holders cache their material maps on the way. The slot
// in a material's name is its id, if it is the first in master order to claim it; all others are
// numbered upward from above the highest slot. Of several materials of one name the first counts.
// A map that isn't in the result may be looked up with operator[], which gives it the id 0. Never
// empty.
MaterialMasterMap BuildMaterialMasterMap(const std::vector<MeshHolder_*>& meshes);

// The number between the last "[" and the last "]" of a material's name, as in "Skin[3]"; -1 for
// none.
int GetMaterialSlot(const std::string& name);

// The master ids of the mesh's materials by index, each followed by a blank. An index without a
// material, but with others behind it, counts as an empty map.
std::string GetMaterialListFromMesh(MeshHolder_& holder, MaterialMasterMap& master);
