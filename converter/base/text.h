// Classes of characters, whatever the locale.
#pragma once

inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }
// What "." doesn't match in a regular expression.
inline bool IsLineEnd(char c) { return c == '\n' || c == '\r'; }
