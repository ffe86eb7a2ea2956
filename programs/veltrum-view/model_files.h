// The files that the command line names, found and loaded.
#pragma once

#include <string>
#include <vector>

#include "gltf/view_model.h"

struct LoadedModel {
  ViewModel model;
  ViewNotes notes;
  // One line for each file that can't be used.
  std::vector<std::string> errors;
};

// Loads the files, and those that lie in the folders, in the order of their names. A file that
// can't be used is told in `errors`; the rest is taken all the same. Materials get their numbers
// from the manifest (.json) among the files; without one, from their order.
LoadedModel LoadModel(const std::vector<std::string>& paths);
