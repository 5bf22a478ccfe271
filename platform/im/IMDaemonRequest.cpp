#include "platform/im/IMDaemonRequest.h"

namespace platform {

IMDaemonRequest IMDaemonRequest::command(std::string selector, std::vector<std::string> arguments) {
  IMDaemonRequest request;
  request.selector = std::move(selector);
  request.arguments = std::move(arguments);
  return request;
}

IMDaemonRequest IMDaemonRequest::query(std::string selector, std::vector<std::string> arguments, std::string answer) {
  auto request = command(std::move(selector), std::move(arguments));
  request.isQuery = true;
  request.answer = std::move(answer);
  return request;
}

std::string IMDaemonRequest::description() const {
  std::string text = selector;
  for (const auto& argument : arguments) text += " " + argument;
  if (isQuery) text += " -> " + answer;
  return text;
}

}  // namespace platform
