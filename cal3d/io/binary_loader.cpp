#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>

#include "cal3d/io/file_format.h"
#include "cal3d/io/forms.h"
#include "cal3d/io/model_check.h"

namespace {

// The versions from which on a field is there.
constexpr int32_t kVertexColors = 910;
constexpr int32_t kLights = 911;
constexpr int32_t kMapTypes = 914;
constexpr int32_t kMorphs = 919;

// The least bytes of the records that vary in size.
constexpr uint64_t kInt = 4;
constexpr uint64_t kFloat = 4;
constexpr uint64_t kString = 5;
constexpr uint64_t kVector = 3 * kFloat;
constexpr uint64_t kQuaternion = 4 * kFloat;
constexpr uint64_t kFace = 3 * kInt;
constexpr uint64_t kInfluence = kInt + kFloat;
constexpr uint64_t kSpring = 2 * kInt + 2 * kFloat;
constexpr uint64_t kBlendVertex = kInt + 2 * kVector;
constexpr uint64_t kKeyframe = kFloat + kVector + kQuaternion;
constexpr uint64_t kMorphKeyframe = 2 * kFloat;

int32_t ReadVersion(CalBufferSource& source) { return CheckedVersion(source.ReadInt()); }

CalVector ReadVector(CalBufferSource& source) {
  // One statement each: arguments may be evaluated in any order.
  CalVector v;
  v.x = source.ReadFloat();
  v.y = source.ReadFloat();
  v.z = source.ReadFloat();
  return v;
}

CalQuaternion ReadQuaternion(CalBufferSource& source) {
  const CalVector axis = ReadVector(source);
  return {axis.x, axis.y, axis.z, source.ReadFloat()};
}

CalCoreSubmesh::Vertex ReadVertex(CalBufferSource& source) {
  const CalVector position = ReadVector(source);
  const CalVector normal = ReadVector(source);
  return {{position.x, position.y, position.z, 1}, normal.asCalVector4()};
}

// The numbers at the head of a submesh, which tell how large the records behind it are.
struct SubmeshHead {
  explicit SubmeshHead(CalBufferSource& source, int32_t fileVersion)
      : version(fileVersion),
        material(source.ReadInt()),
        vertices(source.ReadInt()),
        faces(source.ReadInt()),
        levelsOfDetail(source.ReadInt()),
        springs(source.ReadInt()),
        coordinateSets(source.ReadInt()),
        morphs(version >= kMorphs ? source.ReadInt() : 0) {
    source.CheckCount(springs, kSpring, "springs");
    // Sets of no vertices take no bytes, so that only the size of a vertex bounds them.
    if (coordinateSets < 0) throw std::runtime_error("negative count of texture coordinate sets");
    source.CheckCount(vertices, VertexSize(), "vertices");
    source.CheckCount(faces, kFace, "faces");
    source.CheckCount(morphs, kString + kInt, "morphs");
  }

  uint64_t VertexSize() const {
    return 2 * kVector + (version >= kVertexColors ? kVector : 0) + 2 * kInt +
           2 * kFloat * static_cast<uint64_t>(coordinateSets) + kInt + (springs > 0 ? kFloat : 0);
  }

  static uint64_t MinimumSize(int32_t version) { return (version >= kMorphs ? 7 : 6) * kInt; }

  int32_t version;
  int32_t material;
  int32_t vertices;
  int32_t faces;
  int32_t levelsOfDetail;
  int32_t springs;
  int32_t coordinateSets;
  int32_t morphs;
};

void ReadVertices(CalBufferSource& source, const SubmeshHead& head, CalCoreSubmesh& submesh) {
  std::vector<CalCoreSubmesh::Influence> influences;
  for (int32_t i = 0; i < head.vertices; ++i) {
    const CalCoreSubmesh::Vertex vertex = ReadVertex(source);
    const uint32_t color = head.version >= kVertexColors ? ColorWord(ReadVector(source)) : kWhite;
    source.ReadInt();  // collapse id
    source.ReadInt();  // collapsed faces
    CalCoreSubmesh::TextureCoordinate coordinate;
    if (head.coordinateSets > 0) {
      coordinate.u = source.ReadFloat();
      coordinate.v = source.ReadFloat();
      source.ReadBytes(static_cast<size_t>(head.coordinateSets - 1) * 2 * kFloat);
    }
    influences.clear();
    for (int32_t n = source.ReadCount(kInfluence, "influences"); n > 0; --n) {
      const int32_t bone = CheckedBoneId(source.ReadInt());
      influences.push_back({bone, source.ReadFloat(), 0});
    }
    if (head.springs > 0) source.ReadFloat();  // the vertex's weight in its springs
    submesh.addVertex(vertex, color, influences);
    submesh.setTextureCoordinate(i, coordinate);
  }
}

boost::shared_ptr<CalCoreMorphTarget> ReadMorph(CalBufferSource& source,
                                                const CalCoreSubmesh& submesh) {
  const int32_t vertices = static_cast<int32_t>(submesh.vertices().size());
  std::string name = source.ReadString();
  const int32_t count = source.ReadCount(kBlendVertex, "blend vertices");
  cal3d::SSEArray<VertexOffset> offsets;
  offsets.reserve(static_cast<uint32_t>(count));
  for (int32_t i = 0; i < count; ++i) {
    const int32_t id = CheckedVertexId(source.ReadInt(), vertices);
    const CalVector position = ReadVector(source);
    offsets.push_back(LoadedOffset(submesh, id, position, ReadVector(source)));
  }
  return boost::make_shared<CalCoreMorphTarget>(std::move(name), vertices, offsets);
}

boost::shared_ptr<CalCoreSubmesh> ReadSubmesh(CalBufferSource& source, int32_t version) {
  const SubmeshHead head(source, version);
  auto submesh =
      boost::make_shared<CalCoreSubmesh>(head.vertices, head.coordinateSets > 0, head.faces);
  submesh->coreMaterialThreadId = head.material;
  ReadVertices(source, head, *submesh);
  source.ReadBytes(static_cast<size_t>(head.springs) * kSpring);
  for (int32_t i = 0; i < head.morphs; ++i) {
    submesh->addMorphTarget(ReadMorph(source, *submesh));
  }
  for (int32_t i = 0; i < head.faces; ++i) {
    int32_t vertices[3];
    for (int32_t& vertex : vertices) vertex = source.ReadInt();
    submesh->addFace(CheckedFace(vertices, head.vertices));
  }
  return submesh;
}

}  // namespace

boost::shared_ptr<CalCoreSkeleton> ReadBinarySkeleton(CalBufferSource& source) {
  const int32_t version = ReadVersion(source);
  const bool hasLights = version >= kLights;
  const uint64_t boneSize =
      kString + 2 * (kVector + kQuaternion) + kInt + (hasLights ? kInt + kVector : 0) + kInt;
  const int32_t count = source.ReadInt();
  const CalVector ambient = hasLights ? ReadVector(source) : CalVector();
  source.CheckCount(count, boneSize, "bones");
  LoadedSkeleton loaded;
  for (int32_t i = 0; i < count; ++i) {
    std::string name = source.ReadString();
    const CalVector translation = ReadVector(source);
    const CalQuaternion rotation = ReadQuaternion(source);
    const CalVector boneSpaceTranslation = ReadVector(source);
    const CalQuaternion boneSpaceRotation = ReadQuaternion(source);
    auto bone = boost::make_shared<CalCoreBone>(std::move(name), source.ReadInt());
    bone->relativeTranslation = translation;
    bone->relativeRotation = rotation;
    bone->boneSpaceTranslation = boneSpaceTranslation;
    bone->boneSpaceRotation = boneSpaceRotation;
    if (hasLights) {
      bone->lightType = static_cast<CalLightType>(source.ReadInt());
      bone->lightColor = ReadVector(source);
    }
    loaded.bones.push_back(bone);
    for (int32_t n = source.ReadCount(kInt, "children"); n > 0; --n) {
      loaded.children.push_back({i, source.ReadInt()});
    }
  }
  return loaded.Finish(ambient);
}

boost::shared_ptr<CalCoreMesh> ReadBinaryMesh(CalBufferSource& source) {
  const int32_t version = ReadVersion(source);
  const int32_t count = source.ReadCount(SubmeshHead::MinimumSize(version), "submeshes");
  auto mesh = boost::make_shared<CalCoreMesh>();
  for (int32_t i = 0; i < count; ++i) {
    mesh->submeshes.push_back(ReadSubmesh(source, version));
  }
  return mesh;
}

boost::shared_ptr<CalCoreAnimation> ReadBinaryAnimation(CalBufferSource& source) {
  ReadVersion(source);
  auto animation = boost::make_shared<CalCoreAnimation>();
  animation->duration = source.ReadFloat();
  const int32_t tracks = source.ReadCount(2 * kInt, "tracks");
  animation->tracks.reserve(static_cast<size_t>(tracks));
  for (int32_t i = 0; i < tracks; ++i) {
    const int32_t bone = CheckedBoneId(source.ReadInt());
    const int32_t count = source.ReadCount(kKeyframe, "keyframes");
    std::vector<CalCoreKeyframe> keyframes(static_cast<size_t>(count));
    for (CalCoreKeyframe& keyframe : keyframes) {
      keyframe.time = source.ReadFloat();
      keyframe.translation = ReadVector(source);
      keyframe.rotation = ReadQuaternion(source);
    }
    animation->tracks.emplace_back(bone, keyframes);
  }
  return animation;
}

boost::shared_ptr<CalCoreMaterial> ReadBinaryMaterial(CalBufferSource& source) {
  const bool hasTypes = ReadVersion(source) >= kMapTypes;
  constexpr size_t kColors = 3 * 4;  // ambient, diffuse and specular, which the model has not
  source.ReadBytes(kColors + kFloat);
  auto material = boost::make_shared<CalCoreMaterial>();
  for (int32_t n = source.ReadCount((hasTypes ? 2 : 1) * kString, "maps"); n > 0; --n) {
    CalCoreMaterial::Map& map = material->maps.emplace_back();
    map.filename = source.ReadString();
    if (hasTypes) map.type = source.ReadString();
  }
  return material;
}

boost::shared_ptr<CalCoreMorphAnimation> ReadBinaryMorphAnimation(CalBufferSource& source) {
  ReadVersion(source);
  auto animation = boost::make_shared<CalCoreMorphAnimation>();
  animation->duration = source.ReadFloat();
  for (int32_t tracks = source.ReadCount(kString + kInt, "tracks"); tracks > 0; --tracks) {
    CalCoreMorphTrack& track = animation->tracks.emplace_back();
    track.morphName = source.ReadString();
    for (int32_t n = source.ReadCount(kMorphKeyframe, "keyframes"); n > 0; --n) {
      const float time = source.ReadFloat();
      track.addCoreMorphKeyframe({time, source.ReadFloat()});
    }
  }
  return animation;
}
