// What a piece of code prints on standard output.
#pragma once

#include <string>

#include <gtest/gtest.h>

template <typename Write>
std::string Printed(Write write) {
  testing::internal::CaptureStdout();
  write();
  return testing::internal::GetCapturedStdout();
}
