#include "cal3d/io/xml_writer.h"

#include <cstddef>

namespace {

// The length of the well-formed UTF-8 sequence of several bytes that `text` begins with; 0 if it
// doesn't begin with one (overlong forms and surrogates included).
size_t Utf8SequenceLength(std::string_view text) {
  const auto byte = [&text](size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  const size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
  if (length == 0 || length > text.size()) return 0;
  for (size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  if (lead == 0xE0 && byte(1) < 0xA0) return 0;
  if (lead == 0xED && byte(1) > 0x9F) return 0;
  if (lead == 0xF0 && byte(1) < 0x90) return 0;
  if (lead == 0xF4 && byte(1) > 0x8F) return 0;
  return length;
}

// U+FFFE and U+FFFF are good UTF-8, yet no characters of XML.
bool IsXmlCharacter(std::string_view sequence) {
  return sequence != "\xEF\xBF\xBE" && sequence != "\xEF\xBF\xBF";
}

void AppendByte(std::string& out, unsigned char byte, XmlPlace place) {
  switch (byte) {
    case '&':
      out += "&amp;";
      return;
    case '<':
      out += "&lt;";
      return;
    case '>':
      out += "&gt;";
      return;
    case '"':
      out += "&quot;";
      return;
    // A reader turns raw ones into blanks inside an attribute, and a raw carriage return into a
    // newline everywhere.
    case '\t':
      out += place == XmlPlace::kText ? "\t" : "&#9;";
      return;
    case '\n':
      out += place == XmlPlace::kText ? "\n" : "&#10;";
      return;
    case '\r':
      out += "&#13;";
      return;
    default:
      break;
  }
  if (byte < 0x20) {
    out += '?';
  } else if (byte < 0x80) {
    out += static_cast<char>(byte);
  } else {
    out += static_cast<char>(0xC0 | byte >> 6);
    out += static_cast<char>(0x80 | (byte & 0x3F));
  }
}

}  // namespace

std::string EscapeXml(std::string_view text, XmlPlace place) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    size_t length = Utf8SequenceLength(text);
    if (length == 0) {
      AppendByte(out, static_cast<unsigned char>(text[0]), place);
      length = 1;
    } else if (IsXmlCharacter(text.substr(0, length))) {
      out += text.substr(0, length);
    } else {
      out += '?';
    }
    text.remove_prefix(length);
  }
  return out;
}
