#pragma once

#include <functional>
#include <memory>
#include <string>

namespace kibhost {

// Passes label changes on at most once per interval: the first change at
// once, later ones at the end of the interval, only the latest of them. A bus
// is not a frame-rate channel; with nothing changing, nothing is scheduled.
class LabelThrottle {
 public:
  LabelThrottle(double minimumInterval, std::function<void(const std::string&)> send);
  ~LabelThrottle();
  LabelThrottle(const LabelThrottle&) = delete;
  LabelThrottle& operator=(const LabelThrottle&) = delete;

  void update(const std::string& label);
  // The label last passed on.
  const std::string& sent() const { return sent_; }
  bool hasPending() const { return flushScheduled_; }

 private:
  void flush();

  double interval_;
  std::function<void(const std::string&)> send_;
  std::string sent_;
  std::string latest_;
  double lastSendTime_ = -1e300;
  bool flushScheduled_ = false;
  std::shared_ptr<LabelThrottle*> self_;
};

}  // namespace kibhost
