#include "converter/driver/command_set.h"

#include <cstdio>

#include "converter/driver/cal3d_to_text.h"
#include "converter/driver/help.h"
#include "converter/driver/log.h"

int processCommandSet(ConversionArguments args) {
  LOG_INFO("processCommandSet: " + args.toString());
  if (args.option == ConversionArguments::HELP) {
    PrintHelp();
    if (args.verbosity != 0) PrintExportHelp();
    return 0;
  }
  if (args.verbosity != 0) std::fputs(args.toString().c_str(), stdout);
  if (args.mode == CAL3D_2_TEXT_MODE) return Cal3d2Text(args) ? 1 : 0;
  return 0;
}
