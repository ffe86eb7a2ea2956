// The one way to standard output. Calling tools read it line by line, records and the traces of
// verbose commands alike, so nothing else in the converter writes there: one stream keeps all texts
// in their order. A closed or full standard output stops no command; it is for the end of a program
// to tell what was lost.
#pragma once

#include <functional>
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
