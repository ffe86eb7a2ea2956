// Reads a Cal3D file and saves it again under another name, which is how a binary file becomes a
// readable one.
#pragma once

#include "converter/base/conversion_arguments.h"

// Loads `inputFilename` as the kind that `type` says (skeleton, mesh or animation, in this order of
// its bits, never by the file's name or content) and saves it as `outputFilename`. Returns whether
// that file was written; false without loading anything for any other type. Throws
// std::runtime_error if the input can't be read or is no good file of its kind.
bool Cal3d2Text(const ConversionArguments& args);
