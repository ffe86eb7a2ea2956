// Imports a block as a scene file, and walks what was read as exporters do: transforms with and
// without animation, corners of meshes, skins, shapes, poses, textures.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "fbx/anim/fbx_animation.h"
#include "fbx/core/fbx_object.h"
#include "fbx/reader/fbx_importer.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

namespace {

// Calls `visit` on all objects of a class.
template <typename T, typename Visit>
void ForEach(const FbxScene& scene, const Visit& visit) {
  const int count = scene.GetSrcObjectCount<T>();
  for (int i = 0; i < count; ++i) visit(*scene.GetSrcObject<T>(i));
}

void Evaluate(const FbxScene& scene, FbxTime time) {
  ForEach<FbxNode>(scene, [&](const FbxNode& node) {
    node.EvaluateGlobalTransform(time);
    node.EvaluateLocalTransform(time);
    node.EvaluateLocalRotation(time);
  });
}

void WalkNode(const FbxScene& scene, const FbxNode& node) {
  if (node.GetParent() == &node) std::abort();
  node.GetMesh();
  node.GetLight();
  for (int i = 0; i < node.GetMaterialCount(); ++i) {
    node.GetMaterial(i)->FindProperty("DiffuseColor").GetSrcObject<FbxTexture>();
  }
  std::vector<FbxPose*> poses;
  std::vector<int> indices;
  FbxPose::GetBindPoseContaining(&scene, &node, poses, indices);
  for (size_t i = 0; i < poses.size(); ++i) {
    if (poses[i]->GetNode(indices[i]) != &node) std::abort();
    poses[i]->GetMatrix(indices[i]);
  }
}

void WalkMesh(const FbxMesh& mesh) {
  for (int polygon = 0; polygon < mesh.GetPolygonCount(); ++polygon) {
    for (int corner = 0; corner < mesh.GetPolygonSize(polygon); ++corner) {
      FbxVector4 normal;
      FbxVector2 uv;
      bool unmapped = false;
      mesh.GetControlPointAt(mesh.GetPolygonVertex(polygon, corner));
      mesh.GetPolygonVertexNormal(polygon, corner, normal);
      mesh.GetPolygonVertexUV(polygon, corner, "map1", uv, unmapped);
    }
  }
  mesh.GetShapeCount();
  if (const FbxDeformer* skin = mesh.GetDeformer(0, FbxDeformer::eSkin)) {
    for (int i = 0; i < static_cast<const FbxSkin*>(skin)->GetClusterCount(); ++i) {
      const FbxCluster& cluster = *static_cast<const FbxSkin*>(skin)->GetCluster(i);
      if (cluster.indices.size() != cluster.weights.size()) std::abort();
      cluster.GetLink();
    }
  }
}

void WalkShape(const FbxShape& shape) {
  const FbxGeometry* base = shape.GetBaseGeometry();
  if (base != nullptr && !shape.Indices().empty() &&
      shape.GetControlPointsCount() != base->GetControlPointsCount()) {
    std::abort();
  }
  shape.GetElementNormal();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FbxManager* manager = FbxManager::Create();
  FbxImporter* importer = FbxImporter::Create(manager, "");
  FbxScene* scene = FbxScene::Create(manager, "");
  const bool isLoaded =
      importer->InitializeFromMemory({reinterpret_cast<const char*>(data), size}) &&
      importer->Import(scene);
  if (isLoaded == importer->GetStatus().Error()) std::abort();
  importer->Destroy();

  Evaluate(*scene, FbxTime::Infinite());
  if (auto* stack = scene->GetSrcObject<FbxAnimStack>()) {
    scene->SetCurrentAnimationStack(stack);
    Evaluate(*scene, FbxTime(FbxTime::kTicksPerSecond / 2));
  }
  ForEach<FbxNode>(*scene, [&](const FbxNode& node) { WalkNode(*scene, node); });
  ForEach<FbxMesh>(*scene, WalkMesh);
  ForEach<FbxShape>(*scene, WalkShape);
  manager->Destroy();
  return 0;
}
