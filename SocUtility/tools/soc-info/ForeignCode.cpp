#include "ForeignCode.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <random>
#include <string_view>

#include "ChildJobs.h"

namespace {

constexpr int MOST_HANGS = 3;
/// The child's last step. Its exit statuses say how it ended.
constexpr const char* LAST_STEP = "exit";

/// Begins each object of a report. Foreign code that writes to the descriptor does not know it.
std::string makeMark() {
  std::random_device random;
  return Hex((std::uint64_t{random()} << 32) + random(), 16);
}

/// An object as bytes. Unlike JSON's text this keeps strings that are not UTF-8, such as paths.
std::string encode(const Json& object) {
  std::string bytes;
  Json::to_cbor(object, bytes);
  return bytes;
}

/// Null unless the bytes begin with an object. With `strict` they must be nothing else.
Json decode(std::string_view bytes, bool strict) {
  constexpr bool ALLOW_EXCEPTIONS = false;
  const Json object = Json::from_cbor(bytes, strict, ALLOW_EXCEPTIONS);
  return object.is_object() ? object : Json(nullptr);
}

Step stepFrom(const Json& json) { return {json.at(0), json.at(1), json.at(2)}; }

/// How one child went.
struct ChildRun {
  Step last;              ///< Where it ended.
  Json ending = nullptr;  ///< The finding; null if it did all of its job.
};

/// Gives the objects of a child's report to `receive`, up to bytes that the child did not write.
ChildRun readReport(const ChildResult& child, const std::string& mark, const Step& first,
                    const std::function<void(const Json&)>& receive) {
  ChildRun run{first};
  std::string_view rest = child.report;
  bool isWhole = rest.empty() || rest.starts_with(mark);
  while (isWhole && !rest.empty()) {
    rest.remove_prefix(mark.size());
    const std::string_view bytes = rest.substr(0, rest.find(mark));
    rest.remove_prefix(bytes.size());
    isWhole = decode(bytes, true).is_object();
    const Json object = decode(bytes, false);
    if (object.contains("step")) {
      run.last = stepFrom(object.at("step"));
    } else if (object.is_object()) {
      receive(object);
    }
  }
  if (!isWhole) {
    run.ending = Finding("report", run.last, "it wrote to a descriptor that is not its own");
  } else if (run.last.at != LAST_STEP || child.detail != "exit status 0") {
    run.ending = Finding(child.how, run.last, child.detail);
  }
  return run;
}

}  // namespace

Json Finding(const std::string& what, const Step& step, const Json& detail, bool fails) {
  return {{"what", what},
          {"library", step.library},
          {"at", step.at},
          {"detail", detail},
          {"fails", fails}};
}

bool EndsProcess(const Json& finding) {
  constexpr std::string_view KINDS[] = {"crash", "hang", "exit", "report"};
  return std::ranges::find(KINDS, Text(finding.at("what"))) != std::end(KINDS);
}

std::string FindingText(const Json& finding) {
  const Json& detail = finding.at("detail");
  return Text(finding.at("what")) + " at " + Text(finding.at("at")) + ", in " +
         Quoted(Text(finding.at("library"))) + (detail.is_null() ? "" : ": " + Text(detail));
}

void WriteFindings(std::ostream& out, const Json& findings) {
  for (const Json& finding : findings) {
    WriteLine(out, finding.at("fails") == true ? "failure" : "warning", FindingText(finding));
  }
}

Json RunForeignCode(Json job, double seconds, const std::function<void(const Json&)>& receive) {
  const std::string mark = makeMark();
  const Step first{job.at("file"), "load"};
  job["mark"] = mark;
  Json findings = Json::array();
  for (int hangs = 0; hangs < MOST_HANGS;) {
    const ChildResult child = RunChild(encode(job), seconds);
    const ChildRun run = readReport(child, mark, first, [&](const Json& object) {
      object.contains("finding") ? findings.push_back(object.at("finding")) : receive(object);
    });
    if (run.ending.is_null()) {
      break;
    }
    findings.push_back(run.ending);
    if (run.last.key < 0) {
      break;
    }
    hangs += run.ending.at("what") == "hang" ? 1 : 0;
    job["from"] = run.last.key + 1;
  }
  return findings;
}

JobReport::JobReport(int descriptor) : stream_(descriptor), job_(decode(stream_.Job(), true)) {}

void JobReport::Begin(const Step& step) { Write({{"step", {step.library, step.at, step.key}}}); }

void JobReport::Write(const Json& object) { stream_.Write(Text(job_.at("mark")) + encode(object)); }

void RunJob(int descriptor) {
  JobReport report(descriptor);
  const bool isImport = report.Job().contains("candidates");
  (isImport ? WatchImport : AskLibrary)(report);
  report.Begin({report.Job().at("file"), LAST_STEP});
}
