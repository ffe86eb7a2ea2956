// A glTF 2.0 binary from the files of one model.
#pragma once

#include <string>

#include "gltf/view_model.h"

// The bytes of the .glb; the same input gives the same bytes. `generator` is the program's name and
// version. Whatever doesn't fit together is left out and told in `notes`, and the rest is shown.
// Throws std::runtime_error for a model that the format can't hold.
std::string MakeGlb(const ViewModel& model, const TextureFinder& find, const std::string& generator,
                    ViewNotes& notes);
