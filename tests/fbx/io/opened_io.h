// An FbxIO on bytes in memory, with its main section open, for the tests of the container.
#pragma once

#include <string>
#include <utility>

#include "fbx/io/fbx_io.h"
#include "tests/support/fbx_records.h"

struct OpenedIO {
  OpenedIO(std::string fileBytes, FbxIO::BinaryType type = FbxIO::eBinary32)
      : bytes(std::move(fileBytes)), io(type, status) {
    io.Fbx7Support(true);
    isOpen = io.ProjectOpen(bytes, false, &info);
    isRead = isOpen && io.ProjectOpenMainSection();
  }

  std::string bytes;
  FbxStatus status;
  FbxIOFileHeaderInfo info;
  FbxIO io;
  // Whether the file opened, and whether its main section did, too.
  bool isOpen = false;
  bool isRead = false;
};

// A document's top list: header block, file id and creation time, then `records`.
inline FbxRecords WithHeader(FbxRecords records, int version = 7400) {
  FbxRecords all = {
      {"FBXHeaderExtension", {}, {{"FBXHeaderVersion", {1003}}, {"FBXVersion", {version}}}},
      {"FileId", {FbxRaw{std::string(16, 'x')}}},
      {"CreationTime", {"2024-02-29 12:34:56:789"}}};
  all.insert(all.end(), records.begin(), records.end());
  return all;
}

inline std::string MakeFile(FbxRecords records, const FbxFormat& format = {}) {
  return WriteFbx(WithHeader(std::move(records), format.version), format);
}

inline std::string MakeAscii(const std::string& text) {
  return "; FBX 7.4.0 project file\nFBXHeaderExtension:  {\n\tFBXVersion: 7400\n}\n" + text;
}
