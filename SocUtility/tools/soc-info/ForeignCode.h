/// How this program runs code that is not its own: the installed library, and providers. A child
/// process does it, and reports each step before it makes it.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>

#include "ChildProcess.h"
#include "Output.h"

/// The step in which the installed library makes its first query, which may load a provider.
inline constexpr const char* FIRST_QUERY = "its first query";

/// Where foreign code runs.
struct Step {
  std::string library;  ///< Its path.
  std::string at;       ///< "load", "DSP 17", "unload", "exit" and the like.
  int key = -1;         ///< The number of the key in the job, if keys after it can still be asked.
};

/// One of `findings` in a document: what foreign code did wrong. `detail` may be null. `fails` is
/// whether the exit status shows it.
Json Finding(const std::string& what, const Step& step, const Json& detail, bool fails = true);

/// Whether foreign code ended the process at a finding.
bool EndsProcess(const Json& finding);

/// For people: "crash at DSP 17, in ...".
std::string FindingText(const Json& finding);
/// For people, a line for each.
void WriteFindings(std::ostream& out, const Json& findings);

/// The parent's side: runs a job in a child. If the child ends early at a key, a new child
/// continues with the key after it. For this the parent sets `from` in the job, the number of the
/// first key to ask. Gives up after three hangs, because each takes `seconds`.
///
/// `receive` gets each object that the children wrote. Returns the findings. Throws
/// `std::runtime_error`.
Json RunForeignCode(Json job, double seconds, const std::function<void(const Json&)>& receive);

/// The child's side: the report to the parent.
class JobReport {
 public:
  explicit JobReport(int descriptor);

  /// What is to be done.
  const Json& Job() const { return job_; }
  /// Says what comes next, in case it is not survived.
  void Begin(const Step& step);
  void Write(const Json& object);
  void AddFinding(const Json& finding) { Write({{"finding", finding}}); }

 private:
  ChildStream stream_;
  Json job_;
};

/// The hidden command `child`: does the job that it is given.
void RunJob(int descriptor);
