#include "ChildProcess.h"

ChildProcess::Event ChildProcess::Next(std::string& line, std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!TakeLine(line)) {
    // Asked first, so that what is received afterwards is all that there will be.
    const bool ended = HasEnded();
    if (Receive()) {
      continue;
    }
    if (ended) {
      return Event::ENDED;
    }
    if (std::chrono::steady_clock::now() >= deadline) {
      return Event::TIMED_OUT;
    }
  }
  return Event::LINE;
}

bool ChildProcess::TakeLine(std::string& line) {
  const std::size_t end = received_.find('\n');
  if (end == std::string::npos) {
    return false;
  }
  line = received_.substr(0, end);
  received_.erase(0, end + 1);
  return true;
}
