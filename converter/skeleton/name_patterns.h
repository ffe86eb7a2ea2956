// Regular expressions over the names of nodes.
#pragma once

#include <regex>
#include <string_view>

using NameMatch = std::match_results<std::string_view::const_iterator>;

// What expressions are given of a name, which comes from a file and may be as long as it likes:
// std::regex calls itself for every character, and a search can cost the square of the length. At
// 256 bytes, which no tool's names reach, the most hostile name costs 1 microsecond a byte.
inline std::string_view MatchedPart(std::string_view name) { return name.substr(0, 256); }

// The first match in a text; its groups are empty where there is none.
inline NameMatch Search(std::string_view text, const std::regex& pattern) {
  NameMatch match;
  std::regex_search(text.begin(), text.end(), match, pattern);
  return match;
}

inline std::string_view Group(const NameMatch& match, size_t group) {
  if (!match[group].matched) return {};
  return {match[group].first, match[group].second};
}
