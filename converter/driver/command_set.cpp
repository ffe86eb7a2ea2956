#include "converter/driver/command_set.h"

#include <cstdio>

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
  return 0;
}
