#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <span>
#include <string>
#include <vector>

#include <fcntl.h>
#ifdef __GLIBC__
#include <malloc.h>
#endif

#include "cal3d/io/output_file.h"
#include "converter/base/complaint.h"
#include "converter/base/log.h"
#include "converter/base/records.h"
#include "converter/driver/command_line.h"
#include "converter/driver/usage.h"
#include "converter/scene/fbx_wrapper.h"

namespace {

constexpr int kAbnormalEnd = 2;

// A caller may close our standard streams, or stop reading them; the files are written all the
// same.
void ProtectStandardStreams() {
  std::signal(SIGPIPE, SIG_IGN);
  // The next file to be opened would take a closed stream's number and receive its text.
  for (int fd = 0; fd <= 2; ++fd) {
    if (fcntl(fd, F_GETFD) == -1) open("/dev/null", O_RDWR);
  }
}

// One object's arrays after the other's are made and dropped. By default the C library gives large
// blocks back to the system each time, and getting their pages anew costs more than filling them.
void KeepFreedMemory() {
#ifdef __GLIBC__
  constexpr int kLargeBlock = 32 << 20;
  mallopt(M_MMAP_THRESHOLD, kLargeBlock);
  mallopt(M_TRIM_THRESHOLD, 4 * kLargeBlock);
#endif
}

int RunCommands(int argc, const char* const* argv) {
  initLog(argc, argv);
  AddOutput("VERSION", VersionText(), true);
  const std::vector<std::string> words(argv, argv + argc);
  LOG_INFO("ARGUMENTS: " + commandLine(words));
  const std::span<const std::string> arguments(words);
  return parseArguments(arguments.subspan(arguments.empty() ? 0 : 1));
}

// Returns the exit status.
int Run(int argc, const char* const* argv) {
  try {
    return RunCommands(argc, argv);
  } catch (const FbxInitException&) {
    return kAbnormalEnd;  // told where it was thrown, like the next
  } catch (const FbxImportException&) {
    return kAbnormalEnd;
  } catch (const std::bad_alloc&) {
    ComplainAtEnd("there is not enough memory");
  } catch (const std::exception& exception) {
    ComplainAtEnd(exception.what());
  }
  return kAbnormalEnd;
}

// A caller that stops reading knows that it did. The status says nothing of lost output: callers
// take it for that of the last command.
void ComplainOfLostOutput() {
  FlushOutput();
  const int error = OutputError();
  if (error == 0 || error == EPIPE) return;
  std::array<char, 200> text;
  std::snprintf(text.data(), text.size(), "standard output can't be written: %s",
                std::strerror(error));
  ComplainAtEnd(text.data());
}

}  // namespace

int main(int argc, char** argv) {
  ProtectStandardStreams();
  RemoveUnfinishedFilesOnSignals();
  KeepFreedMemory();
  const int status = Run(argc, argv);
  ComplainOfLostOutput();
  return status;
}
