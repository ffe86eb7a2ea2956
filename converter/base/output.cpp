#include "converter/base/output.h"

#include <cstdarg>
#include <cstdio>

void Print(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stdout); }

void PrintFormatted(const char* format, ...) {
  va_list values;
  va_start(values, format);
  std::vprintf(format, values);
  va_end(values);
}

void FlushOutput() { std::fflush(stdout); }
