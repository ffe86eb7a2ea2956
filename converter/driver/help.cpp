#include "converter/driver/help.h"

#include <cstdlib>

#include "converter/base/output.h"
#include "converter/driver/usage.h"
#include "converter/driver/usage_screen.h"
#include "converter/scene/fbx_wrapper.h"

namespace {

constexpr char kExportMeshHelp[] =
    "    export mesh <input fbx file> <output xmf file> <skeleton root> <mesh name>\n"
    "        Export a Cal3D mesh from an FBX file.\n"
    "\n"
    "        input fbx file - The FBX file to export the mesh from.\n"
    "        output xmf file - The Cal3D file to same the mesh to.\n"
    "        skeleton root - The node path to the root of the skeleton.\n"
    "        mesh name - The name of the mesh to export, as a node name.";

constexpr char kExportSkelHelp[] =
    "    export skel <input fbx file> <output xsf file> <skeleton root>\n"
    "        Export a Cal3D skeleton from an FBX file.\n"
    "\n"
    "        input fbx file - The FBX file to export the skeleton from.\n"
    "        output xsf file - The Cal3D file to save the skeleton to.\n"
    "        skeleton root - The node path to the root of the skeleton.";

constexpr char kListTextureHelp[] =
    "    list texture <input fbx file>\n"
    "        List all the textures in an FBX, as texture filenames.\n"
    "\n"
    "        input fbx file - The file to list the textures from.";

constexpr char listMeshHelp[] =
    "\n"
    "    veltrum -l mesh <input fbx file>\n"
    "        List all the meshes in an FBX, as node names.\n"
    "        <input fbx file> - The file to list the meshes from.\n";

constexpr char listNodeHelp[] =
    "\n"
    "    veltrum -l node <input fbx file>\n"
    "        List out the whole scene graph hierarchy for an FBX file, as node paths.\n"
    "        <input fbx file> - The file to list the meshes from.\n";

}  // namespace

std::string VersionText() { return std::string(kVersion) + " FBX lib version " + GetFBXVersion(); }

void PrintVersions() {
  Print(std::string("veltrum version ") + kVersion + "\n");
  Print(std::string("\nFBX lib version ") + GetFBXVersion() + "\n");
}

void PrintUsage(int width) {
  constexpr int kLastColumnMinPercent = 50;
  constexpr int kLastColumnOwnLinePercent = 75;
  Print(UsageScreen(usagev2, width, kLastColumnMinPercent, kLastColumnOwnLinePercent));
}

void PrintHelp() {
  const char* const columns = std::getenv("COLUMNS");
  PrintVersions();
  PrintUsage(columns == nullptr ? 80 : std::atoi(columns));
}

void PrintExportHelp() {
  PrintExportMeshHelp();
  Print("\n\n");
  PrintExportSkelHelp();
}

void PrintExportMeshHelp() { Print(kExportMeshHelp); }

void PrintExportSkelHelp() { Print(kExportSkelHelp); }

void PrintListHelp() {
  PrintListMeshHelp();
  Print("\n");
  PrintListNodeHelp();
}

void PrintListTextureHelp() { Print(kListTextureHelp); }

void PrintListMeshHelp() { Print(listMeshHelp); }

void PrintListNodeHelp() { Print(listNodeHelp); }
