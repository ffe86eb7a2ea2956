// The option table of the command line, and what the program prints about itself.
#pragma once

#include <span>
#include <string>

#include "converter/driver/option_parser.h"

enum OptionIndex : int {
  kUnknownOption = 0,
  kHelpOption = 2,
  kVerboseOption = 3,
  kRootOption = 4,
  kCal3dToTextOption = 5,
  kLabelsOption = 7,
  kNoLabelsOption = 8,
  kCommandFileOption = 9,
  kWeightOption = 10,
  kUseEvaluatedOption = 11,
  kCompareOption = 12,
  kDirectoryOption = 13,
  kEncodeOption = 14,
  kScaleOption = 15,
  kLogOption = 16,
  kGroupOption = 17,
  kRoomOption = 18,
  kUpOption = 19,
  kFrontOption = 20,
  kCoordOption = 21,
  kRenameOption = 22,
};

// Its order is the order of the usage screen.
extern const std::span<const OptionDescriptor> usagev2;

// In a help text '\n' ends a line and '\t' ends a cell. A line's last cell is wrapped, between
// words, in a column of its own, which never gets less than `lastColumnMinPercent` of `width`;
// where the cells before it would leave it less than `lastColumnOwnLinePercent` it starts on a new
// line.
std::string UsageScreen(std::span<const OptionDescriptor> table, int width,
                        int lastColumnMinPercent, int lastColumnOwnLinePercent);

// Printed, never parsed.
inline constexpr char kVersion[] = "012";

// The version and the scene library's version, as the first record of a run and the log have it.
std::string VersionText();

// The version lines, on standard output.
void PrintVersions();
// The usage screen of the option table, on standard output, `width` columns wide.
void PrintUsage(int width);
// Both, as wide as the environment variable COLUMNS says, or 80 columns.
void PrintHelp();

void PrintExportHelp();
void PrintExportMeshHelp();
void PrintExportSkelHelp();
void PrintListHelp();
void PrintListTextureHelp();
void PrintListMeshHelp();
void PrintListNodeHelp();
