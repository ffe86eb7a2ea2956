// A list of bones, numbered by their place in it. The bones are shared with whoever made them; the
// list itself is fixed by the constructor, which also fills in every bone's list of children.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "cal3d/model/core_bone.h"
#include "cal3d/model/vector.h"

class CalCoreSkeleton {
 public:
  explicit CalCoreSkeleton(const std::vector<boost::shared_ptr<CalCoreBone>>& bones);
  CalCoreSkeleton(const CalCoreSkeleton& other);
  CalCoreSkeleton& operator=(const CalCoreSkeleton&) = delete;

  // The index of the first bone of that name, -1 if there is none.
  std::int32_t getCoreBoneId(const std::string& name) const;

  const std::vector<boost::shared_ptr<CalCoreBone>>& coreBones;
  CalVector sceneAmbientColor;  // components from 0 to 1; 0 where a scene sets none

 private:
  std::vector<boost::shared_ptr<CalCoreBone>> bones_;
  std::unordered_map<std::string, std::int32_t> ids_by_name_;
};
