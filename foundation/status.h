#pragma once

#include <cstdint>

#include "platform/base.h"

namespace AUX {

/// The result of an operation of the library: 0 is success, a negative value is failure. Bits 31
/// and 30 are the severity, bit 25 marks the library's own codes, bits 24 to 16 are the category,
/// bits 15 to 0 the code; the other bits are 0. A value without bit 25 is a plain system code or
/// HRESULT.
using Status = std::int32_t;

enum class StatusSeverity : std::uint32_t { Success = 0, Warning = 1, Error = 2, Failure = 3 };

enum class StatusCategory : std::uint32_t {
    Common = 0,
    Memory = 1,
    InputOutput = 2,
    Codecs = 5,
    FrameBuffer = 13,
    OperatingSystem = 511,
};

/// Builds a code of the library. `code` has 16 bits.
constexpr Status MakeStatus(StatusSeverity severity, StatusCategory category,
                            std::uint32_t code) noexcept {
    constexpr std::uint32_t kOwn = 1u << 25;
    return static_cast<Status>(static_cast<std::uint32_t>(severity) << 30 | kOwn |
                               static_cast<std::uint32_t>(category) << 16 | (code & 0xFFFF));
}

constexpr bool IsFailure(Status status) noexcept { return status < 0; }

/// Folds an operating-system error into a Status. A value with bit 31 set is a failure already and
/// stays unchanged. An error of 0 is not folded by the operations: they decide on a code
/// themselves.
constexpr Status StatusFromSystemError(DWORD error) noexcept {
    if (error & 0x80000000u) return static_cast<Status>(error);
    return MakeStatus(StatusSeverity::Error, StatusCategory::OperatingSystem, error);
}

inline constexpr Status kStatusOk = 0;

constexpr Status MakeIoStatus(StatusSeverity severity, std::uint32_t code) noexcept {
    return MakeStatus(severity, StatusCategory::InputOutput, code);
}

// The codes that the streams give.
inline constexpr Status kStatusInvalidArgument = MakeIoStatus(StatusSeverity::Error, 0x0001);
inline constexpr Status kStatusUnsupportedOperation = MakeIoStatus(StatusSeverity::Error, 0x0009);
inline constexpr Status kStatusInvalidAccessMode = MakeIoStatus(StatusSeverity::Error, 0x000A);
inline constexpr Status kStatusInvalidSeekMode = MakeIoStatus(StatusSeverity::Error, 0x000B);
inline constexpr Status kStatusInvalidSeekPosition = MakeIoStatus(StatusSeverity::Error, 0x000C);
inline constexpr Status kStatusNotInitialized = MakeIoStatus(StatusSeverity::Error, 0x0010);
inline constexpr Status kStatusInternalError = MakeIoStatus(StatusSeverity::Error, 0x0011);
inline constexpr Status kStatusEndOfData = MakeIoStatus(StatusSeverity::Error, 0x001B);
/// A file that changed while its network path was gone; it stands in no message table.
inline constexpr Status kStatusFileChanged = MakeIoStatus(StatusSeverity::Error, 0x001E);
/// A short write; the system gave no error.
inline constexpr Status kStatusFailure = MakeIoStatus(StatusSeverity::Failure, 0x000E);
inline constexpr Status kStatusFailedToInitialize = MakeIoStatus(StatusSeverity::Failure, 0x000F);
inline constexpr Status kStatusInsufficientMemory = MakeIoStatus(StatusSeverity::Failure, 0x03E8);
inline constexpr Status kStatusReadFailed = MakeIoStatus(StatusSeverity::Failure, 0x1001);
inline constexpr Status kStatusWriteFailed = MakeIoStatus(StatusSeverity::Failure, 0x1002);

/// Folds the error that a failed call of the system left, which may be 0.
constexpr Status StatusFromFailedCall(DWORD error) noexcept {
    return error ? StatusFromSystemError(error) : kStatusFailedToInitialize;
}

static_assert(kStatusNotInitialized == static_cast<Status>(0x82020010));
static_assert(kStatusInsufficientMemory == static_cast<Status>(0xC20203E8));
static_assert(StatusFromSystemError(161) == static_cast<Status>(0x83FF00A1));

}  // namespace AUX
