// Animations of a model as animations of glTF.
#pragma once

#include <vector>

#include "gltf/glb_builder.h"
#include "gltf/meshes.h"
#include "gltf/view_model.h"

// Adds one animation for each of the model's that moves something. An animation that begins before
// time 0 is shifted to begin there, since glTF knows no earlier times; its extras tell the start.
void AddAnimations(GlbBuilder& glb, const ViewModel& model, const std::vector<MeshNode>& meshes,
                   ViewNotes& notes);
