// Access to a parsed XML document in the way that our files need it: names in any case, numbers
// checked to the last character, and errors that tell the element and its place in the file. The
// names that these functions take are in upper case.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>

#include <pugixml.hpp>

#include "cal3d/io/file_format.h"

// The document of one file. Neither walking nor destroying it recurses, so nesting of any depth is
// harmless.
class XmlFile {
 public:
  // Throws std::runtime_error unless the text is well-formed, its root has the name of that kind,
  // and the kind's magic and a version that we read stand on the root or on a HEADER element before
  // it.
  XmlFile(std::string_view text, const CalFileKind& kind);

  pugi::xml_node Root() const { return root_; }

 private:
  pugi::xml_document document_;
  pugi::xml_node root_;
};

// An error whose text tells the element and its offset in the file.
std::runtime_error XmlError(pugi::xml_node element, const std::string& fault);

// Whether the node is an element of that name.
bool IsElement(pugi::xml_node node, std::string_view name);
size_t CountElements(pugi::xml_node parent, std::string_view name);

// The value of an attribute; null, or an error, if it isn't there. It lives as long as the
// document.
const char* FindAttribute(pugi::xml_node element, std::string_view name);
const char* RequiredAttribute(pugi::xml_node element, std::string_view name);
// An attribute that numbers or counts something: if it is there, it must hold `expected`.
void CheckAttribute(pugi::xml_node element, std::string_view name, size_t expected);

// Fills `numbers` from a text of the element; throws unless it holds just as many.
void ParseNumbers(pugi::xml_node element, const char* text, std::span<float> numbers);
void ParseNumbers(pugi::xml_node element, const char* text, std::span<int32_t> numbers);

// Parses into a value whose constituents are `Count` numbers.
template <typename Value, typename Number, size_t Count>
Value Parse(pugi::xml_node element, const char* text) {
  std::array<Number, Count> numbers;
  ParseNumbers(element, text, numbers);
  return std::apply([](auto... each) { return Value{each...}; }, numbers);
}

// The value of a child element that must have been met.
template <typename Value>
const Value& Require(const std::optional<Value>& value, pugi::xml_node element,
                     std::string_view child) {
  if (!value) throw XmlError(element, "the element " + std::string(child) + " is missing");
  return *value;
}
