// The labelled records on standard output that calling tools read line by line: a label, ": ", a
// value, and a newline or a blank, so that several records can make one line. A newline flushes.
// Every record is copied to the log, when one is open, exactly as it stands.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// An empty label writes no ": ". Standard output may be closed or full.
void AddOutput(std::string_view label, std::string_view value, bool newline);
// Continues a line: a record without a label.
void AddOutput(std::string_view value, bool newline);
void AddOutput(std::string_view label, int64_t number, bool newline);

void AddError(std::string_view text);
void AddWarning(std::string_view text);

// One animation's listing line. Times are frame numbers; the reference span is left out when its
// start and end are those of the animation.
void AddAnimOutput(std::string_view name, std::string_view mode, std::string_view protocol,
                   int64_t start, int64_t end, int64_t duration, int64_t referenceStart,
                   int64_t referenceEnd, int64_t referenceDuration, bool isMorph);

// Keeps letters, digits and "-_.~"; any other byte becomes "%" and its value in upper-case
// hexadecimal, taken as a signed char and padded with a blank: "% 9" for a tab, "%FFFFFFC3" for
// 0xC3. Names on disk depend on these forms. An empty text becomes "unnamed".
std::string urlencode(std::string_view text);
// urlencode(name) if `flag` is set, otherwise `name`.
std::string encodeName(bool flag, std::string_view name);
