#include "fbx/io/binary_record.h"

#include <array>
#include <limits>

#include "fbx/io/byte_order.h"

int64_t FbxBinaryRecord::NullSize(const FbxIOListFormat& format) {
  return static_cast<int64_t>(3 * format.offsetWidth + 1);
}

bool FbxBinaryRecord::Read(FbxByteSource& source, const FbxIOListFormat& format, int64_t position,
                           int64_t limit) {
  constexpr size_t kLongestName = 255;
  const size_t width = format.offsetWidth;
  const size_t fixed = 3 * width + 1;
  std::string_view bytes = source.View(position, fixed + kLongestName);
  const auto word = [&](size_t index) -> int64_t {
    const char* at = bytes.data() + index * width;
    return width == 8 ? LoadNumber<int64_t>(at, format.swap)
                      : int64_t{LoadNumber<uint32_t>(at, format.swap)};
  };
  if (bytes.size() < width) return false;
  end = word(0);
  if (IsNull()) return true;
  if (bytes.size() < fixed || end <= position || end > limit) return false;

  valueCount = word(1);
  valueBytes = word(2);
  const size_t nameLength = static_cast<unsigned char>(bytes[fixed - 1]);
  values = position + static_cast<int64_t>(fixed + nameLength);
  if (bytes.size() < fixed + nameLength || valueBytes < 0 || valueCount < 0 || values > end ||
      valueBytes > end - values || valueBytes > std::numeric_limits<int32_t>::max() ||
      valueCount > std::numeric_limits<int32_t>::max()) {
    return false;
  }
  name = bytes.substr(fixed, nameLength);
  return true;
}
