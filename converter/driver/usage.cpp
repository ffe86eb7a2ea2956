#include "converter/driver/usage.h"

#include <array>

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
    {kHelpOption, 0, "h", "help", kNone, "  -h --help  \tPrint usage and exit."},
    {kVerboseOption, 0, "v", "verbose", kNone,
     "  -v --verbose  \tActivates verbose output to stderr - use more v's for more "
     "detail."},
    {kCompareOption, 0, "c", "compare", kNone, "  -c --compare  \tcompare cal3d to fbx"},
    {kRootOption, 0, "r", "root", kRequired,
     "  -r skeleton --root=skeleton \tspecify root skeletin for list and export commands"},
    {kNoLabelsOption, 0, "n", "nolabels", kNone, "  -n --nolabels  \tTurn off Labels"},
    {kLabelsOption, 0, "l", "labels", kNone, "  -l --labels  \tTurn on Labels"},
    {kCommandFileOption, 0, "z", "", kRequired,
     "  -z commands_filename \tfile to read command from"},
    {kCal3dToTextOption, 0, "", "cal3d2text", kRequired,
     "  --cal3d2text=output-file  \tconvert cal3d to text file."},
    {kWeightOption, 0, "w", "weight", kNone,
     "  --weight, -w  \tfix up vertex weights that sum less than 1.0"},
    {kUseEvaluatedOption, 0, "u", "use-evaluated-transform", kNone,
     "  --use-evaluated-transform, -u  \tuse internal evaluation instead of raw animation "
     "data"},
    {kDirectoryOption, 0, "d", "directory", kRequired,
     "  --directory, -d  \tOutput files to this directory"},
    {kEncodeOption, 0, "e", "encode", kNone,
     "  --encode, -e  \tencode object names - e.g. mesh, skel, anim and morph"},
    {kScaleOption, 0, "s", "scale", kRequired,
     "--scale, -s \tScale factor to use - default is 1.0"},
    {kLogOption, 0, "", "log", kRequired, "--log, -g \tlog file for output"},
    {kGroupOption, 0, "g", "", kNone,
     " -g \tgroup some meshes into a single mesh based on hierarchy"},
    {kRoomOption, 0, "", "room", kNone, " --room \tTreat model as room. Add camera, rename nodes."},
    {kRenameOption, 0, "", "rename", kNone,
     " --rename \tif room, manage node names for seat, furniture, light, camera."},
    {kUpOption, 0, "", "up", kRequired,
     " --up=[(-)X|Y|Z] \tUse X, Y, or Z as up vector (use - to make it down vector) "
     "default = Z"},
    {kFrontOption, 0, "", "front", kRequired,
     " --front=[(-)X|Y|Z] \tUse X, Y, or Z as front vector NOTE: do not duplicate the "
     "up argument (default -Y)"},
    {kCoordOption, 0, "", "coord", kRequired,
     " --coord=[right|left] \tUse right or left handed coorinate system (default right)"},
    {kUnknownOption, 0, "", "", kNone, kUsageText},
}};

}  // namespace

const std::span<const OptionDescriptor> usagev2{kOptions};
