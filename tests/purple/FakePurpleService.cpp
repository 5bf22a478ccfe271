#include "tests/purple/FakePurpleService.h"

#include <stdexcept>

#include "purple/PurpleClient.h"

namespace kibtest {
namespace {

constexpr std::uint64_t kTurnMicroseconds = 20000;

}  // namespace

FakePurpleService::FakePurpleService(const std::string& address) {
  if (sd_bus_new(&bus_) < 0 || sd_bus_set_address(bus_, address.c_str()) < 0 || sd_bus_set_bus_client(bus_, 1) < 0 ||
      sd_bus_start(bus_) < 0)
    throw std::runtime_error("the fake libpurple client cannot reach " + address);
  sd_bus_add_object(bus_, &slot_, kibpurple::kPurpleObjectPath, &FakePurpleService::onMessage, this);
  thread_ = std::thread([this] { run(); });
}

FakePurpleService::~FakePurpleService() {
  stopping_ = true;
  thread_.join();
  sd_bus_slot_unref(slot_);
  sd_bus_flush_close_unref(bus_);
}

void FakePurpleService::run() {
  while (!stopping_) {
    std::vector<std::function<void(sd_bus*)>> work;
    {
      std::lock_guard lock(mutex_);
      work.swap(queued_);
    }
    for (auto& each : work) each(bus_);
    while (sd_bus_process(bus_, nullptr) > 0) {
    }
    sd_bus_wait(bus_, kTurnMicroseconds);
  }
}

void FakePurpleService::later(std::function<void(sd_bus*)> work) {
  std::lock_guard lock(mutex_);
  queued_.push_back(std::move(work));
}

void FakePurpleService::set(const std::string& method, std::int32_t key, Reply reply) {
  std::lock_guard lock(mutex_);
  replies_[{method, key}] = std::move(reply);
}

void FakePurpleService::forget(const std::string& method, std::int32_t key) {
  std::lock_guard lock(mutex_);
  replies_.erase({method, key});
}

void FakePurpleService::claimName() {
  later([](sd_bus* bus) { sd_bus_request_name(bus, kibpurple::kPurpleService, 0); });
}

void FakePurpleService::releaseName() {
  later([](sd_bus* bus) { sd_bus_release_name(bus, kibpurple::kPurpleService); });
}

void FakePurpleService::emit(const std::string& signal, std::int32_t id) {
  later([signal, id](sd_bus* bus) {
    sd_bus_emit_signal(bus, kibpurple::kPurpleObjectPath, kibpurple::kPurpleInterface, signal.c_str(), "ii", id, 0);
  });
}

void FakePurpleService::emitWrongly(const std::string& signal) {
  later([signal](sd_bus* bus) {
    sd_bus_emit_signal(bus, kibpurple::kPurpleObjectPath, kibpurple::kPurpleInterface, signal.c_str(), "s", "nonsense");
  });
}

std::vector<std::string> FakePurpleService::calls() {
  std::lock_guard lock(mutex_);
  return calls_;
}

bool FakePurpleService::called(const std::string& prefix) {
  for (const auto& call : calls())
    if (call.rfind(prefix, 0) == 0) return true;
  return false;
}

int FakePurpleService::onMessage(sd_bus_message* message, void* self, sd_bus_error*) {
  return static_cast<FakePurpleService*>(self)->answer(message);
}

// The key is the first integer argument (the type for the methods that start with a string).
int FakePurpleService::answer(sd_bus_message* message) {
  if (!sd_bus_message_is_method_call(message, kibpurple::kPurpleInterface, nullptr)) return 0;
  const std::string method = sd_bus_message_get_member(message);
  const std::string signature = sd_bus_message_get_signature(message, 1);
  std::int32_t key = 0;
  bool keyed = false;
  std::string text = method + "(";
  for (std::size_t i = 0; i < signature.size(); ++i) {
    if (i) text += ", ";
    if (signature[i] == 'i') {
      std::int32_t value = 0;
      sd_bus_message_read_basic(message, 'i', &value);
      if (!keyed) key = value;
      keyed = true;
      text += std::to_string(value);
    } else {
      const char* value = "";
      sd_bus_message_read_basic(message, 's', &value);
      text += std::string("\"") + value + '"';
    }
  }
  Reply reply;
  bool known = false;
  {
    std::lock_guard lock(mutex_);
    calls_.push_back(text + ")");
    auto found = replies_.find({method, key});
    if (found != replies_.end()) {
      reply = found->second;
      known = true;
    }
  }
  if (!known)
    return sd_bus_reply_method_errorf(message, "im.pidgin.purple.InvalidHandle", "%s: no object with ID %d",
                                      method.c_str(), key);
  sd_bus_message* answer = nullptr;
  sd_bus_message_new_method_return(message, &answer);
  if (auto* number = std::get_if<std::int32_t>(&reply)) {
    sd_bus_message_append_basic(answer, 'i', number);
  } else if (auto* string = std::get_if<std::string>(&reply)) {
    sd_bus_message_append_basic(answer, 's', string->c_str());
  } else if (auto* ids = std::get_if<std::vector<std::int32_t>>(&reply)) {
    sd_bus_message_append_array(answer, 'i', ids->data(), ids->size() * sizeof(std::int32_t));
  }
  sd_bus_send(nullptr, answer, nullptr);
  sd_bus_message_unref(answer);
  return 1;
}

}  // namespace kibtest
