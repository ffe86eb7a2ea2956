#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>

#include "cal3d/io/file_format.h"
#include "cal3d/io/forms.h"
#include "cal3d/io/model_check.h"
#include "cal3d/io/xml_reader.h"

namespace {

int32_t Int(pugi::xml_node element, const char* text) {
  return Parse<int32_t, int32_t, 1>(element, text);
}
float Float(pugi::xml_node element, const char* text) {
  return Parse<float, float, 1>(element, text);
}
CalVector Vector(pugi::xml_node element, const char* text) {
  return Parse<CalVector, float, 3>(element, text);
}
CalVector VectorIn(pugi::xml_node element) { return Vector(element, element.child_value()); }
CalQuaternion QuaternionIn(pugi::xml_node element) {
  return Parse<CalQuaternion, float, 4>(element, element.child_value());
}

int32_t IntAttribute(pugi::xml_node element, std::string_view name, int32_t fallback) {
  const char* text = FindAttribute(element, name);
  return text == nullptr ? fallback : Int(element, text);
}

// Runs a check of an index, and tells the element that holds the index if it fails.
template <typename Check>
auto CheckedAt(pugi::xml_node element, const Check& check) {
  try {
    return check();
  } catch (const std::runtime_error& error) {
    throw XmlError(element, error.what());
  }
}

void ReadBone(pugi::xml_node element, LoadedSkeleton& loaded) {
  const int32_t id = static_cast<int32_t>(loaded.bones.size());
  CheckAttribute(element, "ID", loaded.bones.size());
  std::optional<CalVector> translation;
  std::optional<CalQuaternion> rotation;
  std::optional<CalVector> boneSpaceTranslation;
  std::optional<CalQuaternion> boneSpaceRotation;
  std::optional<int32_t> parent;
  size_t children = 0;
  for (const pugi::xml_node child : element) {
    if (IsElement(child, "TRANSLATION")) {
      translation = VectorIn(child);
    } else if (IsElement(child, "ROTATION")) {
      rotation = QuaternionIn(child);
    } else if (IsElement(child, "LOCALTRANSLATION")) {
      boneSpaceTranslation = VectorIn(child);
    } else if (IsElement(child, "LOCALROTATION")) {
      boneSpaceRotation = QuaternionIn(child);
    } else if (IsElement(child, "PARENTID")) {
      parent = Int(child, child.child_value());
    } else if (IsElement(child, "CHILDID")) {
      loaded.children.emplace_back(id, Int(child, child.child_value()));
      ++children;
    }
  }
  CheckAttribute(element, "NUMCHILDS", children);
  auto bone = boost::make_shared<CalCoreBone>(RequiredAttribute(element, "NAME"),
                                              Require(parent, element, "PARENTID"));
  bone->relativeTranslation = Require(translation, element, "TRANSLATION");
  bone->relativeRotation = Require(rotation, element, "ROTATION");
  bone->boneSpaceTranslation = Require(boneSpaceTranslation, element, "LOCALTRANSLATION");
  bone->boneSpaceRotation = Require(boneSpaceRotation, element, "LOCALROTATION");
  bone->lightType = static_cast<CalLightType>(IntAttribute(element, "LIGHTTYPE", 0));
  if (const char* color = FindAttribute(element, "LIGHTCOLOR")) {
    bone->lightColor = Vector(element, color);
  }
  loaded.bones.push_back(bone);
}

// Reads one vertex into `submesh`. `influences` is the caller's, so that its storage is made once.
void ReadVertex(pugi::xml_node element, std::optional<size_t> coordinateSets,
                std::vector<CalCoreSubmesh::Influence>& influences, CalCoreSubmesh& submesh) {
  CheckAttribute(element, "ID", submesh.vertices().size());
  std::optional<CalVector> position;
  std::optional<CalVector> normal;
  uint32_t color = kWhite;
  CalCoreSubmesh::TextureCoordinate coordinate;
  size_t coordinates = 0;
  influences.clear();
  for (const pugi::xml_node child : element) {
    if (IsElement(child, "POS")) {
      position = VectorIn(child);
    } else if (IsElement(child, "NORM")) {
      normal = VectorIn(child);
    } else if (IsElement(child, "COLOR")) {
      color = ColorWord(VectorIn(child));
    } else if (IsElement(child, "TEXCOORD")) {
      const auto each =
          Parse<CalCoreSubmesh::TextureCoordinate, float, 2>(child, child.child_value());
      if (coordinates++ == 0) coordinate = each;
    } else if (IsElement(child, "INFLUENCE")) {
      const int32_t bone = Int(child, RequiredAttribute(child, "ID"));
      influences.push_back({CheckedAt(child, [bone] { return CheckedBoneId(bone); }),
                            Float(child, child.child_value()), 0});
    }
  }
  CheckAttribute(element, "NUMINFLUENCES", influences.size());
  if (coordinateSets && coordinates != *coordinateSets) {
    throw XmlError(element, "there are " + std::to_string(coordinates) +
                                " elements TEXCOORD, but NUMTEXCOORDS is " +
                                std::to_string(*coordinateSets));
  }
  const CalVector& at = Require(position, element, "POS");
  const int32_t index = static_cast<int32_t>(submesh.vertices().size());
  submesh.addVertex({{at.x, at.y, at.z, 1}, Require(normal, element, "NORM").asCalVector4()}, color,
                    influences);
  submesh.setTextureCoordinate(index, coordinate);
}

boost::shared_ptr<CalCoreMorphTarget> ReadMorph(pugi::xml_node element,
                                                const CalCoreSubmesh& submesh) {
  const int32_t vertices = static_cast<int32_t>(submesh.vertices().size());
  cal3d::SSEArray<VertexOffset> offsets;
  for (const pugi::xml_node blend : element) {
    if (!IsElement(blend, "BLENDVERTEX")) continue;
    const int32_t id = Int(blend, RequiredAttribute(blend, "VERTEXID"));
    CheckedAt(blend, [id, vertices] { return CheckedVertexId(id, vertices); });
    std::optional<CalVector> position;
    std::optional<CalVector> normal;
    for (const pugi::xml_node child : blend) {
      if (IsElement(child, "POSITION")) {
        position = VectorIn(child);
      } else if (IsElement(child, "NORMAL")) {
        normal = VectorIn(child);
      }
    }
    offsets.push_back(LoadedOffset(submesh, id, Require(position, blend, "POSITION"),
                                   Require(normal, blend, "NORMAL")));
  }
  CheckAttribute(element, "NUMBLENDVERTS", offsets.size());
  const char* name = FindAttribute(element, "NAME");
  return boost::make_shared<CalCoreMorphTarget>(name == nullptr ? "" : name, vertices, offsets);
}

CalCoreSubmesh::Face ReadFace(pugi::xml_node element, int32_t vertices) {
  std::array<int32_t, 3> corners;
  ParseNumbers(element, RequiredAttribute(element, "VERTEXID"), corners);
  return CheckedAt(element, [&corners, vertices] { return CheckedFace(corners, vertices); });
}

// How many texture coordinate sets the vertices of a submesh must have; nothing if it doesn't say.
std::optional<size_t> CoordinateSets(pugi::xml_node submesh) {
  const char* text = FindAttribute(submesh, "NUMTEXCOORDS");
  if (text == nullptr) return std::nullopt;
  const int32_t sets = Int(submesh, text);
  if (sets < 0) throw XmlError(submesh, "NUMTEXCOORDS is negative");
  return static_cast<size_t>(sets);
}

bool AnyVertexHasCoordinates(pugi::xml_node submesh) {
  for (const pugi::xml_node vertex : submesh) {
    if (IsElement(vertex, "VERTEX") && CountElements(vertex, "TEXCOORD") != 0) return true;
  }
  return false;
}

boost::shared_ptr<CalCoreSubmesh> ReadSubmesh(pugi::xml_node element) {
  const size_t vertexCount = CountElements(element, "VERTEX");
  const size_t faceCount = CountElements(element, "FACE");
  CheckAttribute(element, "NUMVERTICES", vertexCount);
  CheckAttribute(element, "NUMFACES", faceCount);
  CheckAttribute(element, "NUMSPRINGS", CountElements(element, "SPRING"));
  CheckAttribute(element, "NUMMORPHS", CountElements(element, "MORPH"));
  const std::optional<size_t> coordinateSets = CoordinateSets(element);
  const bool hasCoordinates =
      coordinateSets ? *coordinateSets > 0 : AnyVertexHasCoordinates(element);

  const int32_t vertices = static_cast<int32_t>(vertexCount);
  auto submesh =
      boost::make_shared<CalCoreSubmesh>(vertices, hasCoordinates, static_cast<int32_t>(faceCount));
  submesh->coreMaterialThreadId = IntAttribute(element, "MATERIAL", 0);
  std::vector<CalCoreSubmesh::Influence> influences;
  for (const pugi::xml_node child : element) {
    if (IsElement(child, "VERTEX")) ReadVertex(child, coordinateSets, influences, *submesh);
  }
  // Only now, whatever the order in the file: both speak of the vertices.
  for (const pugi::xml_node child : element) {
    if (IsElement(child, "MORPH")) {
      submesh->addMorphTarget(ReadMorph(child, *submesh));
    } else if (IsElement(child, "FACE")) {
      submesh->addFace(ReadFace(child, vertices));
    }
  }
  return submesh;
}

CalCoreKeyframe ReadKeyframe(pugi::xml_node element) {
  std::optional<CalVector> translation;
  std::optional<CalQuaternion> rotation;
  for (const pugi::xml_node child : element) {
    if (IsElement(child, "TRANSLATION")) {
      translation = VectorIn(child);
    } else if (IsElement(child, "ROTATION")) {
      rotation = QuaternionIn(child);
    }
  }
  return {Float(element, RequiredAttribute(element, "TIME")),
          Require(rotation, element, "ROTATION"), Require(translation, element, "TRANSLATION")};
}

CalCoreTrack ReadTrack(pugi::xml_node element) {
  const int32_t bone = Int(element, RequiredAttribute(element, "BONEID"));
  CheckedAt(element, [bone] { return CheckedBoneId(bone); });
  std::vector<CalCoreKeyframe> keyframes;
  for (const pugi::xml_node child : element) {
    if (IsElement(child, "KEYFRAME")) keyframes.push_back(ReadKeyframe(child));
  }
  CheckAttribute(element, "NUMKEYFRAMES", keyframes.size());
  return {bone, keyframes};
}

CalCoreMorphTrack ReadMorphTrack(pugi::xml_node element) {
  CalCoreMorphTrack track;
  track.morphName = RequiredAttribute(element, "MORPHNAME");
  for (const pugi::xml_node child : element) {
    if (!IsElement(child, "KEYFRAME")) continue;
    std::optional<float> weight;
    for (const pugi::xml_node value : child) {
      if (IsElement(value, "WEIGHT")) weight = Float(value, value.child_value());
    }
    track.addCoreMorphKeyframe(
        {Float(child, RequiredAttribute(child, "TIME")), Require(weight, child, "WEIGHT")});
  }
  CheckAttribute(element, "NUMKEYFRAMES", track.keyframes.size());
  return track;
}

// Both kinds of animation: a duration, and tracks.
template <typename Animation, typename ReadTrack>
boost::shared_ptr<Animation> ReadAnimation(std::string_view text, const CalFileKind& kind,
                                           const ReadTrack& readTrack) {
  const XmlFile file(text, kind);
  auto animation = boost::make_shared<Animation>();
  if (const char* duration = FindAttribute(file.Root(), "DURATION")) {
    animation->duration = Float(file.Root(), duration);
  }
  for (const pugi::xml_node child : file.Root()) {
    if (IsElement(child, "TRACK")) animation->tracks.push_back(readTrack(child));
  }
  CheckAttribute(file.Root(), "NUMTRACKS", animation->tracks.size());
  return animation;
}

}  // namespace

boost::shared_ptr<CalCoreSkeleton> ReadTextSkeleton(std::string_view text) {
  const XmlFile file(text, kSkeletonFile);
  LoadedSkeleton loaded;
  for (const pugi::xml_node child : file.Root()) {
    if (IsElement(child, "BONE")) ReadBone(child, loaded);
  }
  CheckAttribute(file.Root(), "NUMBONES", loaded.bones.size());
  const char* ambient = FindAttribute(file.Root(), "SCENEAMBIENTCOLOR");
  return loaded.Finish(ambient == nullptr ? CalVector() : Vector(file.Root(), ambient));
}

boost::shared_ptr<CalCoreMesh> ReadTextMesh(std::string_view text) {
  const XmlFile file(text, kMeshFile);
  auto mesh = boost::make_shared<CalCoreMesh>();
  for (const pugi::xml_node child : file.Root()) {
    if (IsElement(child, "SUBMESH")) mesh->submeshes.push_back(ReadSubmesh(child));
  }
  CheckAttribute(file.Root(), "NUMSUBMESH", mesh->submeshes.size());
  return mesh;
}

boost::shared_ptr<CalCoreMaterial> ReadTextMaterial(std::string_view text) {
  const XmlFile file(text, kMaterialFile);
  auto material = boost::make_shared<CalCoreMaterial>();
  for (const pugi::xml_node child : file.Root()) {
    if (!IsElement(child, "MAP")) continue;
    const char* type = FindAttribute(child, "TYPE");
    material->maps.push_back({child.child_value(), type == nullptr ? "" : type});
  }
  CheckAttribute(file.Root(), "NUMMAPS", material->maps.size());
  return material;
}

boost::shared_ptr<CalCoreAnimation> ReadTextAnimation(std::string_view text) {
  return ReadAnimation<CalCoreAnimation>(text, kAnimationFile, ReadTrack);
}

boost::shared_ptr<CalCoreMorphAnimation> ReadTextMorphAnimation(std::string_view text) {
  return ReadAnimation<CalCoreMorphAnimation>(text, kMorphAnimationFile, ReadMorphTrack);
}
