/// ZynSystemInfo: what the system-on-chip of this machine can do, by numbered capability. For C99,
/// C++11 and later.
///
/// Conventions, the same for all three functions:
///
/// 1. A capability is a component (`DSP`, `GPU` or `CPU`) and a key, numbered from 1 within its
///    component. Scalar capabilities are answered by `Soc_GetCapability`; the four lists (DSP keys
///    16, 46, 47, 48) by `Soc_GetCapabilitySerialized`.
/// 2. The caller owns `buffer` and `*size`. On entry `*size` is the buffer's size in bytes; it
///    changes only where a function says so. Nothing is written past the buffer's end, nor into it
///    on a failure.
/// 3. `size` must point to a valid value, and so must `major` and `minor`: null is not tested.
/// 4. Everything is little-endian. Strings end with a NUL byte.
/// 5. Any thread may call any function, in any order. The first call of each query function
///    identifies the chip and may load a provider library; later calls only read. If several
///    threads make the first call, one of them does this and the others wait.
/// 6. Call no query function in these places, where it can wait for ever:
///    - under the loader lock: in `DllMain`, or in a constructor or destructor of a library;
///    - after the process began to exit;
///    - in a forked child, if another thread of the parent was in a query.
/// 7. A refused component or key writes one line to standard error. So does a list that does not
/// fit
///    or has a name of more than 31 bytes.
/// 8. No function throws. A query that fails for another reason than its arguments returns
///    `FAILURE`:
///    - `Soc_GetCapability` only: the chip is unknown, and no provider answered every required key.
///      The call that looks for a provider still answers: with the provider's answers, and with
///      default values for all other keys. All later calls fail.
///    - Memory ran out, or an exception of a provider ended the import. The next call tries again.
///      Two cases last until this library is unloaded. If memory runs out while a firmware table is
///      read, the chip is unknown to this query function; the other function may still know it. If
///      memory runs out while a provider is loaded, the provider is treated as not found.
///    - A provider made the query on the thread that is asking it, and the query function had not
///      finished its import. On another thread such a query waits until the provider is done, so a
///      provider must not wait for that thread.
///    - `Soc_GetCapabilitySerialized` only: a name of the list exceeds 31 bytes.
/// 9. A hardware fault in a provider goes to the program. If a program on Windows handles the
///    fault, the import of this query function is incomplete. It is not repeated, and no call waits
///    for it.
#ifndef ZYN_SYSTEM_INFO_H
#define ZYN_SYSTEM_INFO_H

#include <stdint.h>

#if defined(__GNUC__) && !defined(_WIN32)
#define SOC_API __attribute__((visibility("default")))
#else
#define SOC_API /* on Windows the module definition file names the exports */
#endif

#ifdef __cplusplus
#define SOC_NOEXCEPT noexcept
extern "C" {
#else
#define SOC_NOEXCEPT
#endif

/// Status codes, the result of every function.
enum {
  SOC_SUCCESS = 0,                ///< The answer was written.
  SOC_UNSUPPORTED_COMPONENT = 2,  ///< The component is none of `DSP`, `GPU` and `CPU`.
  SOC_UNSUPPORTED_KEY = 3,        ///< The key is no capability of the component in this function.
  SOC_INSUFFICIENT_SIZE = 4,      ///< The buffer is too small; `*size` holds the bytes required.
  SOC_NULL_BUFFER = 7,            ///< `buffer` is null.
  SOC_FAILURE = 25                ///< The answer could not be produced.
};

/// Components.
enum { SOC_DSP = 2, SOC_GPU = 3, SOC_CPU = 5 };

#ifndef ZYN_NO_SHORT_NAMES
#if defined(SUCCESS) || defined(UNSUPPORTED_COMPONENT) || defined(UNSUPPORTED_KEY) ||         \
    defined(INSUFFICIENT_SIZE) || defined(NULL_BUFFER) || defined(FAILURE) || defined(DSP) || \
    defined(GPU) || defined(CPU)
#error "A short name is already a macro: define ZYN_NO_SHORT_NAMES before ZynSystemInfo.h"
#endif
/// The same values under short names, which the comments and documents use. If another header uses
/// them too, define `ZYN_NO_SHORT_NAMES` before including this one. It then declares only names
/// that begin with `Soc_`, `SOC_` or `ZYN_`.
enum {
  SUCCESS = SOC_SUCCESS,
  UNSUPPORTED_COMPONENT = SOC_UNSUPPORTED_COMPONENT,
  UNSUPPORTED_KEY = SOC_UNSUPPORTED_KEY,
  INSUFFICIENT_SIZE = SOC_INSUFFICIENT_SIZE,
  NULL_BUFFER = SOC_NULL_BUFFER,
  FAILURE = SOC_FAILURE
};
enum { DSP = SOC_DSP, GPU = SOC_GPU, CPU = SOC_CPU };
#endif

/// The version of this interface: writes 0 to `*major` and 1 to `*minor`. Returns `SUCCESS`.
SOC_API uint32_t Soc_GetAPIVersion(uint8_t* major, uint8_t* minor) SOC_NOEXCEPT;

/// Answers one scalar capability at the start of `buffer`.
///
/// Integers and flags take 8 bytes; signed values are sign-extended. DSP keys 43 and 44 are 4-byte
/// IEEE floats. GPU key 4 is the GPU's name with its NUL; `*size` becomes its length. `buffer` must
/// have at least 8 bytes (4 for DSP keys 43 and 44, 12 for GPU key 4, 16 for DSP key 16), even for
/// a capability that does not exist.
///
/// Only the low 32 bits of the key select the capability. The minimum size depends on all 64.
///
/// \param component `DSP`, `GPU` or `CPU`.
/// \param key       The capability's number.
/// \param buffer    Receives the answer.
/// \param size      In: bytes at `buffer`. Out: unchanged, except as stated above for GPU key 4 and
///                  below.
/// \return `SUCCESS`; `NULL_BUFFER` (`*size` becomes 8); `INSUFFICIENT_SIZE` (`*size` becomes the
///         minimum, or the name's length with its NUL); `UNSUPPORTED_COMPONENT`; `UNSUPPORTED_KEY`;
///         `FAILURE` (see 8 above).
SOC_API uint32_t Soc_GetCapability(uint64_t component, uint64_t key, void* buffer,
                                   uint64_t* size) SOC_NOEXCEPT;

/// Answers one list capability as an array of entries without padding.
///
/// Every entry begins with the DSP's index (`uint32_t`, always 0 here), followed by
/// - keys 16 and 46: the value (`uint32_t`), 8 bytes in all;
/// - key 47: a name of 32 bytes, NUL-padded, 36 bytes in all;
/// - key 48: the value (`uint32_t`) and a name of 32 bytes, NUL-padded, 40 bytes in all.
///
/// \param component `DSP`, `GPU` or `CPU`.
/// \param key       The capability's number, of which only the low 32 bits count.
/// \param buffer    Receives the entries; must not be null, even to ask for the size.
/// \param size      In: bytes at `buffer`. Out: bytes written (0 for an empty list) or required.
/// \return `SUCCESS`; `NULL_BUFFER` (`*size` unchanged); `INSUFFICIENT_SIZE` (`*size` becomes the
///         bytes required); `UNSUPPORTED_COMPONENT`; `UNSUPPORTED_KEY`; `FAILURE` (see 8 above;
///         `*size` becomes 2^64 - 1 when a name exceeds 31 bytes).
SOC_API uint32_t Soc_GetCapabilitySerialized(uint64_t component, uint64_t key, void* buffer,
                                             uint64_t* size) SOC_NOEXCEPT;

/// The types of the three functions, for `GetProcAddress` and `dlsym`. They lack `noexcept`, which
/// is not part of a type in C or before C++17.
typedef uint32_t Soc_GetAPIVersionFn(uint8_t* major, uint8_t* minor);
typedef uint32_t Soc_GetCapabilityFn(uint64_t component, uint64_t key, void* buffer,
                                     uint64_t* size);
typedef uint32_t Soc_GetCapabilitySerializedFn(uint64_t component, uint64_t key, void* buffer,
                                               uint64_t* size);

#ifdef __cplusplus
}
#endif

#endif
