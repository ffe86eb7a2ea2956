// The optional log file: a copy of the run's command lines, dumps and records. Off unless a file is
// named before the arguments are parsed; the file is opened (and replaced) by the first text that
// reaches it. Failing to open it never disturbs the run.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

// Where a Log's text goes: the one file of the process.
class FileLogOutput {
 public:
  // A non-empty name replaces the stored one. Returns the stored name.
  static std::string setFileName(std::string_view name);
  static std::string getFileName() { return setFileName({}); }
  // The open file, null if it could not be opened. Opened once, at the first call.
  static std::FILE* Stream();
  static void Output(std::string_view text) noexcept;
};

constexpr int kLogInfo = 3;

// Gathers one text and hands it to the output policy when it goes out of scope. Only gathering
// needs memory, so that the end of a scope never throws.
template <typename OutputPolicy>
class Log {
 public:
  explicit Log(bool newlineAtEnd) : newlineAtEnd_(newlineAtEnd) {}
  virtual ~Log() {
    OutputPolicy::Output(text_);
    if (newlineAtEnd_) OutputPolicy::Output("\n");
  }
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  Log& operator<<(std::string_view text) {
    text_ += text;
    return *this;
  }

  static int& reportingLevel() {
    static int level = kLogInfo;
    return level;
  }

 private:
  std::string text_;
  bool newlineAtEnd_;
};

class FileLog : public Log<FileLogOutput> {
 public:
  using Log::Log;
  ~FileLog() override = default;
};

inline bool LogIsOpen() {
  return FileLog::reportingLevel() >= kLogInfo && !FileLogOutput::getFileName().empty();
}

// A log line: tab, "[", the source file's name without its folders, "] info", tab, the message.
void WriteLogLine(std::string_view sourcePath, std::string_view message);

// A macro so that `message`, any expression that makes a text, is built only when a log is open.
#define LOG_INFO(message)                               \
  do {                                                  \
    if (LogIsOpen()) WriteLogLine(__FILE__, (message)); \
  } while (false)

// Looks through the raw arguments, program name included, for the first word "--log" or "-g" that
// has a word behind it, and makes that word the log's file name. It knows nothing of the option
// table: "--log=x" opens no log, and the word behind the group option "-g" does.
void initLog(int argc, const char* const* argv);
