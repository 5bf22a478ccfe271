#include "host/CheckedOutput.h"

#include <cerrno>
#include <cstring>

namespace kibhost {

CheckedOutput::CheckedOutput(std::ostream& destination) : std::ostream(nullptr), buffer_(destination.rdbuf()) {
  rdbuf(&buffer_);
}

std::string CheckedOutput::problem() const {
  return buffer_.error() ? std::strerror(buffer_.error()) : "the output was refused";
}

CheckedOutput::Buffer::int_type CheckedOutput::Buffer::fail() {
  if (!failed_) {
    failed_ = true;
    error_ = errno;
  }
  return traits_type::eof();
}

CheckedOutput::Buffer::int_type CheckedOutput::Buffer::overflow(int_type c) {
  if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
  if (!inner_ || traits_type::eq_int_type(inner_->sputc(traits_type::to_char_type(c)), traits_type::eof()))
    return fail();
  return c;
}

std::streamsize CheckedOutput::Buffer::xsputn(const char* text, std::streamsize count) {
  if (!inner_) {
    fail();
    return 0;
  }
  errno = 0;
  const std::streamsize written = inner_->sputn(text, count);
  if (written < count) fail();
  return written;
}

int CheckedOutput::Buffer::sync() {
  errno = 0;
  if (!inner_ || inner_->pubsync() != 0) {
    fail();
    return -1;
  }
  return 0;
}

}  // namespace kibhost
