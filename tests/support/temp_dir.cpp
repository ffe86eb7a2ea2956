#include "tests/support/temp_dir.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>
#include <stdlib.h>

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "veltrum-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "no temporary folder";
  path_ = pattern;
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::File(std::string_view name) const { return path_ + "/" + std::string(name); }

std::string TempDir::Write(std::string_view name, std::string_view bytes) const {
  std::string path = File(name);
  std::ofstream out(path, std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return path;
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) ADD_FAILURE() << "can't read " << path;
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

bool FileExists(const std::string& path) { return std::filesystem::exists(path); }
