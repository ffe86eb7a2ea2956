// Finds the first of many texts that holds a part, while texts drop out one after another. Asking
// each text would cost the square of their number where each is the one of a question.
//
// It is a suffix array of all texts: the suffixes that begin with a part are one range of it, and a
// tree above it knows the first text left in any range.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class SubstringIndex {
 public:
  // Of texts without zero bytes. No part that is asked for may be longer than `longestPart`.
  SubstringIndex(const std::vector<std::string_view>& texts, size_t longestPart);

  // The index of the text, -1 if none holds the part. Every text holds an empty part.
  int FirstHolding(std::string_view part) const;
  void Remove(int text);

 private:
  void SortSuffixes(size_t length);
  void BuildTree();

  std::string all_;                  // the texts, each closed by a zero byte
  std::vector<uint32_t> begins_;     // of each text in `all_`, and the end
  std::vector<uint32_t> suffixes_;   // where each begins in `all_`, sorted
  std::vector<uint32_t> ranks_;      // the inverse of it: the place of each suffix in the order
  std::vector<uint32_t> firstLeft_;  // the tree, root at 1, leaves at the end: lowest text left
};
