// File names, paths and the texts that come from the command line. A path is bytes: nothing is
// normalised or re-encoded.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "converter/base/conversion_arguments.h"

// `directory` is expected to end in its separator already; none is added.
std::string prependPathToFileName(std::string_view directory, std::string_view fileName);
// Where an object of that name goes: the output directory, the encoded name, the kind's extension.
std::string OutputPath(const ConversionArguments& args, std::string_view name,
                       const ObjectKind& kind);
// Takes off a pair of enclosing quotes from a text of at least 3 characters.
std::string removeUnneededDoubleQuotes(std::string_view text);
// The pieces between separators; one empty piece for an empty text.
std::vector<std::string> Split(std::string_view text, char separator);
// -1 if `character` does not occur.
int lastIndexOf(const char* text, char character);
// ASCII letters only.
std::string ToLower(std::string_view text);

// The last component of a path, with its extension; both names mean the same.
std::string getBaseFilenameFromFBXFileName(const std::string& path);
std::string getBaseFilenameWithExtension(const std::string& path);
// The path up to its first ".fbx" in any case; the whole path without one.
std::string getBaseDirectoryFromFBXFileName(const std::string& path);
// The text behind the last "/" or "\".
std::string getFileNameFromPath(std::string_view path);

bool isDirectory(const std::string& path);
// A directory exists too. False if the status can't be read.
bool fileExists(const std::string& path);
// One level. Throws the file system's error if it can't be made.
void CheckDirectoryExistsAndCreate(const std::string& path);
// The full paths of the plain files in a directory, in the order the system gives them; empty if
// `path` is no readable directory.
std::vector<std::string> ListFilesInDirectory(const std::string& path);

// The warning for a file extension that decides the object type.
void warnOfTypeOverrideByFileExtension(ObjectType oldType, const std::string& extension,
                                       ObjectType newType);
