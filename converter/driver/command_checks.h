// What a command's words can hardly mean, told on standard error. Nothing here changes what the
// command does.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "converter/base/conversion_arguments.h"

class FbxWrapper;

// Whether the option table knows the word.
bool IsOption(const std::string& word);

// An option that stands behind the scene, where it is taken as `meaning`, such as "a type".
void CheckForOption(const std::string& word, const char* meaning);
// A value of --scale that isn't wholly a finite number, or 0; `scale` is what it counts as.
void CheckScale(const std::string& value, float scale);
// A log of that name that nothing opens.
void CheckLog(const std::string& name);
// Axes that leave the coordinates as they are, and a word of --coord that has no meaning.
void CheckAxes(const ConversionArguments& args);
// Names of objects that are options.
void CheckNames(const ConversionArguments& args);

// Names where none are taken or some are needed, and a root that isn't there or is missing. The
// scene is the loaded one.
void CheckCommand(FbxWrapper& scene, const ConversionArguments& args);
