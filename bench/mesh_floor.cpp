// What any converter must do at least: read the scene, inflate its arrays, and format the numbers
// of the meshes that come out of it. Takes the scene and the exported meshes, and prints the CPU
// seconds for that and the bytes of the inflated arrays: "<seconds> <bytes>".
//
// The formatted text holds the numbers alone, separated by blanks and line ends, and goes to the
// file named first.
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include <zlib.h>

#include "cal3d/io/loader.h"

namespace {

std::string ReadWhole(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

double CpuSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// Walks the records of a binary file with 32-bit offsets and inflates every array.
class Inflater {
 public:
  explicit Inflater(std::string_view bytes) : bytes_(bytes) {}

  uint64_t Run() {
    constexpr size_t kHeader = 27;
    WalkList(kHeader, bytes_.size());
    return inflated_;
  }

 private:
  template <typename T>
  T Read(size_t at) const {
    T value{};
    if (at + sizeof(T) <= bytes_.size()) std::memcpy(&value, bytes_.data() + at, sizeof(T));
    return value;
  }

  void WalkList(size_t at, size_t end) {
    while (at + 13 <= end) {
      const size_t next = Read<uint32_t>(at);
      if (next <= at) return;  // the record of zeros that ends a list
      const uint32_t values = Read<uint32_t>(at + 4);
      const size_t valueBytes = Read<uint32_t>(at + 8);
      const size_t first = at + 13 + Read<uint8_t>(at + 12);
      ReadValues(first, values);
      WalkList(first + valueBytes, next);
      at = next;
    }
  }

  void ReadValues(size_t at, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
      const char type = Read<char>(at++);
      switch (type) {
        case 'C':
        case 'B':
        case 'Z':
          at += 1;
          break;
        case 'Y':
          at += 2;
          break;
        case 'I':
        case 'F':
          at += 4;
          break;
        case 'L':
        case 'D':
          at += 8;
          break;
        case 'S':
        case 'R':
          at += 4 + Read<uint32_t>(at);
          break;
        default: {
          const size_t size = type == 'd' || type == 'l' ? 8 : type == 'f' || type == 'i' ? 4 : 1;
          const size_t bytes = Read<uint32_t>(at) * size;
          const size_t stored = Read<uint32_t>(at + 8);
          if (Read<uint32_t>(at + 4) == 1) Inflate(at + 12, stored, bytes);
          inflated_ += bytes;
          at += 12 + stored;
        }
      }
    }
  }

  void Inflate(size_t at, size_t stored, size_t bytes) {
    array_.resize(bytes);
    auto length = static_cast<uLongf>(bytes);
    const auto* source = reinterpret_cast<const Bytef*>(bytes_.data() + at);
    if (uncompress(array_.data(), &length, source, static_cast<uLong>(stored)) != Z_OK) {
      std::fprintf(stderr, "mesh_floor: an array is damaged\n");
    }
  }

  std::string_view bytes_;
  std::vector<Bytef> array_;
  uint64_t inflated_ = 0;
};

class Formatter {
 public:
  explicit Formatter(const char* path) : file_(std::fopen(path, "wb")), buffer_(1U << 20U) {}
  ~Formatter() {
    Flush();
    if (file_ != nullptr) std::fclose(file_);
  }
  Formatter(const Formatter&) = delete;
  Formatter& operator=(const Formatter&) = delete;

  template <typename T>
  void Add(T value, char after) {
    if (buffer_.size() - used_ < 64) Flush();
    char* const at = buffer_.data() + used_;
    char* const end = std::to_chars(at, buffer_.data() + buffer_.size(), value).ptr;
    *end = after;
    used_ += static_cast<size_t>(end - at) + 1;
  }

  void AddSubmesh(const CalCoreSubmesh& submesh) {
    const CalCoreSubmesh::Influence* influence = submesh.influences().data();
    for (size_t i = 0; i < submesh.vertices().size(); ++i) {
      const CalCoreSubmesh::Vertex& vertex = submesh.vertices()[i];
      for (const CalVector4& v : {vertex.position, vertex.normal}) {
        Add(v.x, ' ');
        Add(v.y, ' ');
        Add(v.z, '\n');
      }
      const uint32_t color = submesh.vertexColors()[i];
      for (const uint32_t shift : {16U, 8U, 0U}) {
        Add(static_cast<float>((color >> shift) & 0xFFU) / 255.0F, ' ');
      }
      Add(submesh.textureCoordinates()[i].u, ' ');
      Add(submesh.textureCoordinates()[i].v, '\n');
      for (bool isLast = false; !isLast; ++influence) {
        Add(influence->boneId, ' ');
        Add(influence->weight, '\n');
        isLast = influence->lastInfluenceForThisVertex != 0;
      }
    }
    for (const CalCoreSubmesh::Face& face : submesh.faces()) {
      for (const uint16_t vertex : face.vertexId) Add(vertex, ' ');
    }
  }

 private:
  void Flush() {
    if (file_ != nullptr) std::fwrite(buffer_.data(), 1, used_, file_);
    used_ = 0;
  }

  std::FILE* file_;
  std::vector<char> buffer_;
  size_t used_ = 0;
};

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
  std::string scene;
  if (std::FILE* file = std::fopen(argv[2], "rb")) {
    std::fseek(file, 0, SEEK_END);
    scene.resize(static_cast<size_t>(std::ftell(file)));
    std::rewind(file);
    if (std::fread(scene.data(), 1, scene.size(), file) != scene.size()) scene.clear();
    std::fclose(file);
  }
  const uint64_t inflated = Inflater(scene).Run();
  {
    Formatter formatter(argv[1]);
    for (const auto& mesh : meshes) {
      for (const auto& submesh : mesh->submeshes) formatter.AddSubmesh(*submesh);
    }
  }
  std::printf("%.3f %llu\n", CpuSeconds() - start, static_cast<unsigned long long>(inflated));
  return 0;
}
