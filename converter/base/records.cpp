#include "converter/base/records.h"

#include "converter/base/log.h"
#include "converter/base/output.h"

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
