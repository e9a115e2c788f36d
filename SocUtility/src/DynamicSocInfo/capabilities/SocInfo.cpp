#include "DynamicSocInfo/capabilities/SocInfo.h"

#include <utility>

SocInfo::SocInfo(std::uint32_t model, std::vector<std::uint32_t> ids,
                 std::vector<std::string> furtherNames, std::vector<DspInfo> dspEntries,
                 CpuInfo cpuEntry, std::vector<GpuInfo> gpuEntries, std::uint64_t limit,
                 std::string chipName)
    : socModel(model),
      chipIds(std::move(ids)),
      altNames(std::move(furtherNames)),
      dsps(std::move(dspEntries)),
      cpu(cpuEntry),
      gpus(std::move(gpuEntries)),
      sizeLimit(limit),
      name(std::move(chipName)),
      nameSet{name} {
  if (dsps.empty()) {
    dsps.emplace_back();
  }
}

SocInfo::SocInfo(std::uint32_t model, std::vector<std::uint32_t> ids,
                 std::vector<std::string> furtherNames, std::vector<DspInfo> dspEntries,
                 CpuInfo cpuEntry, std::vector<GpuInfo> gpuEntries, std::uint64_t limit,
                 const std::vector<std::string>& chipNames)
    : SocInfo(model, std::move(ids), std::move(furtherNames), std::move(dspEntries), cpuEntry,
              std::move(gpuEntries), limit, chipNames.front()) {
  nameSet.insert(chipNames.begin(), chipNames.end());
}
