#include "converter/base/records.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <utility>

#include "converter/base/log.h"

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

void AddOutput(std::string_view label, std::string_view value, bool newline) {
  std::string record;
  record.reserve(label.size() + value.size() + 3);
  if (!label.empty()) {
    record += label;
    record += ": ";
  }
  record += value;
  record += newline ? '\n' : ' ';
  if (LogIsOpen()) FileLog(false) << record;
  Print(record);
  if (newline) FlushOutput();
}

void AddOutput(std::string_view value, bool newline) { AddOutput({}, value, newline); }

void AddOutput(std::string_view label, int64_t number, bool newline) {
  AddOutput(label, std::to_string(number), newline);
}

void AddError(std::string_view text) { AddOutput("ERROR", text, true); }

void AddWarning(std::string_view text) { AddOutput("WARNING", text, true); }

void AddAnimOutput(std::string_view name, std::string_view mode, std::string_view protocol,
                   int64_t start, int64_t end, int64_t duration, int64_t referenceStart,
                   int64_t referenceEnd, int64_t referenceDuration, bool isMorph) {
  AddOutput(isMorph ? "MORPH" : "ANIM", name, false);
  AddOutput("MODE", mode, false);
  AddOutput("PROTOCOL", protocol, false);
  AddOutput("START", start, false);
  AddOutput("END", end, false);
  const bool sameSpan = referenceStart == start && referenceEnd == end;
  AddOutput("DURATION", duration, sameSpan);
  if (sameSpan) return;
  AddOutput("REFERENCE_START", referenceStart, false);
  AddOutput("REFERENCE_END", referenceEnd, false);
  AddOutput("REFERENCE_DURATION", referenceDuration, true);
}

std::string urlencode(std::string_view text) {
  constexpr std::string_view kSafe =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.~";
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string encoded;
  for (const char c : text) {
    if (kSafe.find(c) != std::string_view::npos) {
      encoded += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    encoded += '%';
    if (byte >= 0x80) encoded += "FFFFFF";
    encoded += byte < 0x10 ? ' ' : kDigits[byte >> 4U];
    encoded += kDigits[byte & 0xFU];
  }
  return encoded.empty() ? "unnamed" : encoded;
}

std::string encodeName(bool flag, std::string_view name) {
  return flag ? urlencode(name) : std::string(name);
}
