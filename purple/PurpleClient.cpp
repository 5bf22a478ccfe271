#include "purple/PurpleClient.h"

namespace kibpurple {
namespace {

// How long a client that let a call time out is left alone.
constexpr auto kUnresponsivePause = std::chrono::milliseconds(1000);

bool isTimeout(const sdbus::Error& error) {
  return error.getName() == "org.freedesktop.DBus.Error.NoReply" ||
         error.getName() == "org.freedesktop.DBus.Error.Timeout" ||
         error.getMessage().find("timed out") != std::string::npos;
}

}  // namespace

PurpleClient::PurpleClient(sdbus::IProxy& proxy, std::chrono::milliseconds timeout)
    : proxy_(proxy), timeout_(timeout) {}

void PurpleClient::invoke(const char* method, const std::string& description,
                          const std::function<void(sdbus::MethodInvoker&)>& complete) {
  if (std::chrono::steady_clock::now() < unresponsiveUntil_) {
    ++unanswered_;
    throw PurpleNoAnswer(description + ": the client did not answer a moment ago");
  }
  // The invoker keeps a reference to the name: it must outlive the call.
  const std::string name = method;
  try {
    auto invoker = proxy_.callMethod(name);
    invoker.onInterface(kPurpleInterface).withTimeout(timeout_);
    complete(invoker);
  } catch (const sdbus::Error& error) {
    if (!isTimeout(error)) throw PurpleReplyError(description + ": " + error.getMessage());
    ++unanswered_;
    unresponsiveUntil_ = std::chrono::steady_clock::now() + kUnresponsivePause;
    throw PurpleNoAnswer(description + ": " + error.getMessage());
  }
}

}  // namespace kibpurple
