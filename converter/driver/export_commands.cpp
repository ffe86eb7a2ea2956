#include "converter/driver/export_commands.h"

#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "converter/animation/export_animation.h"
#include "converter/base/complaint.h"
#include "converter/base/log.h"
#include "converter/base/names.h"
#include "converter/base/records.h"
#include "converter/driver/command_checks.h"
#include "converter/driver/material_export.h"
#include "converter/mesh/export_mesh.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/skeleton/export_skeleton.h"
#include "converter/skeleton/skeleton_roots.h"

namespace {

void ExportSkeletonNamed(FbxWrapper& scene, const std::string& name, ConversionArguments args) {
  if (args.outputFilename.empty()) {
    args.outputFilename = OutputPath(args, name, kNodeKind);
  }
  args.exportObjectName = name;
  LOG_INFO(args.toString());
  const std::string shownName = encodeName(args.encodeNames, name);
  if (ExportSkeleton(scene, args)) {
    AddOutput(kNodeKind.label, shownName, false);
    AddOutput("FILENAME", args.outputFilename, true);
  } else {
    // Callers know this text, the wrong word included.
    AddError("Failed to create file " + args.outputFilename + " for ANIMATION " + shownName);
  }
}

void ReportMeshFailure(const ConversionArguments& args) {
  if (args.commandVersion == 1) {
    PrintFormatted("could not create file %s from %s with root %s and mesh %s\n",
                   args.outputFilename.c_str(), args.inputFilename.c_str(),
                   args.skeletonRootPath.c_str(), args.exportObjectName.c_str());
    return;
  }
  AddOutput("WARNING", "could not create file for meshes from ", false);
  AddOutput(args.inputFilename, false);
  AddOutput(" with root ", false);
  AddOutput(args.skeletonRootPath, false);
  const std::vector<std::string>& names = args.exportObjectNames;
  if (names.empty()) {
    AddOutput("for ALL OBJECTS", true);
    return;
  }
  AddOutput(" and mesh names", false);
  for (size_t i = 0; i < names.size(); ++i) {
    AddOutput(" '", false);
    AddOutput(names[i], false);
    AddOutput(2 * i < names.size() ? "' " : "', ", false);
  }
  AddOutput("", true);
}

// `what` is the kind of objects and where they were looked for.
void ComplainOfUnknownName(const std::string& name, const std::string& what) {
  // Options among the names are told already.
  if (!IsOption(name)) Complain("no " + what + " is called '" + name + "'");
}

// After an export, which has made the scene's list of meshes.
void ComplainOfUnknownMeshes(FbxWrapper& scene, const ConversionArguments& args) {
  // Behind a root that is no node, which is told already, no mesh was looked for.
  if (args.commandVersion == 1 || !scene.GetNodeByPath(args.skeletonRootPath)) return;
  std::unordered_set<std::string_view> known;
  for (const MeshHolder_* holder : scene.makeMeshList()) known.insert(holder->name);
  for (const std::string& name : args.exportObjectNames) {
    if (!known.contains(name)) ComplainOfUnknownName(name, "mesh of '" + args.inputFilename + "'");
  }
}

// `kind` is what they are called in messages.
void ExportAnimationsFrom(AnimationMap AnimationCache::*animations, const std::string& kind,
                          Session& session, const ConversionArguments& args) {
  ExportAnimation exporter(session.SceneOf(args), args);
  const AnimationCache& cache = session.AnimationsOf(args);
  const std::vector<std::string> names = args.commandVersion == 1
                                             ? std::vector<std::string>{args.exportObjectName}
                                             : args.exportObjectNames;
  for (const std::string& name : exporter.ExportAnimationsFromList(cache.*animations, names)) {
    ComplainOfUnknownName(name, kind + " under --root=" + args.skeletonRootPath);
  }
}

}  // namespace

void ExportAnimations(Session& session, const ConversionArguments& args) {
  ExportAnimationsFrom(&AnimationCache::skeletalAnimations, "animation", session, args);
}

void ExportMorphAnimations(Session& session, const ConversionArguments& args) {
  ExportAnimationsFrom(&AnimationCache::morphAnimations, "morph animation", session, args);
}

void ExportSkeletons(FbxWrapper& scene, const ConversionArguments& args) {
  // Sets the skeleton roots of the meshes, which later commands on the scene may read.
  scene.BuildMeshesOnSkeletonsList(args);
  if (args.commandVersion == 1) {
    ExportSkeletonNamed(scene, args.skeletonRootPath, args);
  } else {
    if (!args.outputFilename.empty() && args.exportObjectNames.size() > 1) {
      Complain("several skeletons are written to the one file '" + args.outputFilename +
               "', which keeps the last");
    }
    for (const std::string& name : args.exportObjectNames) ExportSkeletonNamed(scene, name, args);
  }
}

bool ExportSkeleton(FbxWrapper& scene, const ConversionArguments& args) {
  SkeletonRoot root = GetSkeletonRoot(&scene, args);
  if (root.node == nullptr) return false;
  ConversionArguments resolved = args;
  resolved.skeletonRootPath = std::move(root.path);
  if (ExportCal3DSkeleton(root.node, args.outputFilename, resolved)) return true;
  ComplainOfOutput(args.outputFilename);
  return false;
}

bool ExportMeshes(FbxWrapper& scene, const ConversionArguments& args) {
  ExportMesh exporter(scene, args);
  const bool exported = exporter.Export(false);
  ComplainOfUnknownMeshes(scene, args);
  if (!exported) ReportMeshFailure(args);
  for (const std::string& texture : gatherTextureListFromDirectory(args.inputFilename)) {
    MoveFileFromSDKTextureDirectoryToZEVOTextureDirectory(args.inputFilename, texture, args);
  }
  return exported;
}
