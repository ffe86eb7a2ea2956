#include "converter/base/complaint.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <set>
#include <utility>

#include "cal3d/io/saver.h"
#include "converter/base/records.h"

namespace {

std::function<void(std::string_view)>& ComplaintSink() {
  static std::function<void(std::string_view)> sink;
  return sink;
}

}  // namespace

void RedirectComplaints(std::function<void(std::string_view)> sink) {
  ComplaintSink() = std::move(sink);
}

void Complain(std::string_view text) {
  if (ComplaintSink()) return ComplaintSink()(text);
  // A run with more causes than this may tell one twice.
  constexpr size_t kMostRemembered = 10000;
  static std::set<std::string, std::less<>> told;
  if (told.contains(text)) return;
  if (told.size() == kMostRemembered) told.clear();
  told.emplace(text);
  ComplainAtEnd(text);
}

void ComplainAtEnd(std::string_view text) noexcept {
  FlushOutput();  // so that the line stands behind the records that led to it
  std::fputs("veltrum: ", stderr);
  // In pieces, since standard error is written through at each call.
  std::array<char, 1024> piece;
  while (!text.empty()) {
    const size_t length = std::min(text.size(), piece.size());
    std::replace_copy(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length),
                      piece.begin(), '\n', ' ');
    std::fwrite(piece.data(), 1, length, stderr);
    text.remove_prefix(length);
  }
  std::fputc('\n', stderr);
}

void ComplainOfOutput(const std::string& path) {
  Complain("'" + path + "' can't be written: " + CalSaver::lastError());
}

std::string QuotedList(const std::vector<std::string>& names) {
  constexpr size_t kMostNames = 20;
  std::string text;
  for (size_t i = 0; i < std::min(names.size(), kMostNames); ++i) {
    text.append(text.empty() ? "'" : ", '").append(names[i]).append("'");
  }
  if (names.size() > kMostNames) {
    text.append(" and ").append(std::to_string(names.size() - kMostNames)).append(" more");
  }
  return text;
}
