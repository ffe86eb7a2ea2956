// Numbers as the XML files spell them, never by the locale. Both directions sit in the innermost
// loop of a save or a load.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

// The most characters that a number takes.
inline constexpr std::size_t kLongestNumber = 16;

// Write the number at `at`, where there is room for kLongestNumber characters, and return the end
// of the text. A float gets the shortest decimal text that reads back to the same value, and "0" if
// it isn't finite.
char* WriteNumber(char* at, float value);
char* WriteNumber(char* at, std::int32_t value);

// Reads exactly as many numbers as there is room for, with white space around and between them.
// False if the text is anything else. A number too small for a float becomes the nearest one; one
// too large, and one that isn't finite, is no number.
bool ReadNumbers(std::string_view text, std::span<float> numbers);
bool ReadNumbers(std::string_view text, std::span<std::int32_t> numbers);
