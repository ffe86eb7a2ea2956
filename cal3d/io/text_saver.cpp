#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cal3d/io/file_format.h"
#include "cal3d/io/forms.h"
#include "cal3d/io/xml_writer.h"

namespace {

int32_t Count(size_t count) { return static_cast<int32_t>(count); }

void StartRoot(XmlWriter& xml, const CalFileKind& kind) {
  xml.Start(kind.root);
  xml.Attribute("MAGIC", kind.magic);
  xml.Attribute("VERSION", kFileVersion);
}

void Vector(XmlWriter& xml, std::string_view name, const CalVector& v) {
  xml.Element(name, {v.x, v.y, v.z});
}

void Quaternion(XmlWriter& xml, std::string_view name, const CalQuaternion& q) {
  xml.Element(name, {q.x, q.y, q.z, q.w});
}

void Bone(XmlWriter& xml, int32_t id, const CalCoreBone& bone) {
  xml.Start("BONE");
  xml.Attribute("ID", id);
  xml.Attribute("NAME", bone.name);
  xml.Attribute("NUMCHILDS", Count(bone.childIds.size()));
  if (bone.lightType != CalLightType::kNone) {
    xml.Attribute("LIGHTTYPE", static_cast<int32_t>(bone.lightType));
    xml.Attribute("LIGHTCOLOR", {bone.lightColor.x, bone.lightColor.y, bone.lightColor.z});
  }
  xml.OpenChildren();
  Vector(xml, "TRANSLATION", bone.relativeTranslation);
  Quaternion(xml, "ROTATION", bone.relativeRotation);
  Vector(xml, "LOCALTRANSLATION", bone.boneSpaceTranslation);
  Quaternion(xml, "LOCALROTATION", bone.boneSpaceRotation);
  xml.Element("PARENTID", {bone.parentId});
  for (const int32_t child : bone.childIds) xml.Element("CHILDID", {child});
  xml.End("BONE");
}

// Writes the vertices. `influence` walks over the runs of all of them.
void Vertices(XmlWriter& xml, const CalCoreSubmesh& submesh) {
  const CalCoreSubmesh::Influence* influence = submesh.influences().data();
  for (uint32_t i = 0; i < submesh.vertices().size(); ++i) {
    const CalCoreSubmesh::Influence* last = influence;
    while (last->lastInfluenceForThisVertex == 0) ++last;
    const bool hasInfluences = influence->boneId >= 0;
    xml.Start("VERTEX");
    xml.Attribute("ID", static_cast<int32_t>(i));
    xml.Attribute("NUMINFLUENCES",
                  hasInfluences ? Count(static_cast<size_t>(last - influence)) + 1 : 0);
    xml.OpenChildren();
    const CalCoreSubmesh::Vertex& vertex = submesh.vertices()[i];
    xml.Element("POS", {vertex.position.x, vertex.position.y, vertex.position.z});
    xml.Element("NORM", {vertex.normal.x, vertex.normal.y, vertex.normal.z});
    Vector(xml, "COLOR", ColorComponents(submesh.vertexColors()[i]));
    if (submesh.hasTextureCoordinates()) {
      const CalCoreSubmesh::TextureCoordinate& coordinate = submesh.textureCoordinates()[i];
      xml.Element("TEXCOORD", {coordinate.u, coordinate.v});
    }
    for (; influence <= last; ++influence) {
      if (!hasInfluences) continue;
      xml.Start("INFLUENCE");
      xml.Attribute("ID", influence->boneId);
      xml.EndWith(influence->weight, "INFLUENCE");
    }
    xml.End("VERTEX");
  }
}

// The texture coordinates of a submesh's vertices as text. Each target writes those of the vertices
// that it moves; with 50 targets, making each text once saves a twelfth of a mesh's export.
class CoordinateTexts {
 public:
  // There must be a coordinate for each vertex.
  explicit CoordinateTexts(const CalCoreSubmesh& submesh)
      : coordinates_(submesh.textureCoordinates()) {}

  // Valid until the next call.
  std::string_view Of(size_t vertex) {
    if (places_.empty()) places_.resize(coordinates_.size(), 0);
    size_t& place = places_[vertex];
    if (place == 0) {
      std::array<char, 2 * kLongestNumber + 1> text;
      char* end = WriteNumber(text.data(), coordinates_[vertex].u);
      *end++ = ' ';
      end = WriteNumber(end, coordinates_[vertex].v);
      place = texts_.size();
      texts_ += static_cast<char>(end - text.data());
      texts_.append(text.data(), end);
    }
    return {texts_.data() + place + 1, static_cast<size_t>(texts_[place])};
  }

 private:
  const std::vector<CalCoreSubmesh::TextureCoordinate>& coordinates_;
  std::vector<size_t> places_;  // of the texts, by vertex; 0 for none yet
  std::string texts_ = " ";     // behind each one's length
};

void Morph(XmlWriter& xml, const CalCoreSubmesh& submesh, int32_t id,
           const CalCoreMorphTarget& target, CoordinateTexts& coordinates) {
  xml.Start("MORPH");
  xml.Attribute("NAME", target.name());
  xml.Attribute("NUMBLENDVERTS", static_cast<int32_t>(target.vertexOffsets().size()));
  xml.Attribute("MORPHID", id);
  xml.OpenChildren();
  for (const VertexOffset& offset : target.vertexOffsets()) {
    const size_t vertex = static_cast<size_t>(offset.vertexId);
    const CalVector4& base = submesh.vertices()[vertex].position;
    const CalVector position = {MorphedPosition(base.x, offset.position.x),
                                MorphedPosition(base.y, offset.position.y),
                                MorphedPosition(base.z, offset.position.z)};
    // The length of the offset that a loader will find, so that a second save writes the same.
    const double x = double{MorphOffset(base.x, position.x)};
    const double y = double{MorphOffset(base.y, position.y)};
    const double z = double{MorphOffset(base.z, position.z)};
    const double length = std::sqrt(x * x + y * y + z * z);
    xml.Start("BLENDVERTEX");
    xml.Attribute("VERTEXID", offset.vertexId);
    xml.Attribute("POSDIFF", {static_cast<float>(length)});
    xml.OpenChildren();
    Vector(xml, "POSITION", position);
    xml.Element("NORMAL", {offset.normal.x, offset.normal.y, offset.normal.z});
    if (submesh.hasTextureCoordinates()) xml.TextElement("TEXCOORD", coordinates.Of(vertex));
    xml.End("BLENDVERTEX");
  }
  xml.End("MORPH");
}

void Submesh(XmlWriter& xml, const CalCoreSubmesh& submesh) {
  xml.Start("SUBMESH");
  xml.Attribute("NUMVERTICES", static_cast<int32_t>(submesh.vertices().size()));
  xml.Attribute("NUMFACES", Count(submesh.faces().size()));
  xml.Attribute("NUMLODSTEPS", 0);
  xml.Attribute("NUMSPRINGS", 0);
  xml.Attribute("NUMTEXCOORDS", submesh.hasTextureCoordinates() ? 1 : 0);
  xml.Attribute("NUMMORPHS", Count(submesh.morphTargets().size()));
  xml.Attribute("MATERIAL", submesh.coreMaterialThreadId);
  xml.OpenChildren();
  Vertices(xml, submesh);
  CoordinateTexts coordinates(submesh);
  for (size_t i = 0; i < submesh.morphTargets().size(); ++i) {
    Morph(xml, submesh, Count(i), *submesh.morphTargets()[i], coordinates);
  }
  for (const CalCoreSubmesh::Face& face : submesh.faces()) {
    xml.Start("FACE");
    xml.Attribute("VERTEXID", {int32_t{face.vertexId[0]}, int32_t{face.vertexId[1]},
                               int32_t{face.vertexId[2]}});
    xml.EndEmpty();
  }
  xml.End("SUBMESH");
}

void StartAnimation(XmlWriter& xml, const CalFileKind& kind, float duration, size_t tracks) {
  StartRoot(xml, kind);
  xml.Attribute("DURATION", {duration});
  xml.Attribute("NUMTRACKS", Count(tracks));
  xml.OpenChildren();
}

}  // namespace

void WriteText(OutputFile& file, const CalCoreSkeleton& skeleton) {
  XmlWriter xml(file);
  const CalVector& ambient = skeleton.sceneAmbientColor;
  StartRoot(xml, kSkeletonFile);
  xml.Attribute("NUMBONES", Count(skeleton.coreBones.size()));
  xml.Attribute("SCENEAMBIENTCOLOR", {ambient.x, ambient.y, ambient.z});
  xml.OpenChildren();
  for (size_t i = 0; i < skeleton.coreBones.size(); ++i) {
    Bone(xml, Count(i), *skeleton.coreBones[i]);
  }
  xml.End(kSkeletonFile.root);
}

void WriteText(OutputFile& file, const CalCoreMesh& mesh) {
  XmlWriter xml(file);
  StartRoot(xml, kMeshFile);
  xml.Attribute("NUMSUBMESH", Count(mesh.submeshes.size()));
  xml.OpenChildren();
  for (const auto& submesh : mesh.submeshes) Submesh(xml, *submesh);
  xml.End(kMeshFile.root);
}

void WriteText(OutputFile& file, const CalCoreMaterial& material) {
  XmlWriter xml(file);
  StartRoot(xml, kMaterialFile);
  xml.Attribute("NUMMAPS", Count(material.maps.size()));
  xml.OpenChildren();
  // The kind requires colours, our materials hold maps only.
  xml.Element("AMBIENT", {255, 255, 255, 255});
  xml.Element("DIFFUSE", {255, 255, 255, 255});
  xml.Element("SPECULAR", {0, 0, 0, 0});
  xml.Element("SHININESS", {0});
  for (const CalCoreMaterial::Map& map : material.maps) {
    xml.Start("MAP");
    xml.Attribute("TYPE", map.type);
    xml.EndWith(map.filename, "MAP");
  }
  xml.End(kMaterialFile.root);
}

void WriteText(OutputFile& file, const CalCoreAnimation& animation) {
  XmlWriter xml(file);
  StartAnimation(xml, kAnimationFile, animation.duration, animation.tracks.size());
  for (const CalCoreTrack& track : animation.tracks) {
    xml.Start("TRACK");
    xml.Attribute("BONEID", track.coreBoneId);
    xml.Attribute("NUMKEYFRAMES", Count(track.keyframes.size()));
    xml.OpenChildren();
    for (const CalCoreKeyframe& keyframe : track.keyframes) {
      xml.Start("KEYFRAME");
      xml.Attribute("TIME", {keyframe.time});
      xml.OpenChildren();
      Vector(xml, "TRANSLATION", keyframe.translation);
      Quaternion(xml, "ROTATION", keyframe.rotation);
      xml.End("KEYFRAME");
    }
    xml.End("TRACK");
  }
  xml.End(kAnimationFile.root);
}

void WriteText(OutputFile& file, const CalCoreMorphAnimation& animation) {
  XmlWriter xml(file);
  StartAnimation(xml, kMorphAnimationFile, animation.duration, animation.tracks.size());
  for (const CalCoreMorphTrack& track : animation.tracks) {
    xml.Start("TRACK");
    xml.Attribute("MORPHNAME", track.morphName);
    xml.Attribute("NUMKEYFRAMES", Count(track.keyframes.size()));
    xml.OpenChildren();
    for (const CalCoreMorphKeyframe& keyframe : track.keyframes) {
      xml.Start("KEYFRAME");
      xml.Attribute("TIME", {keyframe.time});
      xml.OpenChildren();
      xml.Element("WEIGHT", {keyframe.weight});
      xml.End("KEYFRAME");
    }
    xml.End("TRACK");
  }
  xml.End(kMorphAnimationFile.root);
}
