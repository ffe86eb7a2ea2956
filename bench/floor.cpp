// What any converter must do at least: read the scene, inflate its arrays or parse its numbers, and
// write what comes out of it.
//
//   floor OUTPUT SCENE RESULT...
//
// A result is an exported mesh or animation, whose numbers are formatted into OUTPUT, separated by
// blanks and line ends, or a listing, which is copied there. Prints the CPU seconds for that and
// the bytes of the scene's arrays: "<seconds> <bytes>". Results are loaded before the clock starts.
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <zlib.h>

#include "cal3d/io/loader.h"

namespace {

std::string ReadWhole(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

double CpuSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// Reads a file in one piece, as fast as it can be; empty if it can't.
std::string ReadScene(const char* path) {
  std::string scene;
  if (std::FILE* file = std::fopen(path, "rb")) {
    std::fseek(file, 0, SEEK_END);
    scene.resize(static_cast<size_t>(std::ftell(file)));
    std::rewind(file);
    if (std::fread(scene.data(), 1, scene.size(), file) != scene.size()) scene.clear();
    std::fclose(file);
  }
  return scene;
}

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
      std::fprintf(stderr, "floor: an array is damaged\n");
    }
  }

  std::string_view bytes_;
  std::vector<Bytef> array_;
  uint64_t inflated_ = 0;
};

// Parses every number that a text file holds outside of names and quoted texts, and returns the
// bytes that they would have as doubles.
uint64_t ParseNumbers(std::string_view text) {
  std::vector<double> numbers;
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at < end) {
    double number = 0;
    const auto [after, error] = std::from_chars(at, end, number);
    if (error == std::errc()) {
      numbers.push_back(number);
      at = after;
    } else {
      // A number begins behind a separator; the rest of a word is no number's.
      while (at < end && *at != ',' && *at != ' ' && *at != '\n') ++at;
    }
    if (at < end) ++at;
  }
  return numbers.size() * sizeof(double);
}

// Writes numbers to a file, each with a character behind it.
class Formatter {
 public:
  explicit Formatter(const char* path) : file_(std::fopen(path, "wb")), buffer_(1U << 20U) {}
  ~Formatter() {
    Flush();
    if (file_ != nullptr) std::fclose(file_);
  }
  Formatter(const Formatter&) = delete;
  Formatter& operator=(const Formatter&) = delete;

  void AddText(std::string_view text) {
    Flush();
    if (file_ != nullptr) std::fwrite(text.data(), 1, text.size(), file_);
  }

  template <typename T>
  void Add(T value, char after) {
    if (buffer_.size() - used_ < 64) Flush();
    char* const at = buffer_.data() + used_;
    char* const end = std::to_chars(at, buffer_.data() + buffer_.size(), value).ptr;
    *end = after;
    used_ += static_cast<size_t>(end - at) + 1;
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

void AddAnimation(Formatter& formatter, const CalCoreAnimation& animation) {
  for (const CalCoreTrack& track : animation.tracks) {
    formatter.Add(track.coreBoneId, '\n');
    for (const CalCoreKeyframe& keyframe : track.keyframes) {
      formatter.Add(keyframe.time, '\n');
      formatter.Add(keyframe.translation.x, ' ');
      formatter.Add(keyframe.translation.y, ' ');
      formatter.Add(keyframe.translation.z, '\n');
      formatter.Add(keyframe.rotation.x, ' ');
      formatter.Add(keyframe.rotation.y, ' ');
      formatter.Add(keyframe.rotation.z, ' ');
      formatter.Add(keyframe.rotation.w, '\n');
    }
  }
}

// What the export of a scene gave, ready to be written.
struct Results {
  std::vector<boost::shared_ptr<CalCoreMesh>> meshes;
  std::vector<boost::shared_ptr<CalCoreAnimation>> animations;
  std::vector<std::string> listings;

  void Load(std::string_view path) {
    std::string text = ReadWhole(std::string(path).c_str());
    const CalBufferSource source(text.data(), text.size());
    if (path.ends_with(".xmf")) {
      meshes.push_back(CalLoader::loadCoreMesh(source));
    } else if (path.ends_with(".xaf")) {
      animations.push_back(CalLoader::loadCoreAnimation(source));
    } else {
      listings.push_back(std::move(text));
    }
  }

  void Write(Formatter& formatter) const {
    for (const auto& mesh : meshes) {
      for (const auto& submesh : mesh->submeshes) AddSubmesh(formatter, *submesh);
    }
    for (const auto& animation : animations) AddAnimation(formatter, *animation);
    for (const std::string& listing : listings) formatter.AddText(listing);
  }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: floor OUTPUT SCENE RESULT...\n");
    return 2;
  }
  Results results;
  for (int i = 3; i < argc; ++i) results.Load(argv[i]);

  const double start = CpuSeconds();
  const std::string scene = ReadScene(argv[2]);
  const bool isText = scene.starts_with(';');
  const uint64_t bytes = isText ? ParseNumbers(scene) : Inflater(scene).Run();
  {
    Formatter formatter(argv[1]);
    results.Write(formatter);
  }
  std::printf("%.6f %llu\n", CpuSeconds() - start, static_cast<unsigned long long>(bytes));
  return 0;
}
