// The command line of veltrum-all.
#pragma once

#include <string>
#include <vector>

#include "converter/base/conversion_arguments.h"

struct Options {
  ConversionArguments
      args;  // what all commands have in common; `type` says which kinds are written
  std::string directory;
  bool dryRun = false;
  bool copyTextures = false;
  std::vector<std::string> scenes;
};

// What became of the command line: a run, or an exit status at once, all having been said.
struct ParsedOptions {
  Options options;
  int status = -1;  // -1: run
};
ParsedOptions ParseOptions(int argc, char** argv);
