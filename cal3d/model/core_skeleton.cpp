#include "cal3d/model/core_skeleton.h"

#include <cstddef>

CalCoreSkeleton::CalCoreSkeleton(const std::vector<boost::shared_ptr<CalCoreBone>>& bones)
    : coreBones(bones_), bones_(bones) {
  for (const boost::shared_ptr<CalCoreBone>& bone : bones_) {
    if (bone) bone->childIds.clear();
  }
  for (size_t i = 0; i < bones_.size(); ++i) {
    if (!bones_[i]) continue;
    const int32_t id = static_cast<int32_t>(i);
    idsByName_.try_emplace(bones_[i]->name, id);
    const int32_t parent = bones_[i]->parentId;
    if (parent < 0 || static_cast<size_t>(parent) >= bones_.size()) continue;
    if (bones_[static_cast<size_t>(parent)]) {
      bones_[static_cast<size_t>(parent)]->childIds.push_back(id);
    }
  }
}

CalCoreSkeleton::CalCoreSkeleton(const CalCoreSkeleton& other)
    : coreBones(bones_),
      sceneAmbientColor(other.sceneAmbientColor),
      bones_(other.bones_),
      idsByName_(other.idsByName_) {}

int32_t CalCoreSkeleton::getCoreBoneId(const std::string& name) const {
  const auto found = idsByName_.find(name);
  return found == idsByName_.end() ? -1 : found->second;
}
