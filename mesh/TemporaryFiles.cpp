#include "TemporaryFiles.h"

#include <atomic>
#include <climits>
#include <cstring>

#include <pthread.h>
#include <unistd.h>

namespace gsl_mesh {

namespace {

constexpr int kPlaceCount = 32;
constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXCPU};

/// What the signal handler sees: plain memory, which is taken and released without locks.
struct Place {
  enum State { Free, Taken, Armed };
  std::atomic<int> state{Free};
  pid_t owner = 0; ///< a forked child must not remove files of its parent
  char path[PATH_MAX] = {};
};

Place places[kPlaceCount];
static_assert(std::atomic<int>::is_always_lock_free, "used in a signal handler");

/// Returns -1 when all places are taken or the path is too long for any file.
int TakePlace(const std::string& path) noexcept {
  if (path.size() >= PATH_MAX) return -1;
  for (int k = 0; k < kPlaceCount; ++k) {
    int free = Place::Free;
    if (!places[k].state.compare_exchange_strong(free, Place::Taken)) continue;
    places[k].owner = getpid();
    std::memcpy(places[k].path, path.c_str(), path.size() + 1);
    places[k].state.store(Place::Armed);
    return k;
  }
  return -1;
}

extern "C" void EndOnSignal(int signal) {
  RemoveTemporaryFiles();
  // The default action ends the process with the status that its parent expects.
  std::signal(signal, SIG_DFL);
  raise(signal);
}

} // namespace

TemporaryFile::TemporaryFile(const std::string& path) noexcept : m_place(TakePlace(path)) {}

TemporaryFile::~TemporaryFile() {
  if (m_place >= 0) places[m_place].state.store(Place::Free);
}

void RemoveTemporaryFiles() noexcept {
  const pid_t self = getpid();
  for (Place& place : places) {
    if (place.state.load() == Place::Armed && place.owner == self) unlink(place.path);
  }
}

void RemoveTemporaryFilesOnSignals() {
  for (const int signal : kEndingSignals) {
    struct sigaction old {};
    if (sigaction(signal, nullptr, &old) == 0 && old.sa_handler == SIG_IGN) continue;
    struct sigaction action {};
    action.sa_handler = EndOnSignal;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
  }
}

SignalsWait::SignalsWait() {
  sigset_t waiting;
  sigemptyset(&waiting);
  for (const int signal : kEndingSignals)
    sigaddset(&waiting, signal);
  pthread_sigmask(SIG_BLOCK, &waiting, &m_old);
}

SignalsWait::~SignalsWait() {
  pthread_sigmask(SIG_SETMASK, &m_old, nullptr);
}

} // namespace gsl_mesh
