#include "converter/driver/command_line.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <stdexcept>

#include "converter/base/complaint.h"
#include "converter/base/log.h"
#include "converter/base/names.h"
#include "converter/base/records.h"
#include "converter/driver/command_checks.h"
#include "converter/driver/command_set.h"
#include "converter/driver/usage.h"

namespace {

std::string MissingInputText(std::span<const std::string> command) {
  std::string text = "the command '";
  for (const std::string& word : command) text.append(word).append(" ");
  text.back() = '\'';
  return text + " names no input file";
}

// Turns one segment's options and positional words into a record. Its flags say what the command
// still lacks: an option can ask for a file or a type as well as a word can.
class SegmentReader {
 public:
  explicit SegmentReader(const OptionParser& parser)
      : command_(parser.Words()), words_(parser.Positional()) {
    record_.commandVersion = 2;
    expectFile_ = expectMode_ = expectType_ = !words_.empty();
  }

  void ReadOption(const ParsedOption& option);
  void ReadWords() {
    ReadFile();
    CheckExtension();
    ReadMode();
    ReadType();
    CheckType();
    while (!words_.empty()) record_.exportObjectNames.push_back(NextWord());
  }

  bool NeedsHelp() const { return needHelp_; }
  // Whether the help that is shown was asked for, or follows from something that was told.
  bool IsExplained() const { return isExplained_; }
  ConversionArguments& Record() { return record_; }

 private:
  // The value of `option` without enclosing quotes. Without one, reports `error`.
  std::string ValueOf(const ParsedOption& option, const char* error) {
    std::string value = removeUnneededDoubleQuotes(option.arg.value_or(std::string_view()));
    if (value.empty()) {
      AddError(error);
      isExplained_ = true;
    }
    return value;
  }
  std::string NextWord() {
    std::string word = removeUnneededDoubleQuotes(words_.front());
    words_ = words_.subspan(1);
    return word;
  }

  void ReadRoot(const ParsedOption& option);
  void ReadCal3dToText(const ParsedOption& option);
  void ReadCompare(const ParsedOption& option);
  void ReadDirectory(const ParsedOption& option);
  void ReadScale(const ParsedOption& option);

  void ReadFile();
  void CheckExtension();
  void ReadMode();
  void ReadType();
  void CheckType();

  std::span<const std::string> command_;
  std::span<const std::string> words_;  // those not taken yet
  ConversionArguments record_;
  bool needHelp_ = true;  // until a word says what to do
  bool isExplained_ = false;
  bool expectFile_ = false;
  bool expectMode_ = false;
  bool expectType_ = false;
};

void SegmentReader::ReadOption(const ParsedOption& option) {
  switch (option.row->index) {
    case kVerboseOption:
      ++record_.verbosity;
      break;
    case kRootOption:
      ReadRoot(option);
      break;
    case kCal3dToTextOption:
      ReadCal3dToText(option);
      break;
    case kNoLabelsOption:
      record_.showLabels = false;
      break;
    case kWeightOption:
      record_.normalizeWeight = true;
      break;
    case kUseEvaluatedOption:
      record_.useEvaluatedLocal = true;
      break;
    case kCompareOption:
      ReadCompare(option);
      break;
    case kDirectoryOption:
      ReadDirectory(option);
      break;
    case kEncodeOption:
      record_.encodeNames = true;
      break;
    case kScaleOption:
      ReadScale(option);
      break;
    case kLogOption:  // the log's name was taken before parsing
      CheckLog(removeUnneededDoubleQuotes(*option.arg));
      break;
    case kGroupOption:
      record_.groupMeshes = true;
      break;
    case kRoomOption:
      record_.treatAsRoom = true;
      break;
    case kUpOption:
      record_.upAxis = ToLower(*option.arg);
      break;
    case kFrontOption:
      record_.frontAxis = ToLower(*option.arg);
      break;
    case kCoordOption:
      record_.coordinateSystem = ToLower(*option.arg);
      break;
    case kRenameOption:
      record_.renameRoomNodes = true;
      break;
    case kUnknownOption:
      Complain((option.word.starts_with('-') ? "'" : "'-") + std::string(option.word) +
               "' is no option");
      isExplained_ = true;
      break;
    default:
      isExplained_ = true;
      break;
  }
}

void SegmentReader::ReadRoot(const ParsedOption& option) {
  std::string value = ValueOf(option, "--root option required a name\n");
  if (value.empty()) return;
  record_.skeletonRootPath = std::move(value);
  expectMode_ = expectFile_ = true;
}

void SegmentReader::ReadCal3dToText(const ParsedOption& option) {
  std::string value =
      ValueOf(option, "--cal3d2text command requires filename of cal3d file to convert to text\n");
  expectType_ = expectFile_ = true;
  if (value.empty()) return;
  record_.outputFilename = std::move(value);
  record_.mode = CAL3D_2_TEXT_MODE;
}

// The option's table row takes no value, so this reports the missing one.
void SegmentReader::ReadCompare(const ParsedOption& option) {
  std::string value =
      ValueOf(option, "--compare command requires filename of cal3d file to compare to fbx file\n");
  expectFile_ = true;
  if (value.empty()) return;
  record_.inputFilename = std::move(value);
  record_.mode = COMPARE_MODE;
}

void SegmentReader::ReadDirectory(const ParsedOption& option) {
  std::string value = ValueOf(option, "--directory option required a value\n");
  if (value.empty()) return;
  if (!value.ends_with('/')) value += '/';
  record_.directoryForOutputFiles = std::move(value);
}

void SegmentReader::ReadScale(const ParsedOption& option) {
  const std::string value = ValueOf(option, "--scale option required a value\n");
  if (value.empty()) return;
  // Text that is no number counts as 0. The program never leaves the "C" locale.
  record_.scaleFactor = static_cast<float>(std::atof(value.c_str()));
  if (record_.scaleFactor == 0.0F) {
    std::fputs("--scale option required a value\n", stderr);
  } else {
    expectMode_ = true;
  }
  CheckScale(value, record_.scaleFactor);
}

void SegmentReader::ReadFile() {
  if (words_.empty() || !expectFile_) return;
  record_.inputFilename = NextWord();
  needHelp_ = false;
}

void SegmentReader::CheckExtension() {
  if (!expectFile_) return;
  constexpr std::string_view kExtension = ".fbx";
  const std::string name = ToLower(record_.inputFilename);
  if (name.size() < kExtension.size()) {
    throw std::out_of_range(name.empty() ? MissingInputText(command_)
                                         : "input file name '" + record_.inputFilename +
                                               "' is too short to hold an extension");
  }
  if (!name.ends_with(kExtension) && record_.mode != CAL3D_2_TEXT_MODE) {
    AddError("FBX file must have a fbx extension - got" + name);
    needHelp_ = true;
  }
}

void SegmentReader::ReadMode() {
  // A conversion to text needs no mode word: its one word is the type.
  const size_t wordsNeeded = record_.mode == CAL3D_2_TEXT_MODE ? 2 : 1;
  if (!expectMode_ || words_.size() < wordsNeeded) return;
  const std::string given = NextWord();
  const std::string word = ToLower(given);
  if (word == "list" || word == "export") {
    record_.mode = word == "list" ? LIST_MODE : EXPORT_MODE;
    expectType_ = true;
    if (words_.empty()) record_.type = ALL_OBJECT;
  } else if (record_.mode == UNKNOWN_MODE) {
    AddError("Must specify a mode - got" + word);
    CheckForOption(given, "an action");
    needHelp_ = true;
  }
}

void SegmentReader::ReadType() {
  if (!expectType_ || words_.empty()) return;
  const std::string given = NextWord();
  const std::string word = ToLower(given);
  // The first four letters tell the types apart.
  const auto prefix = [](std::string_view text) { return text.substr(0, 4); };
  for (const ObjectKind& kind : kObjectKinds) {
    if (prefix(word) != prefix(kind.word) && prefix(word) != prefix(kind.otherWord)) continue;
    if (kind.type == MORPHANIM_OBJECT && record_.mode == CAL3D_2_TEXT_MODE) break;
    record_.type = kind.type;
    return;
  }
  std::fprintf(stderr, "type '%s' is invalid\n", word.c_str());
  AddError("type '" + word + "' is invalid");
  CheckForOption(given, "a type");
  needHelp_ = true;
}

void SegmentReader::CheckType() {
  if (!expectType_) return;
  if (record_.type == UNKNOWN_OBJECT) {
    std::fputs("Must specify a type\n", stderr);
    AddError("Must specify a type");
    needHelp_ = true;
  } else {
    // A command that got as far as a type runs, whatever was reported before.
    needHelp_ = false;
  }
}

std::vector<ConversionArguments> ProcessSegment(std::span<const std::string> segment,
                                                const OpenCommandFile* openFiles) {
  const OptionParser parser(usagev2, segment);
  if (const std::string& error = parser.Error(); !error.empty()) {
    AddError(error);
    Complain(std::string_view(error).substr(0, error.find('\n')));
  }
  LOG_INFO(commandLine(segment));
  return processCommandLineSegment(parser, segment.size(), openFiles);
}

void PrintHelpRecord(const ConversionArguments& record) {
  PrintVersions();
  if (record.verbosity == 0) Print(record.toString());
  LOG_INFO("USAGE: veltrum version " + VersionText());
  PrintUsage(80);
}

}  // namespace

int parseArguments(std::span<const std::string> arguments) {
  if (arguments.empty() || arguments.front() != "-2") return 0;
  LOG_INFO(commandLine(arguments));
  int status = 0;
  for (const ConversionArguments& record :
       breakCommandlineIntoSegments(arguments.subspan(1), nullptr)) {
    if (record.option == ConversionArguments::HELP) {
      PrintHelpRecord(record);
    } else {
      status = processCommandSet(record);
    }
  }
  return status;
}

std::string commandLine(std::span<const std::string> words) {
  std::string text = "COMMAND: ";
  for (const std::string& word : words) text += " " + word;
  return text + "\n";
}

std::vector<ConversionArguments> breakCommandlineIntoSegments(std::span<const std::string> words,
                                                              const OpenCommandFile* openFiles) {
  LOG_INFO(commandLine(words));
  std::vector<ConversionArguments> records;
  bool anySegment = false;
  while (!words.empty()) {
    const auto length = static_cast<size_t>(
        std::distance(words.begin(), std::find(words.begin(), words.end(), "-")));
    if (length == 0) {
      const std::vector<std::string> rest(words.begin() + 1, words.end());
      if (!rest.empty())
        Complain("an empty command ends them all, passed over: " + QuotedList(rest));
      break;
    }
    auto segmentRecords = ProcessSegment(words.first(length), openFiles);
    std::move(segmentRecords.begin(), segmentRecords.end(), std::back_inserter(records));
    anySegment = true;
    words = words.subspan(std::min(length + 1, words.size()));
  }
  if (!anySegment) {
    const std::vector<std::string> help{"-h"};
    records = processCommandLineSegment(OptionParser(usagev2, help), 0, openFiles);
  }
  return records;
}

std::vector<ConversionArguments> processCommandLineSegment(const OptionParser& parser,
                                                           size_t numArgs,
                                                           const OpenCommandFile* openFiles) {
  SegmentReader reader(parser);
  ConversionArguments& record = reader.Record();
  if (!parser.Error().empty()) return {record};
  for (const ParsedOption& option : parser.Options()) {
    if (option.row->index == kCommandFileOption) return ReadCommandFile(*option.arg, openFiles);
    reader.ReadOption(option);
  }
  reader.ReadWords();
  if (parser.Positional().empty() && !reader.IsExplained()) {
    Complain(MissingInputText(parser.Words()));
  }
  CheckAxes(record);
  CheckNames(record);
  if (record.verbosity != 0) Print(record.toString());
  if (numArgs == 0 || reader.NeedsHelp()) record.option = ConversionArguments::HELP;
  return {record};
}
