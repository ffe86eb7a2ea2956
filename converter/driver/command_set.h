// Runs one parsed command: the only place that knows what a mode and a type mean.
#pragma once

#include "converter/base/conversion_arguments.h"
#include "converter/driver/session.h"

// Returns the command's exit status: 1 if its mesh export failed or if it converted a Cal3D file to
// text, otherwise 0. Standard exceptions on the way become ERROR records and status 0, but for
// those of the conversion to text, which go up. The scene stays in `session`.
int processCommandSet(ConversionArguments args, Session& session = Session::OfProgram());

// Reads a Cal3D file and saves it again under another name, which is how a binary file becomes a
// readable one: loads `inputFilename` as the kind that `type` says (skeleton, mesh or animation, in
// this order of its bits, never by the file's name or content) and saves it as `outputFilename`.
// Returns whether that file was written; false without loading anything for any other type. Throws
// std::runtime_error if the input can't be read or is no good file of its kind.
bool Cal3d2Text(const ConversionArguments& args);
