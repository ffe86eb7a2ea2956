#include "converter/driver/command_checks.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <vector>

#include "cal3d/io/number_text.h"
#include "converter/base/complaint.h"
#include "converter/base/log.h"
#include "converter/driver/usage.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/space/axis_mod.h"

namespace {

constexpr const char* kOptionsFirst = ": options stand before the scene";

bool Has(const ConversionArguments& args, int types) { return (args.type & types) != 0; }

// The command in words: "export anim".
std::string CommandText(const ConversionArguments& args) {
  std::string text = args.mode == LIST_MODE ? "list" : "export";
  for (const ObjectKind& kind : kObjectKinds) {
    if (kind.type == args.type) text.append(" ").append(kind.word);
  }
  return text;
}

void CheckNumberOfNames(const ConversionArguments& args) {
  if (args.commandVersion == 1) return;
  const std::string command = CommandText(args);
  const bool named = !args.exportObjectNames.empty();
  if (args.mode == LIST_MODE) {
    const std::vector<std::string>& names = args.exportObjectNames;
    // Options among them are told already.
    if (named && std::none_of(names.begin(), names.end(), IsOption)) {
      Complain(command + " takes no names: " + QuotedList(names));
    }
  } else if (args.type == TEXTURE_OBJECT) {
    if (named) Complain(command + " takes no names, all materials are written");
  } else if (args.type == ALL_OBJECT) {
    Complain(command + " without a type writes no skeletons and no animations: those go by name");
  } else if (!named && args.type != MESH_OBJECT) {
    Complain(command + " without names writes nothing; list shows the names");
  }
}

void CheckRoot(FbxWrapper& scene, const ConversionArguments& args) {
  const std::string& root = args.skeletonRootPath;
  const std::string command = CommandText(args);
  const bool isList = args.mode == LIST_MODE;
  if (root.empty()) {
    // One behind the scene is told already.
    const auto isRoot = [](const std::string& name) {
      return name.starts_with("--root=") || name.starts_with("-r");
    };
    const bool isBehind = std::ranges::any_of(args.exportObjectNames, isRoot);
    if (!isList && !isBehind && args.type != TEXTURE_OBJECT) {
      Complain(command + " needs --root, the path of a node; RootNode is the scene's root");
    }
    return;
  }
  if (const FbxNode* node = scene.GetNodeByPath(root)) {
    if (!isList && !Has(args, ANIM_OBJECT | MORPHANIM_OBJECT)) return;
    const std::vector<NodeSpan>& skeletons = scene.BuildSkeletonList(args.treatAsRoom);
    if (std::none_of(skeletons.begin(), skeletons.end(),
                     [node](NodeSpan skeleton) { return skeleton.front() == node; })) {
      Complain("no skeleton begins at the root '" + root + "'");
    }
  } else if (root != "find") {
    Complain("the root '" + root + "' is no node of '" + args.inputFilename + "'");
  } else if (isList ? !Has(args, MESH_OBJECT | TEXTURE_OBJECT) : Has(args, MESH_OBJECT)) {
    Complain((isList ? command : "export mesh") +
             " takes no --root=find, it needs the path of a node");
  }
}

}  // namespace

bool IsOption(const std::string& word) {
  const std::vector<std::string> words{word};
  const OptionParser parser(usagev2, words);
  if (!parser.Error().empty()) return true;
  const std::vector<ParsedOption>& options = parser.Options();
  return !options.empty() && options.front().row->index != kUnknownOption;
}

void CheckForOption(const std::string& word, const char* meaning) {
  if (IsOption(word)) Complain("'" + word + "' is taken as " + meaning + kOptionsFirst);
}

void CheckScale(const std::string& value, float scale) {
  char* end = nullptr;
  std::strtod(value.c_str(), &end);
  const bool isNumber = *end == '\0' && end != value.c_str() && std::isfinite(scale);
  if (isNumber && scale != 0.0F) return;
  std::string text = "--scale '" + value + "' ";
  text += isNumber ? "counts as " : "is not wholly a finite number and counts as ";
  AppendNumber(text, scale);
  if (scale == 0.0F) text += ", which leaves nothing of the size";
  Complain(text);
}

void CheckLog(const std::string& name) {
  if (name == FileLogOutput::getFileName()) return;
  Complain("no log '" + name +
           "' is opened: the first --log FILE or -g FILE of the command line, in two words, does");
}

void CheckAxes(const ConversionArguments& args) {
  const std::string up = args.upAxis.empty() ? "z" : args.upAxis;
  const std::string front = args.frontAxis.empty() ? "-y" : args.frontAxis;
  const auto isAxis = [](const std::string& word) {
    return std::string_view("xyz").find(word.back()) != std::string_view::npos;
  };
  const std::string unchanged = ": coordinates stay as they are";
  if (!isAxis(up)) {
    Complain("--up '" + up + "' names no axis" + unchanged);
  } else if (!isAxis(front)) {
    Complain("--front '" + front + "' names no axis" + unchanged);
  } else if (up.back() == front.back()) {
    const auto shown = [](const char* option, const std::string& given, const std::string& value) {
      return option + (" '" + value + "'") + (given.empty() ? ", the default," : "");
    };
    Complain(shown("--up", args.upAxis, up) + " and " + shown("--front", args.frontAxis, front) +
             " lie on one axis" + unchanged);
  }
  const std::string& coord = args.coordinateSystem;
  if (!coord.empty() && coord != "left" && coord != "right") {
    Complain("--coord '" + coord + "' is neither left nor right and counts as right");
  }
}

void CheckNames(const ConversionArguments& args) {
  std::vector<std::string> options;
  std::ranges::copy_if(args.exportObjectNames, std::back_inserter(options), IsOption);
  if (options.size() == 1) CheckForOption(options.front(), "a name");
  if (options.size() > 1) Complain(QuotedList(options) + " are taken as names" + kOptionsFirst);
}

void CheckCommand(FbxWrapper& scene, const ConversionArguments& args) {
  if (args.mode != LIST_MODE && args.mode != EXPORT_MODE) return;
  CheckNumberOfNames(args);
  CheckRoot(scene, args);
}
