// The option table of the command line. Its order is the order of the usage screen.
#pragma once

#include <span>

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

extern const std::span<const OptionDescriptor> usagev2;
