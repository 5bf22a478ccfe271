#include "platform/core/RunLoop.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <exception>
#include <limits>
#include <thread>

#include "platform/core/Clock.h"
#include "platform/core/Log.h"
#include "platform/core/RecyclingAllocator.h"
#include "platform/core/VirtualClock.h"

namespace platform {
namespace {

std::thread::id& mainThread() {
  static std::thread::id id = std::this_thread::get_id();
  return id;
}

template <class Work>
void runGuarded(const char* what, Work&& work) {
  try {
    work();
  } catch (const std::exception& error) {
    Log::write(Log::Channel::System, std::string("exception escaped a ") + what + ": " + error.what());
  } catch (...) {
    Log::write(Log::Channel::System, std::string("unknown exception escaped a ") + what);
  }
}

}  // namespace

RunLoop& RunLoop::main() {
  mainThread();
  static RunLoop* loop = new RunLoop;
  return *loop;
}

RunLoop& RunLoop::current() {
  if (std::this_thread::get_id() == mainThread()) return main();
  thread_local RunLoop loop;
  return loop;
}

RunLoop::~RunLoop() {
  if (wakePipe_[0] >= 0) {
    close(wakePipe_[0]);
    close(wakePipe_[1]);
  }
}

void RunLoop::addTimer(const TimerPtr& timer, RunLoopModes modes) {
  if (!timer || !timer->isValid()) return;
  for (auto& entry : timers_) {
    if (entry.timer == timer) {
      entry.modes |= modes;
      return;
    }
  }
  timers_.push_back({timer, modes, nextSequence_++});
}

void RunLoop::addPerform(std::shared_ptr<Perform> perform) {
  perform->sequence = nextSequence_++;
  if (perform->target) ++performsByTarget_[perform->target.get()];
  performs_.push_back(std::move(perform));
  performs_.back()->position = std::prev(performs_.end());
}

void RunLoop::takeOut(const std::shared_ptr<Perform>& perform) {
  if (perform->target) {
    auto count = performsByTarget_.find(perform->target.get());
    if (count != performsByTarget_.end() && --count->second == 0) performsByTarget_.erase(count);
  }
  performs_.erase(perform->position);
}

void RunLoop::performSelectorAfterDelay(const ObjectPtr& target, std::string selector, const ObjectPtr& argument,
                                        double delay, RunLoopModes modes) {
  if (!target) return;
  // A refill of a list starts a transition, and so a perform, for many rows at once.
  auto perform = std::allocate_shared<Perform>(RecyclingAllocator<Perform>());
  perform->due = Clock::current().now() + std::max(0.0, delay);
  perform->modes = modes;
  perform->target = target;
  perform->selector = std::move(selector);
  perform->argument = argument;
  addPerform(std::move(perform));
}

void RunLoop::performBlock(double delay, RunLoopModes modes, std::function<void()> block) {
  auto perform = std::make_shared<Perform>();
  perform->due = Clock::current().now() + std::max(0.0, delay);
  perform->modes = modes;
  perform->block = std::move(block);
  addPerform(std::move(perform));
}

void RunLoop::cancelWhere(const Object* target, const std::function<bool(const Perform&)>& matches) {
  if (!target || performsByTarget_.find(target) == performsByTarget_.end()) return;
  // Take the cancelled performs out first and let go of their targets after
  // the walk: a target's destructor may cancel performs of its own.
  std::vector<std::shared_ptr<Perform>> cancelled;
  for (auto it = performs_.begin(); it != performs_.end();) {
    auto next = std::next(it);
    if ((*it)->target.get() == target && matches(**it)) {
      (*it)->cancelled = true;
      cancelled.push_back(*it);
      takeOut(*it);
    }
    it = next;
  }
}

void RunLoop::cancelPreviousPerformRequests(const Object* target) {
  cancelWhere(target, [](const Perform&) { return true; });
}

void RunLoop::cancelPreviousPerformRequests(const Object* target, std::string_view selector) {
  cancelWhere(target, [&](const Perform& p) { return p.selector == selector; });
}

void RunLoop::cancelPreviousPerformRequests(const Object* target, std::string_view selector,
                                            const Object* argument) {
  cancelWhere(target, [&](const Perform& p) { return p.selector == selector && isEqual(p.argument.get(), argument); });
}

std::size_t RunLoop::pendingPerformCount(const Object* target, std::string_view selector) const {
  return static_cast<std::size_t>(std::count_if(performs_.begin(), performs_.end(), [&](const auto& p) {
    return p->target.get() == target && (selector.empty() || p->selector == selector);
  }));
}

void RunLoop::addFileDescriptorSource(int fd, std::function<void()> onReadable, RunLoopModes modes) {
  removeFileDescriptorSource(fd);
  sources_.push_back({fd, nullptr, std::move(onReadable), modes});
}

void RunLoop::addFileDescriptorSource(int fd, std::function<DescriptorInterest()> interest,
                                      std::function<void()> onReady, RunLoopModes modes) {
  removeFileDescriptorSource(fd);
  sources_.push_back({fd, std::move(interest), std::move(onReady), modes});
}

void RunLoop::removeFileDescriptorSource(int fd) {
  sources_.erase(std::remove_if(sources_.begin(), sources_.end(), [&](const Source& s) { return s.fd == fd; }),
                 sources_.end());
}

void RunLoop::pruneTimers() {
  timers_.erase(std::remove_if(timers_.begin(), timers_.end(), [](const TimerEntry& e) { return !e.timer->isValid(); }),
                timers_.end());
}

double RunLoop::nextDueTime(RunLoopModes mode) const {
  double next = std::numeric_limits<double>::infinity();
  for (const auto& p : performs_)
    if (p->modes & mode) next = std::min(next, p->due);
  for (const auto& t : timers_)
    if ((t.modes & mode) && t.timer->isValid()) next = std::min(next, t.timer->fireDate());
  return next;
}

bool RunLoop::runDuePass(RunLoopModes mode) {
  pruneTimers();
  const double now = Clock::current().now();
  struct Due {
    double due;
    std::uint64_t sequence;
    std::shared_ptr<Perform> perform;
    TimerPtr timer;
  };
  std::vector<Due> due;
  for (const auto& p : performs_)
    if ((p->modes & mode) && p->due <= now) due.push_back({p->due, p->sequence, p, nullptr});
  for (const auto& t : timers_)
    if ((t.modes & mode) && t.timer->isValid() && t.timer->fireDate() <= now)
      due.push_back({t.timer->fireDate(), t.sequence, nullptr, t.timer});
  if (due.empty()) return false;
  std::sort(due.begin(), due.end(),
            [](const Due& a, const Due& b) { return a.due != b.due ? a.due < b.due : a.sequence < b.sequence; });

  for (auto& work : due) {
    if (work.perform) {
      if (work.perform->cancelled) continue;
      takeOut(work.perform);
      work.perform->cancelled = true;
      auto perform = work.perform;
      runGuarded("delayed perform", [&] {
        if (perform->block) {
          perform->block();
        } else if (!perform->target->performSelector(perform->selector, perform->argument)) {
          Log::write(Log::Channel::System,
                     perform->target->className() + " does not respond to " + perform->selector);
        }
      });
    } else {
      auto timer = work.timer;
      if (!timer->isValid() || timer->fireDate() > now) continue;
      if (timer->repeats()) {
        timer->reschedule(now);
        for (auto& entry : timers_)
          if (entry.timer == timer) entry.sequence = nextSequence_++;
        runGuarded("timer", [&] { timer->fire(); });
      } else {
        runGuarded("timer", [&] { timer->fire(); });
        timer->invalidate();
      }
    }
  }
  pruneTimers();
  return true;
}

void RunLoop::ensureWakePipe() {
  if (wakePipe_[0] >= 0) return;
  if (pipe2(wakePipe_, O_CLOEXEC | O_NONBLOCK) != 0) wakePipe_[0] = wakePipe_[1] = -1;
}

void RunLoop::wakeUp() {
  if (wakePipe_[1] >= 0) {
    char byte = 0;
    [[maybe_unused]] auto written = write(wakePipe_[1], &byte, 1);
  }
}

void RunLoop::waitUntil(double time, RunLoopModes mode) {
  Clock& clock = Clock::current();
  if (auto* virtualClock = dynamic_cast<VirtualClock*>(&clock)) {
    virtualClock->advanceTo(time);
    return;
  }
  ensureWakePipe();
  std::vector<pollfd> fds;
  std::vector<std::function<void()>> callbacks;
  std::vector<double> deadlines;
  if (wakePipe_[0] >= 0) {
    fds.push_back({wakePipe_[0], POLLIN, 0});
    callbacks.push_back(nullptr);
    deadlines.push_back(std::numeric_limits<double>::infinity());
  }
  for (const auto& source : sources_) {
    if (!(source.modes & mode)) continue;
    DescriptorInterest interest;
    if (source.interest) runGuarded("descriptor source", [&] { interest = source.interest(); });
    fds.push_back({source.fd, interest.events, 0});
    callbacks.push_back(source.onReady);
    deadlines.push_back(interest.deadline);
    time = std::min(time, interest.deadline);
  }
  double wait = time - clock.now();
  int timeout = std::isinf(wait) ? -1 : std::max(0, static_cast<int>(std::ceil(wait * 1000.0)));
  int ready = poll(fds.data(), fds.size(), timeout);
  if (ready < 0) return;
  const double now = clock.now();
  for (std::size_t i = 0; i < fds.size(); ++i) {
    const bool signalled = fds[i].revents & (fds[i].events | POLLHUP | POLLERR | POLLNVAL);
    if (!signalled && now < deadlines[i]) continue;
    if (!callbacks[i]) {
      char buffer[64];
      while (read(fds[i].fd, buffer, sizeof buffer) > 0) {
      }
      continue;
    }
    auto callback = callbacks[i];
    runGuarded("descriptor source", [&] { callback(); });
  }
}

void RunLoop::runUntil(double limit, RunLoopModes mode) {
  stopRequested_ = false;
  Clock& clock = Clock::current();
  while (!stopRequested_) {
    if (runDuePass(mode)) continue;
    if (clock.now() >= limit) break;
    waitUntil(std::min(limit, nextDueTime(mode)), mode);
  }
  stopRequested_ = false;
}

void RunLoop::runFor(double seconds, RunLoopModes mode) { runUntil(Clock::current().now() + seconds, mode); }

void RunLoop::runUntilIdle(RunLoopModes mode) {
  while (runDuePass(mode)) {
  }
}

void RunLoop::reset() {
  // Let go of the targets only once the loop is empty: a target's destructor
  // may cancel its own performs or invalidate its timers.
  auto performs = std::move(performs_);
  performs_.clear();
  performsByTarget_.clear();
  for (auto& p : performs) p->cancelled = true;
  auto timers = std::move(timers_);
  timers_.clear();
  for (auto& t : timers) t.timer->invalidate();
  sources_.clear();
  stopRequested_ = false;
}

}  // namespace platform
