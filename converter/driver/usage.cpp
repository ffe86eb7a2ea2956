#include "converter/driver/usage.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "converter/base/names.h"
#include "converter/base/records.h"
#include "converter/scene/fbx_wrapper.h"

namespace {

constexpr auto kNone = ArgumentCheck::kNone;
constexpr auto kRequired = ArgumentCheck::kRequired;

constexpr char kUsageText[] =
    "\n"
    "USAGE:\n"
    "  [options] filename.FBX [ACTION] [TYPE] [list of objects for action]  \n"
    "\t[ACTION TO PERFORM: LIST or EXPORT]\n"
    "\t[TYPE OF OBJECT FOR ACTION: SKEL (NODE_OBJECT), MESH, TEXTure, ANIMation, or "
    "MORPHanims]\n"
    "\t[list of objects for action - no list implies ALL - output filename generated "
    "by name of object or automatically for all]  \n"
    "  if you wish to use option -CAL3D_2_TEXT required object type as next parameter "
    "\n"
    "  veltrum \"archer.fbx\" list skel  = this will list all the nodes in the file "
    "archer.fbx \n"
    "  veltrum --labels \"archer.fbx\" list = this will list all items\n"
    "\tnodes (skeletons), animations,  morphanims,  and meshes in the file archer.fbx\twith "
    "a leading label of the form OBJECTYPE: \n"
    "  veltrum \"archer.fbx\" export mesh = will export all the meshes found in archer.fbx\n"
    "           all textures used by these meshes will be exported into a directory "
    "name\t based on the fbx - in this case archer_textures           existing files "
    "in the _textures directory will not be removed but may be overwritten by new "
    "files  veltrum --r=\"Female\" \"archer.fbx\" list ANIM = will list all animations "
    "under the Female skeleton in archer.fbx \n"
    "  veltrum -z=\"commandsFile.txt\" will read in commands from the command file\teach "
    "line must end with a single dash (-) \n"
    "\tyou may also seperate commands with a single - with spaces on each side \n"
    "  veltrum --cal3d2text=\"archer.cal3d\" will output result to archer_cal3d.txt "
    "\n"
    "  veltrum -c\"archer.cal3d\" archer.fbx will compare the two files and output "
    "the result";

constexpr std::array<OptionDescriptor, 21> kOptions{{
    {kHelpOption, "h", "help", kNone, "  -h --help  \tPrint usage and exit."},
    {kVerboseOption, "v", "verbose", kNone,
     "  -v --verbose  \tActivates verbose output to stderr - use more v's for more "
     "detail."},
    {kCompareOption, "c", "compare", kNone, "  -c --compare  \tcompare cal3d to fbx"},
    {kRootOption, "r", "root", kRequired,
     "  -r skeleton --root=skeleton \tspecify root skeletin for list and export commands"},
    {kNoLabelsOption, "n", "nolabels", kNone, "  -n --nolabels  \tTurn off Labels"},
    {kLabelsOption, "l", "labels", kNone, "  -l --labels  \tTurn on Labels"},
    {kCommandFileOption, "z", "", kRequired, "  -z commands_filename \tfile to read command from"},
    {kCal3dToTextOption, "", "cal3d2text", kRequired,
     "  --cal3d2text=output-file  \tconvert cal3d to text file."},
    {kWeightOption, "w", "weight", kNone,
     "  --weight, -w  \tfix up vertex weights that sum less than 1.0"},
    {kUseEvaluatedOption, "u", "use-evaluated-transform", kNone,
     "  --use-evaluated-transform, -u  \tuse internal evaluation instead of raw animation "
     "data"},
    {kDirectoryOption, "d", "directory", kRequired,
     "  --directory, -d  \tOutput files to this directory"},
    {kEncodeOption, "e", "encode", kNone,
     "  --encode, -e  \tencode object names - e.g. mesh, skel, anim and morph"},
    {kScaleOption, "s", "scale", kRequired, "--scale, -s \tScale factor to use - default is 1.0"},
    {kLogOption, "", "log", kRequired, "--log, -g \tlog file for output"},
    {kGroupOption, "g", "", kNone, " -g \tgroup some meshes into a single mesh based on hierarchy"},
    {kRoomOption, "", "room", kNone, " --room \tTreat model as room. Add camera, rename nodes."},
    {kRenameOption, "", "rename", kNone,
     " --rename \tif room, manage node names for seat, furniture, light, camera."},
    {kUpOption, "", "up", kRequired,
     " --up=[(-)X|Y|Z] \tUse X, Y, or Z as up vector (use - to make it down vector) "
     "default = Z"},
    {kFrontOption, "", "front", kRequired,
     " --front=[(-)X|Y|Z] \tUse X, Y, or Z as front vector NOTE: do not duplicate the "
     "up argument (default -Y)"},
    {kCoordOption, "", "coord", kRequired,
     " --coord=[right|left] \tUse right or left handed coorinate system (default right)"},
    {kUnknownOption, "", "", kNone, kUsageText},
}};

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

using Cells = std::vector<std::string>;

std::vector<Cells> LinesOfTable(std::span<const OptionDescriptor> table) {
  std::vector<Cells> lines;
  for (const OptionDescriptor& row : table) {
    for (const std::string& line : Split(row.help, '\n')) lines.push_back(Split(line, '\t'));
  }
  return lines;
}

size_t LeadingBlanks(std::string_view text) {
  return std::min(text.find_first_not_of(' '), text.size());
}

// Adds the words of `text` from column `indent` on, and goes on at that column of a new line where
// a word would pass `width`. Blanks between words stay as they are, those at a break go. Returns
// the column behind the last word.
size_t AppendWrapped(std::string& screen, std::string_view text, size_t indent, size_t width) {
  text.remove_prefix(LeadingBlanks(text));
  size_t column = indent;
  size_t blanks = 0;
  while (!text.empty()) {
    const size_t length = std::min(text.find(' '), text.size());
    if (column > indent && column + blanks + length > width) {
      screen += '\n';
      screen.append(indent, ' ');
      column = indent;
    } else {
      screen.append(blanks, ' ');
      column += blanks;
    }
    screen += text.substr(0, length);
    column += length;
    text.remove_prefix(length);
    blanks = LeadingBlanks(text);
    text.remove_prefix(blanks);
  }
  return column;
}

}  // namespace

const std::span<const OptionDescriptor> usagev2{kOptions};

std::string UsageScreen(std::span<const OptionDescriptor> table, int width,
                        int lastColumnMinPercent, int lastColumnOwnLinePercent) {
  const auto columns = static_cast<size_t>(std::max(width, 1));
  const auto allBut = [columns](int percent) {
    return columns * static_cast<size_t>(100 - percent) / 100;
  };
  const std::vector<Cells> lines = LinesOfTable(table);

  // Cells so wide that their line's last cell moves to a new line don't widen the column.
  const size_t widestCell = allBut(lastColumnOwnLinePercent);
  std::vector<size_t> widths;
  for (const Cells& cells : lines) {
    widths.resize(std::max(widths.size(), cells.size()));
    for (size_t i = 0; i + 1 < cells.size(); ++i) {
      if (cells[i].size() <= widestCell) widths[i] = std::max(widths[i], cells[i].size());
    }
  }

  std::string screen;
  for (const Cells& cells : lines) {
    std::string lead;
    size_t lastColumn = 0;
    for (size_t i = 0; i + 1 < cells.size(); ++i) {
      lead += cells[i];
      lastColumn += widths[i];
      if (lead.size() < lastColumn) lead.resize(lastColumn, ' ');
    }
    lastColumn = std::min(lastColumn, allBut(lastColumnMinPercent));

    size_t column = 0;
    if (const size_t indent = LeadingBlanks(lead); indent < lead.size()) {
      screen.append(indent, ' ');
      column = AppendWrapped(screen, lead, indent, columns);
      if (lead.size() > lastColumn) {
        screen += '\n';
        column = 0;
      }
    }
    const size_t indent = cells.size() > 1 ? lastColumn : LeadingBlanks(cells.back());
    if (LeadingBlanks(cells.back()) < cells.back().size()) {
      screen.append(indent - column, ' ');
      AppendWrapped(screen, cells.back(), indent, columns);
    }
    screen += '\n';
  }
  return screen;
}

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
