#pragma once

#include <stdexcept>

namespace kibpurple {

// A libpurple client that did not answer a call as its interface promises:
// an error reply (a vanished id), a reply of the wrong type, no reply in time.
// The message is one line naming the call.
class PurpleReplyError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The client did not answer in time (or was left alone after such a call).
class PurpleNoAnswer : public PurpleReplyError {
 public:
  using PurpleReplyError::PurpleReplyError;
};

}  // namespace kibpurple
