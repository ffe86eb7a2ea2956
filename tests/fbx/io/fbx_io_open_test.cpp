// Which files open, and what their heads and tails say.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/fbx/io/opened_io.h"
#include "tests/support/temp_dir.h"

namespace {

std::string Replaced(std::string bytes, std::string_view find, std::string_view replace) {
  const size_t at = bytes.find(find);
  EXPECT_NE(at, std::string::npos);
  return bytes.replace(at, find.size(), replace);
}

TEST(FbxIOOpen, BothMagicTextsReadAlike) {
  const std::string bytes = MakeFile({{"A", {1}}});
  EXPECT_EQ(OpenedIO(Replaced(bytes, "Kaydara FBX Binary  ", "Autodesk FBX Binary ")).isRead, true);
  OpenedIO other(Replaced(bytes, "Kaydara", "Kaydora"));
  EXPECT_FALSE(other.isOpen);
  EXPECT_EQ(other.status.GetCode(), FbxStatus::eFailure);
}

TEST(FbxIOOpen, OffsetWidthMustFitTheVersion) {
  const auto opens = [](FbxFormat format, FbxIO::BinaryType type) {
    OpenedIO file(MakeFile({{"A", {1}}}, format), type);
    // A mismatch is silent, so that the other width can be tried.
    EXPECT_FALSE(file.status.Error());
    return file.isRead;
  };
  EXPECT_TRUE(opens({.version = 7400}, FbxIO::eBinary32));
  EXPECT_FALSE(opens({.version = 7400}, FbxIO::eBinary64));
  EXPECT_TRUE(opens({.version = 7500}, FbxIO::eBinary64));
  EXPECT_FALSE(opens({.version = 7500}, FbxIO::eBinary32));
  EXPECT_TRUE(opens({.version = 7450}, FbxIO::eBinary32));
  EXPECT_TRUE(opens({.version = 7450, .wideOffsets = true}, FbxIO::eBinary64));
  EXPECT_FALSE(opens({.ascii = true, .version = 7500}, FbxIO::eBinary32));
  EXPECT_FALSE(opens({.ascii = true, .version = 7400}, FbxIO::eBinary64));
  // The wrong one of the two widths between is noticed at the first record.
  EXPECT_FALSE(OpenedIO(MakeFile({}, {.version = 7450}), FbxIO::eBinary64).isOpen);
}

TEST(FbxIOOpen, VersionsThatWereNotAskedForAreRefused) {
  FbxStatus status;
  FbxIO io(FbxIO::eBinary32, status);
  EXPECT_FALSE(io.ProjectOpen(std::string_view(MakeFile({}))));
  EXPECT_EQ(status.GetCode(), FbxStatus::eInvalidFileVersion);
}

TEST(FbxIOOpen, HeaderBlockFillsTheInfo) {
  for (const int headerVersion : {1003, 1001}) {
    OpenedIO file(WriteFbx({{"FBXHeaderExtension",
                             {},
                             {{"FBXHeaderVersion", {headerVersion}},
                              {"FBXVersion", {7300}},
                              {"CurrentCameraResolution", {}, {{"CameraResolutionH", {200.0}}}},
                              {"CreationTimeStamp", {}, {{"Version", {1000}}, {"Year", {2024}}}},
                              {"Creator", {"builder"}},
                              {"OtherFlags", {}, {{"FlagPLE", {1}}}}}}}));
    const bool isNew = headerVersion == 1003;
    // The block's version replaces the header's.
    EXPECT_EQ(file.io.GetFileVersionNumber(), 7300);
    EXPECT_EQ(file.info.defaultRenderResolution.height, 200.0);
    EXPECT_EQ(file.info.creationTimeStamp.year, isNew ? 2024 : 0);
    EXPECT_EQ(file.info.creator, isNew ? "builder" : "");
    EXPECT_EQ(file.info.ple, isNew);
  }
}

TEST(FbxIOOpen, EncryptedFilesAreRefused) {
  const auto open = [](int type) {
    return WriteFbx(
        {{"FBXHeaderExtension", {}, {{"FBXVersion", {7400}}, {"EncryptionType", {type}}}}});
  };
  OpenedIO encrypted(open(1));
  EXPECT_EQ(encrypted.status.GetCode(), FbxStatus::eInvalidFile);
  OpenedIO unknown(open(2));
  EXPECT_EQ(unknown.status.GetCode(), FbxStatus::eFailure);
  EXPECT_STREQ(unknown.status.GetErrorString(), "Encryption type is not supported");
}

TEST(FbxIOOpen, IdTimeAndFooterAreNeverMissed) {
  const FbxRecord id("FileId", {FbxRaw{std::string(16, 'x')}});
  const FbxRecord time("CreationTime", {"2024-01-01 00:00:00:000"});
  for (const FbxRecords& about : {FbxRecords{}, {id}, {time}, {id, time}}) {
    for (const bool footer : {false, true}) {
      FbxRecords records = {{"FBXHeaderExtension", {}, {{"FBXVersion", {7400}}}}, {"A", {1}}};
      records.insert(records.begin() + 1, about.begin(), about.end());
      OpenedIO file(WriteFbx(records, {.footer = footer}));
      EXPECT_TRUE(file.isRead);
      EXPECT_EQ(file.io.FieldReadI("A"), 1);
    }
  }
}

TEST(FbxIOOpen, FilesCutBehindTheirLastRecordAreRead) {
  for (const int version : {7400, 7500}) {
    const FbxFormat format = {.version = version};
    const auto type = version < 7500 ? FbxIO::eBinary32 : FbxIO::eBinary64;
    const std::string bytes = MakeFile({{"A", {1}, {{"B", {2}}}}}, format);
    const std::string bare =
        MakeFile({{"A", {1}, {{"B", {2}}}}}, {.version = version, .footer = false});
    const size_t last = bare.size() - (version < 7500 ? 13 : 25);
    for (size_t size = last; size <= bytes.size(); ++size) {
      OpenedIO cut(bytes.substr(0, size), type);
      ASSERT_TRUE(cut.isRead) << size;
      EXPECT_EQ(cut.io.FieldReadI("A"), 1) << size;
      EXPECT_EQ(cut.io.ProjectGetSectionCount(), 1) << size;
    }
    for (size_t size = last - 30; size < last; ++size) {
      OpenedIO cut(bytes.substr(0, size), type);
      EXPECT_FALSE(cut.isRead) << size;
      EXPECT_EQ(cut.status.GetCode(), FbxStatus::eInvalidFile);
    }
  }
}

TEST(FbxIOOpen, FooterTellsTheSections) {
  std::string bytes = MakeFile({{"A", {1}}});
  bytes[bytes.size() - 140] = 0x10;  // of 7400 = 0x1CE8
  // A second section behind the first: its list, a footer id, and a tail that tells the way back.
  const size_t start = bytes.size();
  bytes += WriteFbxRecords({{"Extra", {5}}}, {}, start) + std::string(13 + 16, '\0');
  bytes.append(16 - bytes.size() % 16, '\0');
  const size_t back = bytes.size() - start;
  bytes += {static_cast<char>(back & 0xFF), static_cast<char>(back >> 8)};
  bytes += std::string(126, '\0') + bytes.substr(start - 16, 16);
  OpenedIO file(bytes);
  ASSERT_EQ(file.io.ProjectGetSectionCount(), 2);
  EXPECT_EQ(file.io.ProjectGetSectionVersion(0), 0x1C10U);
  EXPECT_EQ(file.io.ProjectGetSectionVersion(1), 4000U);
  EXPECT_FALSE(file.io.ProjectOpenSection(1)) << "one is open";
  file.io.ProjectCloseSection();
  ASSERT_TRUE(file.io.ProjectOpenSection(1));
  EXPECT_EQ(file.io.FieldReadI("Extra"), 5);
  file.io.ProjectCloseSection();
  EXPECT_FALSE(file.io.ProjectOpenSection(2));
}

TEST(FbxIOOpen, AsciiFirstLines) {
  const auto version = [](const std::string& line) {
    OpenedIO file(line + "\nA: 1\n");
    return file.isOpen ? file.io.GetFileVersionNumber() : -1;
  };
  const std::vector<std::pair<const char*, int>> cases = {
      {"; FBX 6.1.0 Project FILE", 6100},
      {"; Other 5.2 project file", 5200},
      {"; Filmbox 2.7 project file", 2001},
      {"; Filmbox 4.5 project file", 4050},
      {"; Filmbox 3.5 project file", 3500},
      {"; FBX 7.4.0 object file", -1},
      {"# FBX 7.4.0 project file", -1},
      {"; FBX 7,4.0 project file", -1},
      {"", -1},
      {"\xEF\xBB\xBF; FBX 7.1.0 project file", 7100},
      {"\r\n \n; FBX 7.2.0 project file", 7200},
      {"\xEF\xBB\xBF\n\n; FBX 7.3.0 project file", 7300},
      {"\n\xEF\xBB\xBF; FBX 7.3.0 project file", -1}};
  for (const auto& [line, expected] : cases) EXPECT_EQ(version(line), expected) << line;

  // Only so much of the line is looked at, but all of it is a comment.
  OpenedIO wordy("; FBX 7.4.0 project file" + std::string(100, ' ') + "B: 2\nA: 1\n");
  EXPECT_EQ(wordy.io.FieldGetCount(), 1);
  EXPECT_EQ(wordy.io.FieldReadI("A"), 1);
}

TEST(FbxIOOpen, FilesOnDisk) {
  TempDir folder;
  FbxStatus status;
  FbxIO io(FbxIO::eBinary32, status);
  io.Fbx7Support(true);
  const std::string absent = folder.File("absent.fbx");
  EXPECT_FALSE(io.ProjectOpen(absent.c_str()));
  EXPECT_EQ(status.GetErrorString(), "Unable to open file " + absent);
  EXPECT_FALSE(io.ProjectOpen(folder.Path().c_str())) << "a folder";
  const std::string pipe = folder.File("pipe.fbx");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_FALSE(io.ProjectOpen(pipe.c_str())) << "a pipe that nobody writes into";

  const std::string empty = folder.Write("empty.fbx", "");
  EXPECT_FALSE(io.ProjectOpen(empty.c_str()));
  EXPECT_EQ(status.GetCode(), FbxStatus::eFailure);
  EXPECT_EQ(status.GetErrorString(), "File is corrupted " + empty);

  // Larger than the buffers, and read back and forth.
  std::vector<double> vertices(100000);
  for (size_t i = 0; i < vertices.size(); ++i) vertices[i] = static_cast<double>(i);
  FbxRecords records;
  for (int i = 0; i < 5; ++i) {
    records.push_back({"Small", {std::to_string(i)}});
    records.push_back({"Large", {}, {{"Vertices", {vertices}}}});
  }
  const std::string path = folder.Write("large.fbx", MakeFile(std::move(records)));
  ASSERT_TRUE(io.ProjectOpen(path.c_str(), true)) << status.GetErrorString();
  EXPECT_FALSE(status.Error());
  for (const int k : {4, 0, 2, 3, 1}) {
    ASSERT_TRUE(io.FieldReadBegin("Small", k));
    EXPECT_EQ(io.FieldReadC(), std::to_string(k));
    ASSERT_TRUE(io.FieldReadBegin("Large", k) && io.FieldReadBlockBegin());
    std::vector<double> read;
    EXPECT_TRUE(io.FieldReadArray("Vertices", read));
    EXPECT_EQ(read, vertices);
    io.FieldReadBlockEnd();
  }
  io.ProjectClose();
  EXPECT_FALSE(io.FieldReadBegin("Small"));
}

}  // namespace
