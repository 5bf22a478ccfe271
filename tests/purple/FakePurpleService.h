#pragma once

#include <systemd/sd-bus.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

namespace kibtest {

// A stand-in for a libpurple client on a private bus, answering from a table
// (method, first integer argument) -> reply, on a thread of its own so the
// backend's bounded blocking calls get answers. A reply may be of any type,
// whatever the method promises: that is the point (so it speaks sd-bus
// directly, which checks no reply against a declared signature). Missing
// entries answer libpurple's invalid-handle error. Every call is recorded.
// Bus work happens on the service's thread only; the test's requests
// (claim, release, emit) are queued to it.
class FakePurpleService {
 public:
  struct Nothing {};
  using Reply = std::variant<Nothing, std::int32_t, std::string, std::vector<std::int32_t>>;

  explicit FakePurpleService(const std::string& address);
  ~FakePurpleService();

  void set(const std::string& method, std::int32_t key, Reply reply);
  void forget(const std::string& method, std::int32_t key);
  // Takes the client's name (a client appears) or gives it up (it goes away).
  void claimName();
  void releaseName();
  void emit(const std::string& signal, std::int32_t id);
  void emitWrongly(const std::string& signal);  // a string where an id belongs
  // "Method(arg, …)" for every call so far, and whether one starts with the prefix.
  std::vector<std::string> calls();
  bool called(const std::string& prefix);

 private:
  static int onMessage(sd_bus_message* message, void* self, sd_bus_error* error);
  int answer(sd_bus_message* message);
  void later(std::function<void(sd_bus*)> work);
  void run();

  sd_bus* bus_ = nullptr;
  sd_bus_slot* slot_ = nullptr;
  std::atomic<bool> stopping_{false};
  std::thread thread_;
  std::vector<std::function<void(sd_bus*)>> queued_;
  std::mutex mutex_;
  std::map<std::pair<std::string, std::int32_t>, Reply> replies_;
  std::vector<std::string> calls_;
};

}  // namespace kibtest
