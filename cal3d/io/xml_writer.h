// A streaming writer of XML in our layout: one element a line, two blanks a level. It keeps nothing
// but the depth; a tree of a mesh with a million vertices would cost gigabytes.
//
// Element and attribute names are taken as they are, and values of strings are escaped.
#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>

#include "cal3d/io/number_text.h"
#include "cal3d/io/output_file.h"

enum class XmlPlace { kAttribute, kText };

// The text as it may stand in an attribute or between tags, in UTF-8. Bytes that are no UTF-8 are
// taken as Latin-1; what XML can't hold becomes '?'.
std::string EscapeXml(std::string_view text, XmlPlace place);

class XmlWriter {
 public:
  explicit XmlWriter(OutputFile& file) : file_(file) {}

  // Begins an element; attributes may follow, then one of the four ways to go on below.
  void Start(std::string_view name) {
    char* at = Indent(file_.Room());
    *at++ = '<';
    file_.Advance(Copy(at, name));
  }

  void Attribute(std::string_view name, int32_t value) { NumberAttribute(name, {value}); }
  void Attribute(std::string_view name, std::initializer_list<float> values) {
    NumberAttribute(name, values);
  }
  void Attribute(std::string_view name, std::initializer_list<int32_t> values) {
    NumberAttribute(name, values);
  }
  void Attribute(std::string_view name, std::string_view value) {
    char* at = AttributeName(file_.Room(), name);
    file_.Advance(at);
    file_.Append(EscapeXml(value, XmlPlace::kAttribute));
    file_.Append("\"");
  }

  // The element holds other elements, up to the matching End.
  void OpenChildren() {
    file_.Advance(Copy(file_.Room(), ">\n"));
    ++depth_;
  }
  void End(std::string_view name) {
    --depth_;
    file_.Advance(Close(Indent(file_.Room()), name));
  }
  // The element holds nothing.
  void EndEmpty() { file_.Advance(Copy(file_.Room(), " />\n")); }
  // The element holds one number.
  void EndWith(float value, std::string_view name) {
    char* at = file_.Room();
    *at++ = '>';
    file_.Advance(Close(WriteNumber(at, value), name));
  }
  // The element holds a text.
  void EndWith(std::string_view text, std::string_view name) {
    file_.Append(">");
    file_.Append(EscapeXml(text, XmlPlace::kText));
    file_.Advance(Close(file_.Room(), name));
  }

  // A whole element without attributes that holds numbers.
  void Element(std::string_view name, std::initializer_list<float> values) {
    NumberElement(name, values);
  }
  void Element(std::string_view name, std::initializer_list<int32_t> values) {
    NumberElement(name, values);
  }
  // The same with numbers that are text already, of a line at most.
  void TextElement(std::string_view name, std::string_view numbers) {
    file_.Advance(Close(Copy(OpenTag(file_.Room(), name), numbers), name));
  }

 private:
  // Everything here writes through a local pointer: through a member, each character stored could
  // change the member itself, as far as the compiler knows.
  static char* Copy(char* at, std::string_view text) {
    std::memcpy(at, text.data(), text.size());
    return at + text.size();
  }

  char* Indent(char* at) const {
    // A constant number becomes one store; a call for a few blanks costs more than the blanks.
    constexpr size_t kUsual = 16;
    const size_t blanks = 2 * depth_;
    std::memset(at, ' ', kUsual);
    if (blanks > kUsual) std::memset(at, ' ', blanks);
    return at + blanks;
  }

  char* OpenTag(char* at, std::string_view name) const {
    at = Indent(at);
    *at++ = '<';
    at = Copy(at, name);
    *at++ = '>';
    return at;
  }

  static char* AttributeName(char* at, std::string_view name) {
    *at++ = ' ';
    return Copy(Copy(at, name), "=\"");
  }

  static char* Close(char* at, std::string_view name) {
    return Copy(Copy(Copy(at, "</"), name), ">\n");
  }

  template <typename Number>
  static char* Numbers(char* at, std::initializer_list<Number> values) {
    for (const Number& value : values) {
      if (&value != values.begin()) *at++ = ' ';
      at = WriteNumber(at, value);
    }
    return at;
  }

  template <typename Number>
  void NumberAttribute(std::string_view name, std::initializer_list<Number> values) {
    char* at = Numbers(AttributeName(file_.Room(), name), values);
    *at++ = '"';
    file_.Advance(at);
  }

  template <typename Number>
  void NumberElement(std::string_view name, std::initializer_list<Number> values) {
    file_.Advance(Close(Numbers(OpenTag(file_.Room(), name), values), name));
  }

  OutputFile& file_;
  size_t depth_ = 0;
};
