// Pictures as a .glb embeds them: PNG and JPEG as they are, Targa and Windows bitmaps as PNG.
//
// The bytes are untrusted: sizes are limited before anything is decoded.
#pragma once

#include <string>

struct Picture {
  std::string bytes;
  std::string mimeType;
};

// Throws std::runtime_error, in words that go behind a file's name, when the bytes are no picture
// of those kinds, or one of more than 16,384 points a side.
Picture EmbeddedPicture(const std::string& file);

enum class Opacity { kFull, kCutOut, kBlended };

// The picture with the other one's opacity as its alpha: its alpha where it has one, else its
// brightness; `base` may be null for white. Tells how the opacity is spread. Throws as above.
Picture PictureWithOpacity(const std::string* base, const std::string& opacity, Opacity& spread);

// What stands in for a missing texture.
Picture Checker();
