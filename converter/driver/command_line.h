// From the argument vector to commands, and their run. All commands are parsed, and the errors of
// all reported, before the first one runs.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "converter/base/conversion_arguments.h"
#include "converter/driver/command_file.h"
#include "converter/driver/option_parser.h"

// Runs the program on its arguments without the program's name. Returns the exit status: that of
// the last command that ran, 0 if none did. Nothing happens unless the first argument is "-2".
int parseArguments(std::span<const std::string> arguments);

// "COMMAND: ", each word with a blank before it, and a newline: for the log.
std::string commandLine(std::span<const std::string> words);

// Cuts the words at each lone "-" and parses every piece. An empty piece ends the reading; no piece
// at all gives one help record. `openFiles` are the command files that the words come from.
std::vector<ConversionArguments> breakCommandlineIntoSegments(std::span<const std::string> words,
                                                              const OpenCommandFile* openFiles);

// The records of one command: normally one, or those of a command file. `numArgs` is the number of
// the command's words; 0 makes it a help record. Throws std::out_of_range if a scene is expected
// and its name is too short to hold an extension.
std::vector<ConversionArguments> processCommandLineSegment(const OptionParser& parser,
                                                           size_t numArgs,
                                                           const OpenCommandFile* openFiles);
