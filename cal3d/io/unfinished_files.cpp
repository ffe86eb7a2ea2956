#include "cal3d/io/unfinished_files.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr std::array kEndingSignals = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXCPU};

struct Place {
  volatile std::sig_atomic_t taken;
  char path[PATH_MAX];  // as it was opened: the program never changes its folder
};

std::array<Place, 4> places;  // one file is written at a time; the rest is reserve

void RemoveAndEnd(int signal) {
  for (Place& place : places) {
    if (place.taken != 0) unlink(place.path);
  }
  std::signal(signal, SIG_DFL);
  std::raise(signal);  // comes when the handler returns
}

sigset_t EndingSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : kEndingSignals) sigaddset(&set, signal);
  return set;
}

}  // namespace

void RemoveUnfinishedFilesOnSignals() {
  std::signal(SIGXFSZ, SIG_IGN);
  for (const int signal : kEndingSignals) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = RemoveAndEnd;
    // A second signal waits: the first is about to end the program.
    action.sa_mask = EndingSignals();
    sigaction(signal, &action, nullptr);
  }
}

int UnfinishedFile::Create(const std::string& path, unsigned mode) {
  const sigset_t ending = EndingSignals();
  sigset_t before;
  sigprocmask(SIG_BLOCK, &ending, &before);
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  const int error = errno;
  if (file >= 0) {
    for (size_t i = 0; i < places.size() && place_ == kNone; ++i) {
      if (places[i].taken != 0 || path.size() >= sizeof places[i].path) continue;
      std::memcpy(places[i].path, path.c_str(), path.size() + 1);
      places[i].taken = 1;
      place_ = i;
    }
  }
  sigprocmask(SIG_SETMASK, &before, nullptr);
  errno = error;
  return file;
}

void UnfinishedFile::Forget() {
  if (place_ != kNone) places[place_].taken = 0;
  place_ = kNone;
}
