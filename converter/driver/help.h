// What the program prints about itself: its version and its help screens.
#pragma once

#include <string>

// Printed, never parsed.
inline constexpr char kVersion[] = "012";

// The version and the scene library's version, as the first record of a run and the log have it.
std::string VersionText();

// The version lines, on standard output.
void PrintVersions();
// The usage screen of the option table, on standard output, `width` columns wide.
void PrintUsage(int width);
// Both, as wide as the environment variable COLUMNS says, or 80 columns.
void PrintHelp();

void PrintExportHelp();
void PrintExportMeshHelp();
void PrintExportSkelHelp();
void PrintListHelp();
void PrintListTextureHelp();
void PrintListMeshHelp();
void PrintListNodeHelp();
