#include "converter/driver/option_parser.h"

#include <algorithm>

OptionParser::OptionParser(std::span<const OptionDescriptor> table,
                           std::span<const std::string> words)
    : table_(table), words_(words), positional_(words) {
  while (error_.empty() && !positional_.empty()) {
    const std::string_view word = positional_.front();
    if (word.size() < 2 || word.front() != '-') return;
    if (word == "--") {
      positional_ = positional_.subspan(1);
      return;
    }
    const size_t taken = word[1] == '-' ? ParseLong(positional_) : ParseShortCluster(positional_);
    positional_ = positional_.subspan(taken);
  }
}

const OptionDescriptor& OptionParser::UnknownRow() const {
  return *std::find_if(table_.begin(), table_.end(), [](const OptionDescriptor& row) {
    return row.shortName.empty() && row.longName.empty();
  });
}

const OptionDescriptor& OptionParser::FindLong(std::string_view name) const {
  const auto row = std::find_if(table_.begin(), table_.end(), [name](const auto& candidate) {
    return !candidate.longName.empty() && candidate.longName == name;
  });
  return row == table_.end() ? UnknownRow() : *row;
}

const OptionDescriptor& OptionParser::FindShort(char letter) const {
  const auto row = std::find_if(table_.begin(), table_.end(), [letter](const auto& candidate) {
    return candidate.shortName == std::string_view(&letter, 1);
  });
  return row == table_.end() ? UnknownRow() : *row;
}

void OptionParser::Keep(const OptionDescriptor& row, std::optional<std::string_view> arg,
                        std::string_view name) {
  if (row.check == ArgumentCheck::kNone) {
    arg.reset();
  } else if (!arg || arg->empty()) {
    error_ = "Option '" + std::string(name) + "' requires an argument\n";
    return;
  }
  options_.push_back({&row, arg, name.substr(0, name.find('='))});
}

size_t OptionParser::ParseLong(std::span<const std::string> rest) {
  const std::string_view word = rest.front();
  const size_t equals = word.find('=');
  const OptionDescriptor& row = FindLong(word.substr(0, equals).substr(2));
  std::optional<std::string_view> arg;
  size_t taken = 1;
  if (equals != std::string_view::npos) {
    arg = word.substr(equals + 1);
  } else if (row.check == ArgumentCheck::kRequired && rest.size() > 1) {
    arg = rest[1];
    taken = 2;
  }
  Keep(row, arg, word);
  return taken;
}

size_t OptionParser::ParseShortCluster(std::span<const std::string> rest) {
  const std::string_view word = rest.front();
  for (size_t i = 1; i < word.size(); ++i) {
    const OptionDescriptor& row = FindShort(word[i]);
    if (row.check == ArgumentCheck::kNone) {
      Keep(row, std::nullopt, word.substr(i));
      continue;
    }
    const bool valueInWord = i + 1 < word.size();
    std::optional<std::string_view> arg;
    if (valueInWord) {
      arg = word.substr(i + 1);
    } else if (rest.size() > 1) {
      arg = rest[1];
    }
    Keep(row, arg, word.substr(i));
    return valueInWord || !arg ? 1 : 2;
  }
  return 1;
}
