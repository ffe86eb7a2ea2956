// The file of a group, with the warnings and the records that go with it.
#include <algorithm>
#include <cmath>
#include <iomanip>
#include <locale>
#include <sstream>

#include "cal3d/io/file_kinds.h"
#include "cal3d/io/saver.h"
#include "converter/base/complaint.h"
#include "converter/base/names.h"
#include "converter/base/records.h"
#include "converter/mesh/mesh_stages.h"

namespace {

constexpr double kAvatarSize = 600.0;  // in output units
constexpr int kSmallestSize = 100;
constexpr int kLargestSize = 5000;

// Cut to whole units.
int SizeOf(const Bounds& bounds, size_t axis) {
  const double size = std::abs(bounds.max[axis] - bounds.min[axis]);
  constexpr int kMost = std::numeric_limits<int>::max();
  return size < kMost ? static_cast<int>(size) : kMost;
}

void WarnOfSize(const std::string& name, const Bounds& bounds) {
  const int largest = std::max({SizeOf(bounds, 0), SizeOf(bounds, 1), SizeOf(bounds, 2)});
  std::ostringstream ratio;
  ratio.imbue(std::locale::classic());
  ratio << std::setprecision(2) << static_cast<double>(static_cast<float>(largest)) / kAvatarSize;
  const std::string text = "Exported mesh " + name + " is " + ratio.str() +
                           " times the size of an ZEVO avatar, and may be too ";
  if (largest < kSmallestSize) AddWarning(text + "small.");
  if (largest > kLargestSize) AddWarning(text + "large.");
}

// Also of materials all of whose triangles vanished.
std::string JoinIds(const MeshGroup& group) {
  std::string ids;
  for (const auto& [id, draft] : group.submeshes) {
    if (!ids.empty()) ids += ',';
    ids += std::to_string(id);
  }
  return ids;
}

}  // namespace

bool SaveMesh(const ConversionArguments& args, MeshGroup& group, const MeshTrace& trace) {
  CalCoreMesh mesh = BuildMesh(group);
  if (mesh.submeshes.empty()) {
    AddWarning(group.name + " has no geometry");
    return true;
  }
  trace.Measured(group.bounds);
  WarnOfSize(group.name, group.bounds);
  std::string fileName = args.outputFilename;
  if (fileName.empty()) {
    fileName = OutputPath(args, group.name, kMeshFile);
  }
  if (!CalSaver::saveCoreMesh(fileName, &mesh)) {
    ComplainOfOutput(fileName);
    return false;
  }
  AddOutput("MESH", encodeName(args.encodeNames, group.name), false);
  AddOutput("MATERIAL", JoinIds(group) + " ", false);
  AddOutput("FILENAME", fileName, true);
  return true;
}
