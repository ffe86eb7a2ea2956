// Fixtures of the tests that run the program: each test has a folder of its
// own, in which the program runs, and those of scenes have a scene that every
// run finds there as "s.fbx".
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/run_program.h"
#include "tests/support/scene_builder.h"
#include "tests/support/temp_dir.h"

using Words = std::vector<std::string>;

inline const std::string kVersionLine = "VERSION: 012 FBX lib version 1.0.0\n";

class ProgramTest : public testing::Test {
 protected:
  // What the program prints behind its version record; `arguments` follow the
  // "-2".
  std::string Run(Words arguments, int expectedStatus = 0) {
    arguments.insert(arguments.begin(), "-2");
    run_ = RunVeltrum(arguments, dir_.Path());
    EXPECT_EQ(run_.status, expectedStatus) << run_.err;
    EXPECT_TRUE(run_.out.starts_with(kVersionLine)) << run_.out;
    return run_.out.substr(std::min(kVersionLine.size(), run_.out.size()));
  }

  std::string File(const std::string& name) const { return ReadFile(dir_.File(name)); }
  bool Exists(const std::string& name) const { return FileExists(dir_.File(name)); }

  TempDir dir_;
  RunResult run_;
};

class SceneTest : public ProgramTest {
 protected:
  std::string Run(const Words& arguments, int expectedStatus = 0) {
    dir_.Write("s.fbx", scene_.Write());
    return ProgramTest::Run(arguments, expectedStatus);
  }

  SceneBuilder scene_;
};
