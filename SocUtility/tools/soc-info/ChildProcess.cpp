#include "ChildProcess.h"

ChildProcess::Event ChildProcess::Next(std::string& line, std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!TakeLine(line)) {
    // Asked first, so that what is received afterwards is all that there will be.
    const bool ended = HasEnded();
    const bool received = Receive();
    if (ended && !received) {
      return Event::ENDED;
    }
    if (received_.size() > LONGEST_LINE) {
      return Event::TOO_LONG;
    }
    if (std::chrono::steady_clock::now() >= deadline) {
      return TakeLine(line) ? Event::LINE : Event::TIMED_OUT;
    }
  }
  return Event::LINE;
}

bool ChildProcess::TakeLine(std::string& line) {
  const std::size_t end = received_.find('\n', searched_);
  if (end == std::string::npos) {
    searched_ = received_.size();
    return false;
  }
  line = received_.substr(0, end);
  received_.erase(0, end + 1);
  searched_ = 0;
  return true;
}
