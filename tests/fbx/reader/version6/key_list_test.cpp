// The list in which documents of version 6 hold the keys of a curve.
#include "fbx/reader/version6/key_list.h"

#include <bit>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/fbx/io/opened_io.h"

namespace {

// The values of a text list with the types of a binary file: letters, whole numbers for the times,
// which a '@' marks, and doubles.
FbxValues Typed(const std::string& text) {
  FbxValues values;
  std::istringstream stream(text);
  for (std::string word; std::getline(stream, word, ',');) {
    if (std::isalpha(static_cast<unsigned char>(word[0])) != 0) {
      values.emplace_back(word[0]);
    } else if (word[0] == '@') {
      values.emplace_back(int64_t{std::stoll(word.substr(1))});
    } else {
      values.emplace_back(std::stod(word));
    }
  }
  return values;
}

// "time value flags words count" of each run of keys that are alike, for each key of it the first
// two. The words are a float twice and a pair of weights, as the flags ask.
std::string Read(const std::string& text, bool isAscii, int64_t most = 1000) {
  OpenedIO file(
      WriteFbx({{"FBXHeaderExtension", {}, {{"FBXVersion", {6100}}}}, {"Key", Typed(text)}},
               {.ascii = isAscii, .version = 6100}));
  EXPECT_TRUE(file.isRead);
  EXPECT_TRUE(file.io.FieldReadBegin("Key"));
  const FbxKeyList keys = ReadKeyList(file.io, most);
  EXPECT_EQ(keys.times.size(), keys.values.size());
  EXPECT_EQ(keys.attributes.size(), keys.counts.size());
  std::ostringstream out;
  size_t key = 0;
  for (size_t i = 0; i < keys.attributes.size(); ++i) {
    for (uint32_t k = 0; k < keys.counts[i]; ++k, ++key) {
      out << keys.times.at(key) << " " << keys.values.at(key) << " ";
    }
    const auto& [flags, words] = keys.attributes[i];
    out << std::hex << flags << std::dec;
    if ((flags & 8) != 0 && (flags & 0xF00) != 0x100) {
      out << " " << std::bit_cast<float>(words[0]) << " " << std::bit_cast<float>(words[1]);
      if ((flags & 0xF00) == 0x200) out << " " << std::bit_cast<float>(words[2]);
    }
    if ((flags & 0x3000000) != 0) {
      out << " " << static_cast<int16_t>(words[2] & 0xFFFF) << "/"
          << static_cast<int16_t>(words[2] >> 16);
    }
    out << "; ";
  }
  return out.str();
}

TEST(KeyList, Table) {
  struct Case {
    const char* text;
    const char* keys;
  };
  const Case cases[] = {
      {"@5,1.5,C,s", "5 1.5 2; "},
      {"@5,1.5,C,n", "5 1.5 102; "},
      {"@5,1.5,C", "5 1.5 2; "},
      {"@5,1.5,L", "5 1.5 4; "},
      {"@5,1,U,s,2.5,-3,n", "5 1 408 2.5 -3; "},
      {"@5,1,U,b,2.5,-3,n", "5 1 c08 2.5 -3; "},
      {"@5,1,U,s,2.5,-3", "5 1 408 2.5 -3; "},
      {"@5,1,U,a,n", "5 1 108; "},
      {"@5,1,U,a", "5 1 108; "},
      {"@5,1,U,t,0.5,0.25,-1,n", "5 1 208 0.5 0.25 -1; "},
      // Weights are rounded to units of 1/9999, and held in 16 bits.
      {"@5,1,U,s,2,3,a,0.3332333266735077,0.5", "5 1 3000408 2 3 3332/5000; "},
      {"@5,1,U,b,2,3,r,0.25", "5 1 1000c08 2 3 2500/0; "},
      {"@5,1,U,s,2,3,l,0.25", "5 1 2000408 2 3 0/2500; "},
      {"@5,1,U,s,2,3,a,90,-90", "5 1 3000408 2 3 32767/-32768; "},
      // Those behind tangents that have none are dropped.
      {"@5,1,U,a,a,0.1,0.2,@6,2,L", "5 1 108; 6 2 4; "},
      {"@5,1,U,t,1,2,3,r,0.1,@6,2,L", "5 1 208 1 2 3; 6 2 4; "},
      // Keys in a row that are alike share their attribute.
      {"@5,1,L,@6,2,L,@7,3,C,s,@8,4,L", "5 1 6 2 4; 7 3 2; 8 4 4; "},
      {"@5,1,U,s,2,3,n,@6,1,U,s,2,4,n", "5 1 408 2 3; 6 1 408 2 4; "},
      // Keys aren't sorted.
      {"@9,1,L,@-6,2,L", "9 1 -6 2 4; "},
      {"", ""},
  };
  for (const auto& [text, keys] : cases) {
    for (const bool isAscii : {false, true}) {
      EXPECT_EQ(Read(text, isAscii), keys) << text << (isAscii ? " in text" : "");
    }
  }
}

// Reading stops before the first key that isn't whole.
TEST(KeyList, CutAnywhere) {
  const std::string first = "@5,1,L,";
  for (const std::string second :
       {"@6,2,C,s", "@6,2,U,s,1,2,a,0.1,0.2", "@6,2,U,t,1,2,3,r,0.5", "@6,2,U,a,n"}) {
    for (const bool isAscii : {false, true}) {
      std::string whole = Read(first + second, isAscii);
      EXPECT_TRUE(whole.starts_with("5 1 4; 6 2 ")) << whole;
      for (size_t comma = second.rfind(','); comma != std::string::npos;
           comma = comma == 0 ? std::string::npos : second.rfind(',', comma - 1)) {
        const std::string cut = second.substr(0, comma);
        // What may be missing is the letter of a constant, and weights.
        const bool isWhole = cut == "@6,2,C" || cut == "@6,2,U,s,1,2" || cut == "@6,2,U,t,1,2,3" ||
                             cut == "@6,2,U,a";
        EXPECT_EQ(Read(first + cut, isAscii) != "5 1 4; ", isWhole) << cut;
      }
      for (const char* bad : {"@6,2,X", "@6,2,3", "@6,2,U,x,1,2,n", "@6,2,U,1,2"}) {
        EXPECT_EQ(Read(first + bad + ",@7,3,L", isAscii), "5 1 4; ") << bad;
      }
    }
  }
  EXPECT_EQ(Read("@5,1,L,@6,2,L,@7,3,L", false, 2), "5 1 6 2 4; ") << "as many as are asked for";
}

}  // namespace
