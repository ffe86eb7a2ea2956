// The one way to standard output, and the labelled records on it: a label, ": ", a value, and a
// newline or a blank, so that several records can make one line. Calling tools read it line by
// line, records and the traces of verbose commands alike, so nothing else in the converter writes
// there: one stream keeps all texts in their order. A closed or full standard output stops no
// command; it is for the end of a program to tell what was lost.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

// The text as it stands, zero bytes included. It may stay in the stream's buffer.
void Print(std::string_view text);
// Formats as std::printf does.
[[gnu::format(printf, 1, 2)]] void PrintFormatted(const char* format, ...);
// What was printed so far reaches whoever reads it.
void FlushOutput();
// The errno of the first text that standard output didn't take, 0 if it took all.
int OutputError();

// From now on texts go there instead; empty for standard output again. For programs that turn the
// records into something else.
void RedirectOutput(std::function<void(std::string_view)> sink);

// A record. A newline flushes. Every record is copied to the log, when one is open, exactly as it
// stands. An empty label writes no ": ". Standard output may be closed or full.
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
