#include "programs/veltrum-all/options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <string_view>

#include <getopt.h>

#include "converter/base/names.h"

namespace {

constexpr char kUsage[] =
    "usage: veltrum-all [options] scene.fbx... -o DIR\n"
    "\n"
    "Writes every skeleton of each scene, the meshes on it, all materials and animations.\n"
    "\n"
    "  -o DIR                 folder for what is written, made where it is missing\n"
    "  --scale=NUMBER         scales geometry and translations\n"
    "  --up=AXIS              x, y or z, with - for the opposite direction (default z)\n"
    "  --front=AXIS           likewise (default -y)\n"
    "  --coord=SIDE           right (default) or left\n"
    "  --room                 treat scenes as rooms\n"
    "  --rename               with --room, rename special nodes\n"
    "  -u, --use-evaluated-transform\n"
    "                         bones from the evaluated scene instead of the bind pose\n"
    "  --only=KIND,...        of skel, mesh, texture, anim, morphanim\n"
    "  --textures             copy the texture files that the materials name\n"
    "  --dry-run              write nothing, say what would be written\n"
    "  --help, --version\n"
    "\n"
    "Exit status: 0 all written, 1 something of a scene not, 2 a scene can't be read.\n";

constexpr int kUsageStatus = 2;

enum Letter {
  kScale = 256,
  kUp,
  kFront,
  kCoord,
  kRoom,
  kRename,
  kOnly,
  kTextures,
  kDryRun,
  kHelp,
  kVersion
};

constexpr std::array kLongOptions{
    option{"scale", required_argument, nullptr, kScale},
    option{"up", required_argument, nullptr, kUp},
    option{"front", required_argument, nullptr, kFront},
    option{"coord", required_argument, nullptr, kCoord},
    option{"room", no_argument, nullptr, kRoom},
    option{"rename", no_argument, nullptr, kRename},
    option{"use-evaluated-transform", no_argument, nullptr, 'u'},
    option{"only", required_argument, nullptr, kOnly},
    option{"textures", no_argument, nullptr, kTextures},
    option{"dry-run", no_argument, nullptr, kDryRun},
    option{"help", no_argument, nullptr, kHelp},
    option{"version", no_argument, nullptr, kVersion},
    option{nullptr, 0, nullptr, 0},
};

int Refuse(const std::string& text) {
  std::fprintf(stderr, "veltrum-all: %s\n", text.c_str());
  return kUsageStatus;
}

// False for a text that isn't wholly a finite number other than 0.
bool ReadScale(std::string_view text, float& scale) {
  double value = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  scale = static_cast<float>(value);
  return error == std::errc() && end == text.data() + text.size() && std::isfinite(scale) &&
         scale != 0.0F;
}

bool IsAxis(std::string_view text) {
  if (!text.empty() && text.front() == '-') text.remove_prefix(1);
  return text == "x" || text == "y" || text == "z";
}

// The type bits of a list such as "skel,mesh"; 0 for one with a word that is no kind.
int32_t ReadKinds(std::string_view text) {
  int32_t kinds = 0;
  for (const std::string& word : Split(text, ',')) {
    const auto* kind = std::ranges::find_if(
        kObjectKinds, [&word](const ObjectKind& any) { return any.IsCalled(word); });
    if (kind == kObjectKinds.end()) return 0;
    kinds |= kind->type;
  }
  return kinds;
}

}  // namespace

ParsedOptions ParseOptions(int argc, char** argv) {
  ParsedOptions parsed;
  Options& options = parsed.options;
  ConversionArguments& args = options.args;
  args.commandVersion = 2;
  args.mode = EXPORT_MODE;
  args.type = ALL_OBJECT;
  const auto end = [&parsed](int status) {
    parsed.status = status;
    return parsed;
  };
  int letter;
  while ((letter = getopt_long(argc, argv, "o:u", kLongOptions.data(), nullptr)) != -1) {
    const std::string value = optarg == nullptr ? "" : optarg;
    switch (letter) {
      case 'o':
        options.directory = value;
        break;
      case 'u':
        args.useEvaluatedLocal = true;
        break;
      case kScale:
        if (!ReadScale(value, args.scaleFactor)) {
          return end(Refuse("--scale takes a number other than 0, not \"" + value + "\""));
        }
        break;
      case kUp:
        args.upAxis = ToLower(value);
        break;
      case kFront:
        args.frontAxis = ToLower(value);
        break;
      case kCoord:
        args.coordinateSystem = ToLower(value);
        break;
      case kRoom:
        args.treatAsRoom = true;
        break;
      case kRename:
        args.renameRoomNodes = true;
        break;
      case kOnly:
        args.type = static_cast<ObjectType>(ReadKinds(value));
        if (args.type == UNKNOWN_OBJECT) {
          return end(
              Refuse("--only takes skel, mesh, texture, anim and morphanim with commas, not \"" +
                     value + "\""));
        }
        break;
      case kTextures:
        options.copyTextures = true;
        break;
      case kDryRun:
        options.dryRun = true;
        break;
      case kHelp:
        std::fputs(kUsage, stdout);
        return end(0);
      case kVersion:
        std::printf("veltrum-all %s\n", VELTRUM_VERSION);
        return end(0);
      default:
        std::fputs(kUsage, stderr);
        return end(kUsageStatus);
    }
  }
  for (int i = optind; i < argc; ++i) options.scenes.emplace_back(argv[i]);
  if (options.scenes.empty()) return end(Refuse("no scene is named"));
  if (options.directory.empty()) return end(Refuse("no folder is named (-o DIR)"));
  if (options.directory.back() != '/') options.directory += '/';
  const std::string up = args.upAxis.empty() ? "z" : args.upAxis;
  const std::string front = args.frontAxis.empty() ? "-y" : args.frontAxis;
  if (!IsAxis(up) || !IsAxis(front)) return end(Refuse("an axis is x, y or z, with or without -"));
  if (up.back() == front.back()) {
    return end(Refuse("--up and --front are on one axis: " + up + " and " + front));
  }
  if (!args.coordinateSystem.empty() && args.coordinateSystem != "left" &&
      args.coordinateSystem != "right") {
    return end(Refuse("--coord is right or left, not \"" + args.coordinateSystem + "\""));
  }
  return parsed;
}
