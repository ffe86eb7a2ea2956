// Numbers as text, never by the locale. WriteNumber and ReadNumbers are what the XML files use, in
// the innermost loop of a save or a load.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// The most room that writing a number takes.
inline constexpr size_t kLongestNumber = 20;

// Write the number at `at`, where there is room for kLongestNumber characters, and return the end
// of the text. A float gets the shortest decimal text that reads back to the same value, and "0" if
// it isn't finite.
char* WriteNumber(char* at, float value);
char* WriteNumber(char* at, int32_t value);

// Reads exactly as many numbers as there is room for, with white space around and between them.
// False if the text is anything else. A number too small for a float becomes the nearest one; one
// too large, and one that isn't finite, is no number.
bool ReadNumbers(std::string_view text, std::span<float> numbers);
bool ReadNumbers(std::string_view text, std::span<int32_t> numbers);

// Append the number to a text: the digits of a whole one, six significant digits of a float, as an
// output stream prints it by default ("1e+06", "inf").
void AppendNumber(std::string& text, int64_t value);
void AppendNumber(std::string& text, float value);

// "1 mesh", "2 meshes": for people.
std::string Counted(size_t count, std::string_view noun, std::string_view ending = "s");
