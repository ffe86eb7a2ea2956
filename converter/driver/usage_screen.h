// Lays out the help texts of an option table as a screen of text in columns.
#pragma once

#include <span>
#include <string>

#include "converter/driver/option_parser.h"

// In a help text '\n' ends a line and '\t' ends a cell. A line's last cell is wrapped, between
// words, in a column of its own, which never gets less than `lastColumnMinPercent` of `width`;
// where the cells before it would leave it less than `lastColumnOwnLinePercent` it starts on a new
// line.
std::string UsageScreen(std::span<const OptionDescriptor> table, int width,
                        int lastColumnMinPercent, int lastColumnOwnLinePercent);
