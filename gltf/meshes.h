// Meshes of a model as meshes of glTF: one primitive for each submesh that has faces.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "gltf/glb_builder.h"
#include "gltf/materials.h"
#include "gltf/view_model.h"

// A mesh that stands in the file.
struct MeshNode {
  size_t node;
  std::vector<std::string> morphs;  // names of its morph targets, in their order
};

// Adds the meshes, their nodes, and the skin that they hang on where the model has bones. A skinned
// mesh's node has no parent, since no transform above it counts; the others are below node 0.
std::vector<MeshNode> AddMeshes(GlbBuilder& glb, const ViewModel& model,
                                const MaterialTable& materials, ViewNotes& notes);
