// The head of a record in a binary scene file: three offset words, and the name.
#pragma once

#include <cstdint>
#include <string_view>

#include "fbx/io/fbx_byte_source.h"
#include "fbx/io/fbx_io_field_list.h"

struct FbxBinaryRecord {
  // Position of the next record; 0 for the null record, which ends a list. The null record's other
  // members stay unset.
  int64_t end = 0;
  int64_t valueCount = 0;
  int64_t valueBytes = 0;
  std::string_view name;
  // Position of the value block.
  int64_t values = 0;

  bool IsNull() const { return end == 0; }
  bool HasBlock() const { return values + valueBytes < end; }

  // Bytes of the null record.
  static int64_t NullSize(const FbxIOListFormat& format);
  // Reads the record at `position`. False if it isn't all there, doesn't lie between `position` and
  // `limit`, or its values don't lie within it. The name is valid until the source is used again.
  bool Read(FbxByteSource& source, const FbxIOListFormat& format, int64_t position, int64_t limit);
};
