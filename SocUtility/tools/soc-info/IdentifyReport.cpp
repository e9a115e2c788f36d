#include "IdentifyReport.h"

#include <ostream>

#include "DynamicSocInfo/chip/ChipCatalogue.h"

namespace {

constexpr int U32_DIGITS = 8;
constexpr int U64_DIGITS = 16;

std::string fadtFinding(const IdentifyReport& report) {
  const Identification& steps = report.steps;
  if (!steps.fadtRead) {
    return report.accessDenied ? "not readable: access denied, administrator rights are needed"
                               : "none, or not readable";
  }
  if (!steps.oemRevision) {
    return "read, too short to have an OEM Revision";
  }
  return "read, OEM Revision " + Hex(*steps.oemRevision, U32_DIGITS) +
         (steps.decidedByFadt ? ", which alone stands for a chip" : "");
}

std::string ppttFinding(const Identification& steps) {
  if (!steps.fadtRead || steps.decidedByFadt) {
    return "not looked at";
  }
  if (!steps.ppttRead) {
    return "none, or not readable";
  }
  return steps.idStructure
             ? "read, ID structure at offset " + std::to_string(steps.idStructure->offset)
             : "read, no whole ID structure in it";
}

}  // namespace

IdentifyReport Identify(const MachineTables& tables) {
  const Identification steps = IdentifyFromTables([&](std::uint32_t tableId) {
    return TableBytes(tableId == FADT_ID ? tables.fadt : tables.pptt);
  });
  return {steps, BuildChipRecord(steps.chipId), tables.accessDenied};
}

std::string WhyNotIdentified(const IdentifyReport& report) {
  const Identification& steps = report.steps;
  if (!steps.fadtRead) {
    return report.accessDenied ? "the FADT may only be read with administrator rights"
                               : "the FADT could not be read";
  }
  if (!steps.ppttRead) {
    return "the machine has no PPTT";
  }
  if (!steps.idStructure) {
    return "the PPTT has no ID structure";
  }
  if (steps.key == 0) {
    return "the key is 0";
  }
  return "the key is not in the map";
}

std::string LineToAdd(const Identification& steps) {
  if (steps.key == 0 || steps.chipId != NO_CHIP_ID) {
    return {};
  }
  return "    {" + Hex(steps.key, U64_DIGITS) + ", CHIP_NAME},";
}

void WriteText(std::ostream& out, const IdentifyReport& report) {
  const Identification& steps = report.steps;
  WriteLine(out, "FADT", fadtFinding(report));
  WriteLine(out, "PPTT", ppttFinding(steps));
  if (steps.idStructure) {
    WriteLine(out, "Level 1 ID", Hex(steps.idStructure->level1Id, U64_DIGITS));
    WriteLine(out, "Level 2 ID", Hex(steps.idStructure->level2Id, U64_DIGITS));
    WriteLine(out, "key", Hex(steps.key, U64_DIGITS));
  }
  WriteLine(out, "identifier",
            steps.chipId != NO_CHIP_ID ? std::to_string(steps.chipId)
                                       : "none: " + WhyNotIdentified(report));
  WriteLine(out, "row",
            report.record.name + (report.record.isKnownChip
                                      ? ", model " + std::to_string(report.record.socModel)
                                      : ", the unknown row"));
  if (const std::string line = LineToAdd(steps); !line.empty()) {
    out << "\nTo have this chip identified, add to chip/ChipData.cpp, with the constant of the "
           "chip's\nidentifier in place of CHIP_NAME:\n\n"
        << line << '\n';
  }
}

Json ToJson(const IdentifyReport& report) {
  const Identification& steps = report.steps;
  Json fadt = {
      {"read", steps.fadtRead}, {"oemRevision", nullptr}, {"decides", steps.decidedByFadt}};
  if (steps.oemRevision) {
    fadt["oemRevision"] = *steps.oemRevision;
  }
  Json pptt = {{"read", steps.ppttRead}, {"idStructure", nullptr}};
  if (steps.idStructure) {
    pptt["idStructure"] = {{"offset", steps.idStructure->offset},
                           {"level1Id", steps.idStructure->level1Id},
                           {"level2Id", steps.idStructure->level2Id}};
  }
  Json document = {{"schemaVersion", 1}, {"fadt", fadt},        {"pptt", pptt},
                   {"key", steps.key},   {"keyHex", nullptr},   {"chipId", steps.chipId},
                   {"row", nullptr},     {"lineToAdd", nullptr}};
  if (steps.key != 0) {
    document["keyHex"] = Hex(steps.key, U64_DIGITS);
  }
  if (report.record.isKnownChip) {
    document["row"] = {{"model", report.record.socModel}, {"name", report.record.name}};
  }
  if (const std::string line = LineToAdd(steps); !line.empty()) {
    document["lineToAdd"] = line;
  }
  return document;
}
