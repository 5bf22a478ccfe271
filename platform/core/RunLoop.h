#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/core/Object.h"
#include "platform/core/RecyclingAllocator.h"
#include "platform/core/Timer.h"

namespace platform {

// Run-loop modes as bits: work is registered for a set of modes and runs only
// while the loop runs in one of them.
using RunLoopModes = unsigned;
inline constexpr RunLoopModes kDefaultRunLoopMode = 1;
inline constexpr RunLoopModes kEventTrackingRunLoopMode = 2;
inline constexpr RunLoopModes kCommonRunLoopModes = kDefaultRunLoopMode | kEventTrackingRunLoopMode;

// One run loop per thread; the main one drives everything. Due work runs in
// (due time, scheduling sequence) order; the loop takes the due set before it
// runs any of it, so work scheduled from a callback waits for the next pass.
// Under a virtual clock the loop moves time forward to the next due work.
class RunLoop {
 public:
  static RunLoop& main();
  static RunLoop& current();

  RunLoop() = default;
  RunLoop(const RunLoop&) = delete;
  RunLoop& operator=(const RunLoop&) = delete;
  ~RunLoop();

  // Timers. Adding a timer again with other modes widens its modes.
  void addTimer(const TimerPtr& timer, RunLoopModes modes);

  // Delayed performs: the target (held until the perform runs or is cancelled)
  // is sent the selector with the argument after the delay.
  void performSelectorAfterDelay(const ObjectPtr& target, std::string selector, const ObjectPtr& argument,
                                 double delay, RunLoopModes modes = kDefaultRunLoopMode);
  // Cancels every delayed perform aimed at the target.
  void cancelPreviousPerformRequests(const Object* target);
  // Cancels the target's performs of one selector, whatever their argument.
  void cancelPreviousPerformRequests(const Object* target, std::string_view selector);
  // Cancels the target's performs of one selector with an equal argument.
  void cancelPreviousPerformRequests(const Object* target, std::string_view selector, const Object* argument);
  std::size_t pendingPerformCount(const Object* target, std::string_view selector = {}) const;

  // Runs a block after a delay (0: on the loop's next turn).
  void performBlock(double delay, RunLoopModes modes, std::function<void()> block);

  // A source that calls back when the descriptor is readable (adapters, terminals).
  void addFileDescriptorSource(int fd, std::function<void()> onReadable, RunLoopModes modes = kCommonRunLoopModes);
  // What a descriptor source waits for, asked again before every wait: the poll
  // events and a clock time after which it is called even if nothing arrived.
  struct DescriptorInterest {
    short events = 1;  // POLLIN
    double deadline = std::numeric_limits<double>::infinity();
  };
  // A source whose events and deadline change from wait to wait (a bus
  // connection): onReady runs when the descriptor reports any of the events,
  // an error or hang-up, or when the deadline has passed.
  void addFileDescriptorSource(int fd, std::function<DescriptorInterest()> interest, std::function<void()> onReady,
                               RunLoopModes modes = kCommonRunLoopModes);
  void removeFileDescriptorSource(int fd);

  // Runs the mode until the clock reaches the limit or stop() is called.
  void runUntil(double limit, RunLoopModes mode = kDefaultRunLoopMode);
  void runFor(double seconds, RunLoopModes mode = kDefaultRunLoopMode);
  // Runs the work that is due now, pass after pass, until nothing is due; time stands still.
  void runUntilIdle(RunLoopModes mode = kDefaultRunLoopMode);
  // Makes the innermost running runUntil return after its current pass.
  void stop() { stopRequested_ = true; }
  // Thread-safe: wakes a loop that waits on its descriptors.
  void wakeUp();

  // Timers, delayed performs and sources the loop holds (a long run must not let it grow).
  std::size_t queuedWorkCount() const { return performs_.size() + timers_.size() + sources_.size(); }
  // The earliest due time of work in the mode, or infinity.
  double nextDueTime(RunLoopModes mode) const;
  // Drops every timer, perform and source (tests start from an empty loop).
  void reset();

 private:
  struct Perform;
  // A refill of a list starts and ends a transition, and so a perform, for
  // many rows at once: the performs' list nodes and counts are recycled blocks.
  using Performs = std::list<std::shared_ptr<Perform>, RecyclingAllocator<std::shared_ptr<Perform>>>;
  using PerformCounts = std::unordered_map<const Object*, std::size_t, std::hash<const Object*>,
                                           std::equal_to<const Object*>,
                                           RecyclingAllocator<std::pair<const Object* const, std::size_t>>>;
  struct Perform {
    double due;
    std::uint64_t sequence;
    RunLoopModes modes;
    ObjectPtr target;
    std::string selector;
    ObjectPtr argument;
    std::function<void()> block;
    bool cancelled = false;
    // Where it waits in performs_, while it waits.
    Performs::iterator position;
  };
  struct TimerEntry {
    TimerPtr timer;
    RunLoopModes modes;
    std::uint64_t sequence;
  };
  struct Source {
    int fd;
    std::function<DescriptorInterest()> interest;  // nil: readable only, no deadline
    std::function<void()> onReady;
    RunLoopModes modes;
  };

  void addPerform(std::shared_ptr<Perform> perform);
  // Cancels the target's performs that match; a target with none costs nothing.
  void cancelWhere(const Object* target, const std::function<bool(const Perform&)>& matches);
  // Takes a waiting perform out of performs_.
  void takeOut(const std::shared_ptr<Perform>& perform);
  // Runs the work due now in the mode; answers whether anything ran.
  bool runDuePass(RunLoopModes mode);
  void waitUntil(double time, RunLoopModes mode);
  void pruneTimers();
  void ensureWakePipe();

  Performs performs_;
  // How many of the waiting performs aim at each target.
  PerformCounts performsByTarget_;
  std::vector<TimerEntry> timers_;
  std::vector<Source> sources_;
  std::uint64_t nextSequence_ = 0;
  bool stopRequested_ = false;
  int wakePipe_[2] = {-1, -1};
};

}  // namespace platform
