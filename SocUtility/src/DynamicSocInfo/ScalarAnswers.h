/// The scalar answers of a record that no longer changes, encoded once: a warm query is a check of
/// its arguments and a load and a store or two, whatever the field's type.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "ZynSystemInfo.h"

/// Holds the numbers, the flags and the GPU's name. What else a query can end in (lists, refusals,
/// buffers that are too small, a name of unusual length) is left to the query in full.
class ScalarAnswers {
 public:
  /// No answers at all.
  constexpr ScalarAnswers() = default;
  /// A record's answers.
  explicit ScalarAnswers(const SocInfo& record);

  /// Writes the answer to `buffer`, which has `*size` bytes, if there is one and it fits; a name
  /// also sets `*size`. The key is compared as a whole. Returns whether it was written.
  bool Write(std::uint64_t component, std::uint64_t key, void* buffer,
             std::uint64_t* size) const noexcept {
    const std::uint64_t row = component - FIRST_COMPONENT;
    if (row >= COMPONENTS || key >= KEYS) {
      return false;
    }
    // The common width is decided by a single comparison: every branch here is felt.
    const Answer& answer = answers_[row][key];
    const std::uint64_t capacity = *size;
    if (capacity > answer.tooSmallForWide) [[likely]] {
      std::memcpy(buffer, &answer.bits, 8);
      return true;
    }
    if (capacity > answer.tooSmallForFloat) [[likely]] {
      std::memcpy(buffer, &answer.bits, 4);
      return true;
    }
    if (component == GPU && key == NAME_KEY && capacity > name_.tooSmall) {
      *size = name_.size;
      name_.Write(buffer);
      return true;
    }
    return false;
  }

 private:
  static constexpr std::uint64_t FIRST_COMPONENT = DSP;
  static constexpr std::uint64_t COMPONENTS = CPU - DSP + 1;
  static constexpr std::uint64_t KEYS = 49;
  static constexpr std::uint64_t NAME_KEY = 4;  // of the GPU
  /// No capacity is larger: not even what a list query that failed left in `*size`.
  static constexpr std::uint64_t NO_ANSWER = std::numeric_limits<std::uint64_t>::max();

  struct Answer {
    std::uint64_t bits = 0;  ///< The answer's bytes, from the first one on.
    // The largest buffer that an answer of 8 bytes, and one of 4, does not fit.
    std::uint64_t tooSmallForWide = NO_ANSWER;
    std::uint64_t tooSmallForFloat = NO_ANSWER;
  };

  /// A name and its NUL, of eight to sixteen bytes: two words, the second of which overlaps the
  /// first.
  struct Name {
    static constexpr std::uint64_t WORD = 8;

    /// Leaves a name of another length out, and lets no buffer below `minimum` be answered.
    void Encode(const std::string& name, std::uint64_t minimum);
    void Write(void* buffer) const noexcept {
      std::memcpy(buffer, &first, WORD);
      std::memcpy(static_cast<char*>(buffer) + size - WORD, &last, WORD);
    }

    std::uint64_t first = 0;
    std::uint64_t last = 0;
    std::uint64_t size = 0;
    std::uint64_t tooSmall = NO_ANSWER;  ///< The largest buffer that it does not fit.
  };

  template <class Record>
  void Encode(const Record& entry);

  std::array<std::array<Answer, KEYS>, COMPONENTS> answers_{};
  Name name_;
};

inline constexpr ScalarAnswers NO_SCALAR_ANSWERS;

/// What warm scalar queries answer from: nothing until the query's record is confirmed, and nothing
/// while a provider attempt runs, so that they need not ask whether one does.
inline constinit std::atomic<const ScalarAnswers*> settledAnswers = &NO_SCALAR_ANSWERS;
