#include "converter/skeleton/substring_index.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace {

constexpr uint32_t kNoText = std::numeric_limits<uint32_t>::max();

}  // namespace

SubstringIndex::SubstringIndex(const std::vector<std::string_view>& texts, size_t longestPart) {
  size_t longestText = 0;
  for (const std::string_view text : texts) {
    longestText = std::max(longestText, text.size());
    begins_.push_back(static_cast<uint32_t>(all_.size()));
    all_.append(text).push_back('\0');
  }
  begins_.push_back(static_cast<uint32_t>(all_.size()));
  // Behind a text's zero byte nothing can agree with a part.
  SortSuffixes(std::min(longestPart, longestText + 1));
  BuildTree();
}

// By their first `length` bytes at least. Sorts by eight bytes, then by prefix doubling: where the
// groups of suffixes that agree in n bytes are known, a pair of them orders by 2 n bytes.
void SubstringIndex::SortSuffixes(size_t length) {
  const size_t count = all_.size();
  suffixes_.resize(count);
  std::iota(suffixes_.begin(), suffixes_.end(), 0U);
  std::vector<uint64_t> keys(count + 1, 0);
  for (size_t i = count; i-- > 0;) {
    keys[i] = keys[i + 1] >> 8U | uint64_t{static_cast<unsigned char>(all_[i])} << 56U;
  }
  std::vector<uint32_t> groups(count);
  for (size_t sorted = sizeof(uint64_t);; sorted *= 2) {
    std::sort(suffixes_.begin(), suffixes_.end(),
              [&](uint32_t a, uint32_t b) { return keys[a] < keys[b]; });
    if (sorted >= length) return;
    uint32_t group = 0;
    for (size_t i = 0; i < count; ++i) {
      if (i > 0 && keys[suffixes_[i]] != keys[suffixes_[i - 1]]) ++group;
      groups[suffixes_[i]] = group;
    }
    for (size_t i = 0; i < count; ++i) {
      const uint64_t behind = i + sorted < count ? uint64_t{groups[i + sorted]} + 1 : 0;
      keys[i] = uint64_t{groups[i]} << 32U | behind;
    }
  }
}

void SubstringIndex::BuildTree() {
  const size_t count = suffixes_.size();
  ranks_.resize(count);
  for (size_t rank = 0; rank < count; ++rank) {
    ranks_[suffixes_[rank]] = static_cast<uint32_t>(rank);
  }
  firstLeft_.assign(2 * count, kNoText);
  for (size_t text = 0; text + 1 < begins_.size(); ++text) {
    for (uint32_t at = begins_[text]; at < begins_[text + 1]; ++at) {
      firstLeft_[count + ranks_[at]] = static_cast<uint32_t>(text);
    }
  }
  for (size_t i = count; i-- > 1;) {
    firstLeft_[i] = std::min(firstLeft_[2 * i], firstLeft_[2 * i + 1]);
  }
}

int SubstringIndex::FirstHolding(std::string_view part) const {
  const auto compare = [&](uint32_t suffix) { return all_.compare(suffix, part.size(), part); };
  const auto first = std::partition_point(suffixes_.begin(), suffixes_.end(),
                                          [&](uint32_t suffix) { return compare(suffix) < 0; });
  const auto last = std::partition_point(first, suffixes_.end(),
                                         [&](uint32_t suffix) { return compare(suffix) == 0; });
  uint32_t text = kNoText;
  auto from = static_cast<size_t>(first - suffixes_.begin()) + suffixes_.size();
  auto to = static_cast<size_t>(last - suffixes_.begin()) + suffixes_.size();
  for (; from < to; from /= 2, to /= 2) {
    if (from % 2 == 1) text = std::min(text, firstLeft_[from++]);
    if (to % 2 == 1) text = std::min(text, firstLeft_[--to]);
  }
  return text == kNoText ? -1 : static_cast<int>(text);
}

void SubstringIndex::Remove(int text) {
  const auto index = static_cast<size_t>(text);
  for (uint32_t at = begins_[index]; at < begins_[index + 1]; ++at) {
    size_t entry = suffixes_.size() + ranks_[at];
    firstLeft_[entry] = kNoText;
    for (entry /= 2; entry > 0; entry /= 2) {
      firstLeft_[entry] = std::min(firstLeft_[2 * entry], firstLeft_[2 * entry + 1]);
    }
  }
}
