#include "gltf/glb_export.h"

#include <utility>
#include <vector>

#include "gltf/animations.h"
#include "gltf/glb_builder.h"
#include "gltf/materials.h"
#include "gltf/meshes.h"
#include "gltf/skeleton_nodes.h"

std::string MakeGlb(const ViewModel& model, const TextureFinder& find, const std::string& generator,
                    ViewNotes& notes) {
  GlbBuilder glb;
  glb["asset"] = {{"version", "2.0"}, {"generator", generator}, {"extras", {{"upAxis", "z"}}}};
  glb["scene"] = 0;
  AddSkeleton(glb, model);
  const MaterialTable materials(glb, model, find, notes);
  const std::vector<MeshNode> meshes = AddMeshes(glb, model, materials, notes);
  AddAnimations(glb, model, meshes, notes);

  Json roots = {0};
  for (const MeshNode& mesh : meshes) {
    if (glb.At("nodes", mesh.node).contains("skin")) roots.push_back(mesh.node);
  }
  Json scene = {{"nodes", std::move(roots)}};
  if (!model.name.empty()) scene["name"] = model.name;
  glb.Add("scenes", std::move(scene));
  return glb.Finish();
}
