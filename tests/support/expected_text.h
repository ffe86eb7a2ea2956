// Texts that tests expect, kept in files.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"

inline void ExpectSame(const std::string& result, const std::string& expected) {
  const auto at = std::mismatch(result.begin(), result.end(), expected.begin(), expected.end());
  EXPECT_TRUE(result == expected) << std::string(at.first, result.end()).substr(0, 200);
}

// The text in a file, which VELTRUM_UPDATE=1 writes anew.
inline void ExpectKept(const std::string& result, const std::string& path) {
  if (std::getenv("VELTRUM_UPDATE") != nullptr) std::ofstream(path) << result;
  ExpectSame(result, ReadFile(path));
}
