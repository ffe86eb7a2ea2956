// Runs the built program as a user would, with its output and exit status
// caught.
#pragma once

#include <string>
#include <vector>

struct RunResult {
  int status = 0;  // exit status; 128 plus the signal's number if a signal ended
                   // the program
  std::string out;
  std::string err;
};

// Runs the program with `arguments` in the folder `directory`, with no standard
// input.
RunResult RunVeltrum(const std::vector<std::string>& arguments, const std::string& directory);

// Where a program is, beside the others; a whole path stays one.
std::string ProgramPath(const std::string& name);
// Runs a program by its name or its whole path.
RunResult RunProgram(const std::string& name, const std::vector<std::string>& arguments,
                     const std::string& directory);

// The folder of the sample scenes that the project ships.
std::string SamplesDirectory();
// The folder of the tests, some of which have scenes there.
std::string TestsDirectory();
