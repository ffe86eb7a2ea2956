// What any converter must do at least: read the scene, inflate its arrays, and format the numbers
// of the meshes that come out of it. Takes the scene and the exported meshes, and prints the CPU
// seconds for that and the bytes of the inflated arrays: "<seconds> <bytes>".
//
// The formatted text holds the numbers alone, separated by blanks and line ends, and goes to the
// file named first.
#include <cstdio>
#include <string>
#include <vector>

#include "bench/floor.h"
#include "cal3d/io/loader.h"

namespace {

void AddSubmesh(Formatter& formatter, const CalCoreSubmesh& submesh) {
  const CalCoreSubmesh::Influence* influence = submesh.influences().data();
  for (size_t i = 0; i < submesh.vertices().size(); ++i) {
    const CalCoreSubmesh::Vertex& vertex = submesh.vertices()[i];
    for (const CalVector4& v : {vertex.position, vertex.normal}) {
      formatter.Add(v.x, ' ');
      formatter.Add(v.y, ' ');
      formatter.Add(v.z, '\n');
    }
    const uint32_t color = submesh.vertexColors()[i];
    for (const uint32_t shift : {16U, 8U, 0U}) {
      formatter.Add(static_cast<float>((color >> shift) & 0xFFU) / 255.0F, ' ');
    }
    formatter.Add(submesh.textureCoordinates()[i].u, ' ');
    formatter.Add(submesh.textureCoordinates()[i].v, '\n');
    for (bool isLast = false; !isLast; ++influence) {
      formatter.Add(influence->boneId, ' ');
      formatter.Add(influence->weight, '\n');
      isLast = influence->lastInfluenceForThisVertex != 0;
    }
  }
  for (const CalCoreSubmesh::Face& face : submesh.faces()) {
    for (const uint16_t vertex : face.vertexId) formatter.Add(vertex, ' ');
  }
  for (const auto& target : submesh.morphTargets()) {
    for (const VertexOffset& offset : target->vertexOffsets()) {
      formatter.Add(offset.vertexId, '\n');
      for (const CalVector4& v : {offset.position, offset.normal}) {
        formatter.Add(v.x, ' ');
        formatter.Add(v.y, ' ');
        formatter.Add(v.z, '\n');
      }
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: mesh_floor OUTPUT SCENE MESH...\n");
    return 2;
  }
  std::vector<boost::shared_ptr<CalCoreMesh>> meshes;
  for (int i = 3; i < argc; ++i) {
    const std::string text = ReadWhole(argv[i]);
    meshes.push_back(CalLoader::loadCoreMesh(CalBufferSource(text.data(), text.size())));
  }

  const double start = CpuSeconds();
  const std::string scene = ReadScene(argv[2]);
  const uint64_t inflated = Inflater(scene).Run();
  {
    Formatter formatter(argv[1]);
    for (const auto& mesh : meshes) {
      for (const auto& submesh : mesh->submeshes) AddSubmesh(formatter, *submesh);
    }
  }
  std::printf("%.3f %llu\n", CpuSeconds() - start, static_cast<unsigned long long>(inflated));
  return 0;
}
