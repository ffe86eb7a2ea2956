// Runs one parsed command: the only place that knows what a mode and a type mean.
#pragma once

#include "converter/base/conversion_arguments.h"
#include "converter/driver/session.h"

// Returns the command's exit status: 1 if its mesh export failed or if it converted a Cal3D file to
// text, otherwise 0. Standard exceptions on the way become ERROR records and status 0, but for
// those of the conversion to text, which go up. The scene stays in `session`.
int processCommandSet(ConversionArguments args, Session& session = Session::OfProgram());
