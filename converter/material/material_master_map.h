// The numbering of the distinct materials of a run: from material map to the material id that goes
// into submeshes, records and listings.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "converter/material/material_map.h"

// The order of the master map. It is no strict weak order where maps differ in their keys: a map
// whose keys are a subset of another's, with the same values, is the same material, and an empty
// map is the same as any. Which materials merge follows from this order and the search through the
// tree, so neither may be tidied up.
struct CompareMaterialMap {
  // In key order of `a`: false at a key that `b` lacks; at the first value that differs, whether
  // b's is the lesser. False if none differs.
  bool operator()(const MaterialMap& a, const MaterialMap& b) const;
  // As above, but true if none differs: false only for a missing key, or a first difference where
  // b's value is the greater.
  static bool equal(const MaterialMap& a, const MaterialMap& b);
};

using MaterialMasterMap = std::map<MaterialMap, int, CompareMaterialMap>;

// Numbers the materials of `meshes`, whose holders cache their material maps on the way. The slot
// in a material's name is its id, if it is the first in master order to claim it; all others are
// numbered upward from above the highest slot. Of several materials of one name the first counts.
// A map that isn't in the result may be looked up with operator[], which gives it the id 0. Never
// empty.
MaterialMasterMap BuildMaterialMasterMap(const std::vector<MeshHolder_*>& meshes);

// The number between the last "[" and the last "]" of a material's name, as in "Skin[3]"; -1 for
// none.
int GetMaterialSlot(const std::string& name);

// The master ids of the mesh's materials by index, each followed by a blank.
std::string GetMaterialListFromMesh(MeshHolder_& holder, MaterialMasterMap& master);
