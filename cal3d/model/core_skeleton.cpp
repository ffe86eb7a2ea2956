#include "cal3d/model/core_skeleton.h"

#include <cstddef>

CalCoreSkeleton::CalCoreSkeleton(const std::vector<boost::shared_ptr<CalCoreBone>>& bones)
    : coreBones(bones_), bones_(bones) {
  for (const boost::shared_ptr<CalCoreBone>& bone : bones_) {
    if (bone) bone->childIds.clear();
  }
  for (std::size_t i = 0; i < bones_.size(); ++i) {
    if (!bones_[i]) continue;
    const std::int32_t id = static_cast<std::int32_t>(i);
    ids_by_name_.try_emplace(bones_[i]->name, id);
    const std::int32_t parent = bones_[i]->parentId;
    if (parent < 0 || static_cast<std::size_t>(parent) >= bones_.size()) continue;
    if (bones_[static_cast<std::size_t>(parent)]) {
      bones_[static_cast<std::size_t>(parent)]->childIds.push_back(id);
    }
  }
}

CalCoreSkeleton::CalCoreSkeleton(const CalCoreSkeleton& other)
    : coreBones(bones_),
      sceneAmbientColor(other.sceneAmbientColor),
      bones_(other.bones_),
      ids_by_name_(other.ids_by_name_) {}

std::int32_t CalCoreSkeleton::getCoreBoneId(const std::string& name) const {
  const auto found = ids_by_name_.find(name);
  return found == ids_by_name_.end() ? -1 : found->second;
}
