#include "cal3d/io/xml_reader.h"

#include <algorithm>

#include "cal3d/io/file_format.h"
#include "cal3d/io/model_check.h"
#include "cal3d/io/number_text.h"

namespace {

bool SameName(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, AsciiLower, AsciiLower);
}

// Messages repeat what a file says, which may be a megabyte of anything.
std::string Printable(std::string_view text) {
  constexpr size_t kMost = 40;
  std::string printable;
  for (const char c : text.substr(0, kMost)) printable += c < ' ' || c > '~' ? '?' : c;
  return text.size() > kMost ? printable + "..." : printable;
}

std::string Quoted(std::string_view text) {
  std::string quoted("\"");
  return quoted.append(Printable(text)).append("\"");
}

pugi::xml_node NextElement(pugi::xml_node node) {
  while (node && node.type() != pugi::node_element) node = node.next_sibling();
  return node;
}

template <typename Number>
void ParseOrThrow(pugi::xml_node element, const char* text, std::span<Number> numbers) {
  if (ReadNumbers(text, numbers)) return;
  throw XmlError(element,
                 Quoted(text) + (numbers.size() == 1
                                     ? " is no number"
                                     : " isn't " + std::to_string(numbers.size()) + " numbers"));
}

}  // namespace

XmlFile::XmlFile(std::string_view text, const CalFileKind& kind) {
  // The parser takes a NUL for the end and would leave the rest of the file unread.
  if (text.find('\0') != std::string_view::npos) {
    throw std::runtime_error("the XML text holds a NUL byte");
  }
  const unsigned options = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_wconv_attribute |
                           pugi::parse_eol | pugi::parse_embed_pcdata |
                           pugi::parse_ws_pcdata_single;  // a name of blanks is one
  const pugi::xml_parse_result result =
      document_.load_buffer(text.data(), text.size(), options, pugi::encoding_utf8);
  if (!result) {
    throw std::runtime_error("the XML is broken at byte " + std::to_string(result.offset) + ": " +
                             result.description());
  }
  root_ = NextElement(document_.first_child());
  pugi::xml_node marked = root_;
  if (IsElement(root_, "HEADER")) {
    root_ = NextElement(root_.next_sibling());
    if (!root_) throw XmlError(marked, "no element follows");
  }
  if (!IsElement(root_, kind.root)) {
    throw XmlError(root_, "the root element should be " + std::string(kind.root));
  }
  const std::string_view found = RequiredAttribute(marked, "MAGIC");
  if (found != kind.magic) {
    throw XmlError(marked, "the magic is " + Quoted(found) + ", not " + std::string(kind.magic));
  }
  CheckedVersion(Parse<int32_t, int32_t, 1>(marked, RequiredAttribute(marked, "VERSION")));
}

std::runtime_error XmlError(pugi::xml_node element, const std::string& fault) {
  std::string text("<");
  text.append(Printable(element.name())).append("> at byte ");
  text.append(std::to_string(element.offset_debug())).append(": ").append(fault);
  return std::runtime_error(text);
}

bool IsElement(pugi::xml_node node, std::string_view name) {
  return node.type() == pugi::node_element && SameName(node.name(), name);
}

size_t CountElements(pugi::xml_node parent, std::string_view name) {
  size_t count = 0;
  for (const pugi::xml_node child : parent) count += IsElement(child, name) ? 1 : 0;
  return count;
}

const char* FindAttribute(pugi::xml_node element, std::string_view name) {
  for (const pugi::xml_attribute attribute : element.attributes()) {
    if (SameName(attribute.name(), name)) return attribute.value();
  }
  return nullptr;
}

const char* RequiredAttribute(pugi::xml_node element, std::string_view name) {
  const char* value = FindAttribute(element, name);
  if (value == nullptr) {
    throw XmlError(element, "the attribute " + std::string(name) + " is missing");
  }
  return value;
}

void CheckAttribute(pugi::xml_node element, std::string_view name, size_t expected) {
  const char* text = FindAttribute(element, name);
  if (text == nullptr) return;
  const int32_t value = Parse<int32_t, int32_t, 1>(element, text);
  if (value >= 0 && static_cast<size_t>(value) == expected) return;
  throw XmlError(element, std::string(name) + " is " + std::to_string(value) + ", but should be " +
                              std::to_string(expected));
}

void ParseNumbers(pugi::xml_node element, const char* text, std::span<float> numbers) {
  ParseOrThrow(element, text, numbers);
}

void ParseNumbers(pugi::xml_node element, const char* text, std::span<int32_t> numbers) {
  ParseOrThrow(element, text, numbers);
}
