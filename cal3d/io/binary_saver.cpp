#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "cal3d/io/file_format.h"
#include "cal3d/io/forms.h"

namespace {

// The primitives of the format over an output file.
class BinaryWriter {
 public:
  BinaryWriter(OutputFile& file, std::string_view magic) : file_(file) {
    file_.Append(magic);
    Int(kFileVersion);
  }

  void Int(int32_t value) {
    char* at = file_.Room();
    const uint32_t bits = static_cast<uint32_t>(value);
    for (int shift = 0; shift < 32; shift += 8) *at++ = static_cast<char>(bits >> shift & 0xFF);
    file_.Advance(at);
  }
  void Count(size_t count) { Int(static_cast<int32_t>(count)); }
  void Float(float value) { Int(std::bit_cast<int32_t>(FiniteOrZero(value))); }
  void Floats(float x, float y, float z) {
    Float(x);
    Float(y);
    Float(z);
  }
  void Vector(const CalVector& v) { Floats(v.x, v.y, v.z); }
  void Quaternion(const CalQuaternion& q) {
    Floats(q.x, q.y, q.z);
    Float(q.w);
  }
  void String(std::string_view text) {
    Count(text.size() + 1);
    file_.Append(text);
    file_.Append(std::string_view("\0", 1));
  }
  void Bytes(std::string_view bytes) { file_.Append(bytes); }

 private:
  OutputFile& file_;
};

void Vertices(BinaryWriter& out, const CalCoreSubmesh& submesh) {
  const CalCoreSubmesh::Influence* influence = submesh.influences().data();
  for (uint32_t i = 0; i < submesh.vertices().size(); ++i) {
    const CalCoreSubmesh::Vertex& vertex = submesh.vertices()[i];
    out.Floats(vertex.position.x, vertex.position.y, vertex.position.z);
    out.Floats(vertex.normal.x, vertex.normal.y, vertex.normal.z);
    out.Vector(ColorComponents(submesh.vertexColors()[i]));
    out.Int(-1);  // collapses into no vertex: we have no levels of detail
    out.Int(0);
    if (submesh.hasTextureCoordinates()) {
      out.Float(submesh.textureCoordinates()[i].u);
      out.Float(submesh.textureCoordinates()[i].v);
    }
    const CalCoreSubmesh::Influence* last = influence;
    while (last->lastInfluenceForThisVertex == 0) ++last;
    const bool hasInfluences = influence->boneId >= 0;
    out.Count(hasInfluences ? static_cast<size_t>(last - influence) + 1 : 0);
    for (; influence <= last; ++influence) {
      if (!hasInfluences) continue;
      out.Int(influence->boneId);
      out.Float(influence->weight);
    }
  }
}

void Morph(BinaryWriter& out, const CalCoreSubmesh& submesh, const CalCoreMorphTarget& target) {
  out.String(target.name());
  out.Count(target.vertexOffsets().size());
  for (const VertexOffset& offset : target.vertexOffsets()) {
    const CalVector4& base = submesh.vertices()[static_cast<size_t>(offset.vertexId)].position;
    out.Int(offset.vertexId);
    out.Floats(MorphedPosition(base.x, offset.position.x),
               MorphedPosition(base.y, offset.position.y),
               MorphedPosition(base.z, offset.position.z));
    out.Floats(offset.normal.x, offset.normal.y, offset.normal.z);
  }
}

void Submesh(BinaryWriter& out, const CalCoreSubmesh& submesh) {
  out.Int(submesh.coreMaterialThreadId);
  out.Count(submesh.vertices().size());
  out.Count(submesh.faces().size());
  out.Int(0);  // levels of detail
  out.Int(0);  // springs
  out.Int(submesh.hasTextureCoordinates() ? 1 : 0);
  out.Count(submesh.morphTargets().size());
  Vertices(out, submesh);
  for (const auto& target : submesh.morphTargets()) Morph(out, submesh, *target);
  for (const CalCoreSubmesh::Face& face : submesh.faces()) {
    for (const uint16_t vertex : face.vertexId) out.Int(vertex);
  }
}

}  // namespace

void WriteBinary(OutputFile& file, const CalCoreSkeleton& skeleton) {
  BinaryWriter out(file, kSkeletonFile.binaryMagic);
  out.Count(skeleton.coreBones.size());
  out.Vector(skeleton.sceneAmbientColor);
  for (const auto& bone : skeleton.coreBones) {
    out.String(bone->name);
    out.Vector(bone->relativeTranslation);
    out.Quaternion(bone->relativeRotation);
    out.Vector(bone->boneSpaceTranslation);
    out.Quaternion(bone->boneSpaceRotation);
    out.Int(bone->parentId);
    out.Int(static_cast<int32_t>(bone->lightType));
    out.Vector(bone->lightType == CalLightType::kNone ? CalVector() : bone->lightColor);
    out.Count(bone->childIds.size());
    for (const int32_t child : bone->childIds) out.Int(child);
  }
}

void WriteBinary(OutputFile& file, const CalCoreMesh& mesh) {
  BinaryWriter out(file, kMeshFile.binaryMagic);
  out.Count(mesh.submeshes.size());
  for (const auto& submesh : mesh.submeshes) Submesh(out, *submesh);
}

void WriteBinary(OutputFile& file, const CalCoreMaterial& material) {
  BinaryWriter out(file, kMaterialFile.binaryMagic);
  // Ambient, diffuse and specular colour, then the shininess, as in the text form.
  out.Bytes("\xFF\xFF\xFF\xFF");
  out.Bytes("\xFF\xFF\xFF\xFF");
  out.Bytes(std::string_view("\0\0\0\0", 4));
  out.Float(0);
  out.Count(material.maps.size());
  for (const CalCoreMaterial::Map& map : material.maps) {
    out.String(map.filename);
    out.String(map.type);
  }
}

void WriteBinary(OutputFile& file, const CalCoreAnimation& animation) {
  BinaryWriter out(file, kAnimationFile.binaryMagic);
  out.Float(animation.duration);
  out.Count(animation.tracks.size());
  for (const CalCoreTrack& track : animation.tracks) {
    out.Int(track.coreBoneId);
    out.Count(track.keyframes.size());
    for (const CalCoreKeyframe& keyframe : track.keyframes) {
      out.Float(keyframe.time);
      out.Vector(keyframe.translation);
      out.Quaternion(keyframe.rotation);
    }
  }
}

void WriteBinary(OutputFile& file, const CalCoreMorphAnimation& animation) {
  BinaryWriter out(file, kMorphAnimationFile.binaryMagic);
  out.Float(animation.duration);
  out.Count(animation.tracks.size());
  for (const CalCoreMorphTrack& track : animation.tracks) {
    out.String(track.morphName);
    out.Count(track.keyframes.size());
    for (const CalCoreMorphKeyframe& keyframe : track.keyframes) {
      out.Float(keyframe.time);
      out.Float(keyframe.weight);
    }
  }
}
