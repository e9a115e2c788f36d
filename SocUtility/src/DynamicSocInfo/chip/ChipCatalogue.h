/// The chip catalogue: what the library itself knows about chips.
#pragma once

#include <cstdint>
#include <map>

#include "DynamicSocInfo/capabilities/SocInfo.h"

/// Rows by model number, visited in ascending order.
class ChipCatalogue {
 public:
  /// Adds a row under its `socModel`. If there is a row already, it stays, and the new one is
  /// dropped.
  void Insert(SocInfo&& row);

  /// The row under `key`. Throws `std::out_of_range` when there is none.
  SocInfo& At(std::int32_t key);

  // Pairs of model number and row.
  auto begin() const { return rows_.begin(); }
  auto end() const { return rows_.end(); }

 private:
  std::map<std::int32_t, SocInfo> rows_;
};

/// The record of a chip. If a row lists `chipId`, returns a copy of that row, with `isKnownChip`
/// set. Otherwise, also for 0, returns a copy of the unknown row ("UNKNOWN_PLX", default values).
/// Stores nothing, so several threads may call it at once. Throws `std::bad_alloc`.
SocInfo BuildChipRecord(std::uint32_t chipId);
