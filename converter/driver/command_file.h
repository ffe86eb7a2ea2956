// Command files: many commands in one text file, read before any of them runs. The words of all
// lines form one flat list; line ends only end words.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "converter/base/conversion_arguments.h"

// A command file whose words are being parsed, and the one that named it: a file that is met again
// inside itself would never come to an end.
struct OpenCommandFile {
  std::string path;
  const OpenCommandFile* outer;
};

// Adds the words of one line. Words are separated by blanks, not tabs; a quote opens a word that
// can hold blanks only where it stands before the next blank, and never in the last word of a line,
// which keeps its quotes.
void SplitCommandFileLine(std::string_view line, std::vector<std::string>& words);

// The commands of the file named by a command file option with the value `value`. A file that can't
// be opened gives a help record. Throws std::runtime_error for one that fails while being read, so
// that no command runs: half of its words could mean anything.
std::vector<ConversionArguments> ReadCommandFile(std::string_view value,
                                                 const OpenCommandFile* openFiles);
