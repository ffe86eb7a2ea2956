// One mesh of the scene, under the name and the path that every mesh exporter knows it by. The
// scene's wrapper owns the holders in a map by name; all lists of meshes point into that map.
#pragma once

#include <map>
#include <string>

class FbxMesh;
class FbxNode;

struct MeshHolder_ {
  FbxMesh* mesh = nullptr;          // the scene's
  FbxNode* node = nullptr;          // the node that carries it, the scene's
  std::string path;                 // of the node, from the scene's root down
  std::string name;                 // the node's name, made unique in the scene
  FbxNode* skeletonRoot = nullptr;  // of the first skeleton that the mesh was found on
  // By material slot of the node, from texture channel to file name; filled when first asked for.
  std::map<int, std::map<std::string, std::string>> materialMaps;
};
