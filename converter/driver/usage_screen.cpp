#include "converter/driver/usage_screen.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "converter/base/names.h"

namespace {

using Cells = std::vector<std::string>;

std::vector<Cells> LinesOfTable(std::span<const OptionDescriptor> table) {
  std::vector<Cells> lines;
  for (const OptionDescriptor& row : table) {
    for (const std::string& line : Split(row.help, '\n')) lines.push_back(Split(line, '\t'));
  }
  return lines;
}

size_t LeadingBlanks(std::string_view text) {
  return std::min(text.find_first_not_of(' '), text.size());
}

// Adds the words of `text` from column `indent` on, and goes on at that column of a new line where
// a word would pass `width`. Blanks between words stay as they are, those at a break go. Returns
// the column behind the last word.
size_t AppendWrapped(std::string& screen, std::string_view text, size_t indent, size_t width) {
  text.remove_prefix(LeadingBlanks(text));
  size_t column = indent;
  size_t blanks = 0;
  while (!text.empty()) {
    const size_t length = std::min(text.find(' '), text.size());
    if (column > indent && column + blanks + length > width) {
      screen += '\n';
      screen.append(indent, ' ');
      column = indent;
    } else {
      screen.append(blanks, ' ');
      column += blanks;
    }
    screen += text.substr(0, length);
    column += length;
    text.remove_prefix(length);
    blanks = LeadingBlanks(text);
    text.remove_prefix(blanks);
  }
  return column;
}

}  // namespace

std::string UsageScreen(std::span<const OptionDescriptor> table, int width,
                        int lastColumnMinPercent, int lastColumnOwnLinePercent) {
  const auto columns = static_cast<size_t>(std::max(width, 1));
  const auto allBut = [columns](int percent) {
    return columns * static_cast<size_t>(100 - percent) / 100;
  };
  const std::vector<Cells> lines = LinesOfTable(table);

  // Cells so wide that their line's last cell moves to a new line don't widen the column.
  const size_t widestCell = allBut(lastColumnOwnLinePercent);
  std::vector<size_t> widths;
  for (const Cells& cells : lines) {
    widths.resize(std::max(widths.size(), cells.size()));
    for (size_t i = 0; i + 1 < cells.size(); ++i) {
      if (cells[i].size() <= widestCell) widths[i] = std::max(widths[i], cells[i].size());
    }
  }

  std::string screen;
  for (const Cells& cells : lines) {
    std::string lead;
    size_t lastColumn = 0;
    for (size_t i = 0; i + 1 < cells.size(); ++i) {
      lead += cells[i];
      lastColumn += widths[i];
      if (lead.size() < lastColumn) lead.resize(lastColumn, ' ');
    }
    lastColumn = std::min(lastColumn, allBut(lastColumnMinPercent));

    size_t column = 0;
    if (const size_t indent = LeadingBlanks(lead); indent < lead.size()) {
      screen.append(indent, ' ');
      column = AppendWrapped(screen, lead, indent, columns);
      if (lead.size() > lastColumn) {
        screen += '\n';
        column = 0;
      }
    }
    const size_t indent = cells.size() > 1 ? lastColumn : LeadingBlanks(cells.back());
    if (LeadingBlanks(cells.back()) < cells.back().size()) {
      screen.append(indent - column, ' ');
      AppendWrapped(screen, cells.back(), indent, columns);
    }
    screen += '\n';
  }
  return screen;
}
