// Files that are read whole.
#pragma once

#include <string>

// The bytes of a regular file. Throws std::runtime_error, which names the path in brackets, when it
// isn't one or can't be read.
std::string ReadInputFile(const std::string& path);
