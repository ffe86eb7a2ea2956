#include "converter/base/output.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <utility>

namespace {

std::function<void(std::string_view)>& Sink() {
  static std::function<void(std::string_view)> sink;
  return sink;
}

int outputError = 0;

void Note(bool isTaken) {
  if (!isTaken && outputError == 0) outputError = errno;
}

}  // namespace

void Print(std::string_view text) {
  if (Sink()) {
    Sink()(text);
  } else {
    Note(std::fwrite(text.data(), 1, text.size(), stdout) == text.size());
  }
}

void PrintFormatted(const char* format, ...) {
  va_list values;
  va_start(values, format);
  if (Sink()) {
    va_list again;
    va_copy(again, values);
    std::string text(static_cast<size_t>(std::vsnprintf(nullptr, 0, format, again)) + 1, '\0');
    va_end(again);
    std::vsnprintf(text.data(), text.size(), format, values);
    text.pop_back();
    Sink()(text);
  } else {
    Note(std::vprintf(format, values) >= 0);
  }
  va_end(values);
}

void FlushOutput() { Note(std::fflush(stdout) == 0); }

int OutputError() { return outputError; }

void RedirectOutput(std::function<void(std::string_view)> sink) { Sink() = std::move(sink); }
