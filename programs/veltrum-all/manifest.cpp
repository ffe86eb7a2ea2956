#include "programs/veltrum-all/manifest.h"

#include <nlohmann/json.hpp>

#include "converter/scene/fbx_wrapper.h"

namespace {

using Json = nlohmann::ordered_json;

// Of the layout. It grows when a field changes its meaning or goes, not when one comes.
constexpr int kManifestVersion = 1;

const char* StateText(SceneReport::State state) {
  switch (state) {
    case SceneReport::kDone:
      return "done";
    case SceneReport::kPartial:
      return "partial";
    case SceneReport::kUnreadable:
      return "unreadable";
  }
  return "";
}

template <typename Items, typename Convert>
Json ArrayOf(const Items& items, Convert convert) {
  Json array = Json::array();
  for (const auto& item : items) array.push_back(convert(item));
  return array;
}

Json MessageJson(const Message& message) {
  return {{"kind", message.kind},
          {"about", message.about},
          {"text", message.text},
          {"count", message.count}};
}

Json MeshJson(const MeshReport& mesh) {
  int64_t vertices = 0;
  int64_t faces = 0;
  for (const SubmeshReport& submesh : mesh.submeshes) {
    vertices += submesh.vertices;
    faces += submesh.faces;
  }
  return {{"name", mesh.name},
          {"file", mesh.file},
          {"vertices", vertices},
          {"faces", faces},
          {"submeshes", ArrayOf(mesh.submeshes, [](const SubmeshReport& submesh) {
             return Json{{"material", submesh.material},
                         {"vertices", submesh.vertices},
                         {"faces", submesh.faces},
                         {"morphTargets", submesh.morphTargets}};
           })}};
}

Json MaterialJson(const MaterialReport& material) {
  Json json = {{"id", material.id}, {"name", material.name}};
  if (!material.file.empty()) json["file"] = material.file;
  json["maps"] = ArrayOf(material.maps, [](const MaterialReport::Map& map) {
    Json entry = {{"type", map.type}, {"file", map.file}};
    if (map.isPlain) {
      entry["plain"] = true;
    } else {
      entry["exists"] = !map.found.empty();
    }
    if (!map.copy.empty()) entry["copy"] = map.copy;
    return entry;
  });
  return json;
}

Json AnimationJson(const AnimationReport& animation) {
  return {{"name", animation.name},
          {"file", animation.file},
          {"kind", animation.isMorph ? "morph" : "skeletal"},
          {"start", animation.start},
          {"end", animation.end},
          {"rate", animation.rate},
          {"duration", animation.duration},
          {"tracks", animation.tracks},
          {"keys", animation.keys}};
}

Json SkeletonJson(const SkeletonReport& skeleton) {
  Json json = {{"name", skeleton.name}, {"root", skeleton.root}};
  if (!skeleton.file.empty()) json["file"] = skeleton.file;
  json["bones"] = ArrayOf(skeleton.bones, [](const BoneReport& bone) {
    return Json{{"name", bone.name}, {"parent", bone.parent}};
  });
  json["meshes"] = ArrayOf(skeleton.meshes, MeshJson);
  json["materials"] = ArrayOf(skeleton.materials, MaterialJson);
  json["animations"] = ArrayOf(skeleton.animations, AnimationJson);
  return json;
}

Json OptionsJson(const ConversionArguments& args) {
  return {{"scale", args.scaleFactor},
          {"up", args.upAxis.empty() ? "z" : args.upAxis},
          {"front", args.frontAxis.empty() ? "-y" : args.frontAxis},
          {"coord", args.coordinateSystem.empty() ? "right" : args.coordinateSystem},
          {"room", args.treatAsRoom},
          {"rename", args.renameRoomNodes},
          {"evaluated", args.useEvaluatedLocal}};
}

}  // namespace

std::string ManifestText(const SceneReport& report, const Options& options) {
  const Json json = {
      {"version", kManifestVersion},
      {"program", std::string("veltrum-all ") + VELTRUM_VERSION},
      {"library", GetFBXVersion()},
      {"scene", report.fileName},
      {"state", StateText(report.state)},
      {"options", OptionsJson(options.args)},
      {"skeletons", ArrayOf(report.skeletons, SkeletonJson)},
      {"files", report.files},
      {"warnings", ArrayOf(report.warnings, MessageJson)},
      {"errors", ArrayOf(report.errors, MessageJson)},
  };
  return json.dump(1, ' ', false, Json::error_handler_t::replace) + '\n';
}
