// Writes the model's objects to files. A path that ends in .csf, .cmf, .crf, .caf or .cpf, in any
// case, gets the binary form; every other path gets XML text.
//
// A file is written beside its target under a temporary name and renamed over it when it is whole,
// so a failed save leaves what was there before. A number that isn't finite is written as 0, since
// neither form's readers agree on any other spelling.
#pragma once

#include <functional>
#include <string>
#include <variant>

#include "cal3d/model/core_animation.h"
#include "cal3d/model/core_mesh.h"
#include "cal3d/model/core_skeleton.h"

using CalObject = std::variant<const CalCoreSkeleton*, const CalCoreMesh*, const CalCoreMaterial*,
                               const CalCoreAnimation*, const CalCoreMorphAnimation*>;
// Stands between the exporters and the disk, for programs that keep account of what is written or
// write nothing: `write` saves the object as without a gate. What it returns the save returns.
using CalSaveGate = std::function<bool(const std::string& path, const CalObject& object,
                                       const std::function<bool()>& write)>;

// Every operation returns whether the file was written, and says nothing itself. False also for an
// object that no loader would take back: a null pointer in it, or an index out of range.
struct CalSaver {
  static bool saveCoreSkeleton(const std::string& path, const CalCoreSkeleton* skeleton);
  static bool saveCoreMesh(const std::string& path, const CalCoreMesh* mesh);
  static bool saveCoreMaterial(const std::string& path, const CalCoreMaterial* material);
  static bool saveCoreAnimation(const std::string& path, const CalCoreAnimation* animation);
  static bool saveCoreMorphAnimation(const std::string& path,
                                     const CalCoreMorphAnimation* animation);

  // Why the last save that returned false did so, in the system's words ("No space left on device")
  // or ours ("bone 3 is missing"); without the path, which the caller has.
  static const std::string& lastError();

  // All saves pass the gate from now on; an empty one takes it away.
  static void setGate(CalSaveGate gate);
};
