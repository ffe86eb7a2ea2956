// A skeletal animation: tracks, each of one bone. A bone may have several; the first one counts.
#pragma once

#include <cstdint>
#include <vector>

#include "cal3d/model/core_track.h"

struct CalCoreAnimation {
  // The first track of that bone, null if there is none. It lives as long as the list isn't
  // changed.
  const CalCoreTrack* getCoreTrack(std::int32_t coreBoneId) const {
    for (const CalCoreTrack& track : tracks) {
      if (track.coreBoneId == coreBoneId) return &track;
    }
    return nullptr;
  }

  float duration = 0;  // seconds
  std::vector<CalCoreTrack> tracks;
};
