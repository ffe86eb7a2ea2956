// A small command-line option parser. The words are not permuted: options come first, and the first
// word that is no option ends them. Long names need two dashes and match in full; short options
// cluster, and one that needs a value takes the rest of its word, an "=" included.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

enum class ArgumentCheck { kNone, kRequired };

struct OptionDescriptor {
  int index;
  static constexpr int kType = 0;  // the type word of every row
  std::string_view shortName;
  std::string_view longName;
  ArgumentCheck check;
  std::string_view help;
};

struct ParsedOption {
  const OptionDescriptor* row;
  // These point into the parsed words. The argument is set for an option with a required value
  // only.
  std::optional<std::string_view> arg;
  std::string_view word;  // "--name", or from the option's letter to the end of its word
};

class OptionParser {
 public:
  // Parses `words`, which must outlive the parser, as must `table`. One row of the table has
  // neither a short nor a long name: unknown options go to it.
  OptionParser(std::span<const OptionDescriptor> table, std::span<const std::string> words);

  // In the order written.
  const std::vector<ParsedOption>& Options() const { return options_; }
  // The words from the first one that is no option.
  std::span<const std::string> Positional() const { return positional_; }
  // All words.
  std::span<const std::string> Words() const { return words_; }
  // What stopped the parsing, as a line of text; empty if nothing did.
  const std::string& Error() const { return error_; }

 private:
  const OptionDescriptor& FindLong(std::string_view name) const;
  const OptionDescriptor& FindShort(char letter) const;
  const OptionDescriptor& UnknownRow() const;
  // Both return how many words the option word took, itself included.
  size_t ParseLong(std::span<const std::string> rest);
  size_t ParseShortCluster(std::span<const std::string> rest);
  void Keep(const OptionDescriptor& row, std::optional<std::string_view> arg,
            std::string_view name);

  std::span<const OptionDescriptor> table_;
  std::span<const std::string> words_;
  std::vector<ParsedOption> options_;
  std::span<const std::string> positional_;
  std::string error_;
};
