#include <ostream>

#include "Commands.h"
#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "DynamicSocInfo/chip/ChipIdentification.h"
#include "RunInfo.h"

namespace {

constexpr int U32_DIGITS = 8;
constexpr int U64_DIGITS = 16;

/// Why there is no chip identifier; null when there is one.
Json reasonOf(const Identification& steps, const MachineTables& tables) {
  if (steps.chipId != NO_CHIP_ID) {
    return nullptr;
  }
  if (!steps.fadtRead) {
    return tables.accessDenied ? "the FADT may only be read with administrator rights"
                               : "the FADT could not be read";
  }
  if (!steps.ppttRead) {
    return tables.ppttUnknown ? "there is no dump of the PPTT; the machine may have one"
                              : "the machine has no PPTT";
  }
  if (!steps.idStructure) {
    return "the PPTT has no ID structure";
  }
  return steps.key == 0 ? "the key is 0" : "the key is not in the map";
}

Json idStructureOf(const Identification& steps) {
  if (!steps.idStructure) {
    return nullptr;
  }
  const auto& [offset, level1Id, level2Id] = *steps.idStructure;
  return {{"offset", offset},
          {"level1Id", level1Id},
          {"level1IdHex", Hex(level1Id, U64_DIGITS)},
          {"level2Id", level2Id},
          {"level2IdHex", Hex(level2Id, U64_DIGITS)}};
}

Json rowOf(const SocInfo& record) {
  return record.isKnownChip ? Json{{"model", record.socModel}, {"name", record.name}}
                            : Json(nullptr);
}

std::string fadtFinding(const Json& document) {
  const Json& fadt = document.at("fadt");
  if (fadt.at("accessDenied") == true) {
    return "not readable: access denied, administrator rights are needed";
  }
  if (fadt.at("read") == false) {
    return "none, or not readable";
  }
  if (fadt.at("oemRevision").is_null()) {
    return "read, too short to have an OEM Revision";
  }
  return "read, OEM Revision " + Hex(fadt.at("oemRevision"), U32_DIGITS) +
         (fadt.at("decides") == true ? ", which alone identifies a chip" : "");
}

std::string ppttFinding(const Json& document) {
  const Json& pptt = document.at("pptt");
  if (document.at("fadt").at("read") == false || document.at("fadt").at("decides") == true) {
    return "not looked at";
  }
  if (pptt.at("read") == false) {
    return "none, or not readable";
  }
  const Json& structure = pptt.at("idStructure");
  return structure.is_null() ? "read, no whole ID structure in it"
                             : "read, ID structure at offset " + Text(structure.at("offset"));
}

}  // namespace

Json Identify(const MachineTables& tables, const Json& run) {
  const Identification steps = IdentifyFromTables([&](std::uint32_t tableId) {
    return TableBytes(tableId == FADT_ID ? tables.fadt : tables.pptt);
  });
  Json document = {{"schemaVersion", SCHEMA_VERSION},
                   {"command", "identify"},
                   {"run", run},
                   {"fadt",
                    {{"read", steps.fadtRead},
                     {"accessDenied", tables.accessDenied},
                     {"oemRevision", nullptr},
                     {"decides", steps.decidedByFadt}}},
                   {"pptt", {{"read", steps.ppttRead}, {"idStructure", idStructureOf(steps)}}},
                   {"key", steps.key},
                   {"keyHex", steps.key == 0 ? Json(nullptr) : Json(Hex(steps.key, U64_DIGITS))},
                   {"chipId", steps.chipId},
                   {"reason", reasonOf(steps, tables)},
                   {"row", rowOf(BuildChipRecord(steps.chipId))},
                   {"lineToAdd", nullptr}};
  if (steps.oemRevision) {
    document["fadt"]["oemRevision"] = *steps.oemRevision;
  }
  if (steps.key != 0 && steps.chipId == NO_CHIP_ID) {
    document["lineToAdd"] = "    {" + Hex(steps.key, U64_DIGITS) + ", CHIP_NAME},";
  }
  return document;
}

void WriteIdentification(std::ostream& out, const Json& document) {
  WriteLine(out, "FADT", fadtFinding(document));
  WriteLine(out, "PPTT", ppttFinding(document));
  if (const Json& structure = document.at("pptt").at("idStructure"); !structure.is_null()) {
    WriteLine(out, "Level 1 ID", Text(structure.at("level1IdHex")));
    WriteLine(out, "Level 2 ID", Text(structure.at("level2IdHex")));
    WriteLine(out, "key", Text(document.at("keyHex")));
  }
  const Json& reason = document.at("reason");
  WriteLine(out, "identifier",
            reason.is_null() ? Text(document.at("chipId")) : "none: " + Text(reason));
  const Json& row = document.at("row");
  WriteLine(out, "row",
            row.is_null() ? BuildChipRecord(NO_CHIP_ID).name + ", the unknown row"
                          : Text(row.at("name")) + ", model " + Text(row.at("model")));
  WriteRunInfo(out, document);
  if (const Json& line = document.at("lineToAdd"); !line.is_null()) {
    out << "\nTo have this chip identified, add to chip/ChipData.cpp, with the constant of the "
           "chip's\nidentifier in place of CHIP_NAME:\n\n"
        << Text(line) << '\n';
  }
}
