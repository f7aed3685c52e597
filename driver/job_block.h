#pragma once

#include <cstdint>

#include "driver/conversion_job.h"
#include "foundation/stream.h"

/// The binary form in which a job reaches the converter, format version 12. Its fields are told in
/// docs/converter-interface.md.

/// The bytes that the block will have; more than 32 bits can hold if it cannot be written.
[[nodiscard]] std::uint64_t MeasureJobBlock(const ConversionJob& job) noexcept;

/// Writes the block; see ConversionJob::Serialise.
[[nodiscard]] bool WriteJobBlock(const ConversionJob& job, AUX::Stream& stream) noexcept;
