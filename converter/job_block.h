#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "converter/result.h"
#include "platform/text.h"

namespace converter {

inline constexpr std::uint8_t kFormatVersion = 12;

enum class Encryption : std::uint32_t {
    Rc4Bits40,
    Rc4Bits128,
    AesBits128,
    AesBits256,
    AesBits256R6
};
enum class Changes : std::uint32_t { None, Assembly, Forms, Comments, General };
enum class Printing : std::uint32_t { None, LowResolution, Full };

/// The protection of the PDF. The permissions named 40 hold for the 40-bit level, the others for
/// all levels above it.
struct Security {
    bool hasUserPassword = false;   // a password opens the document
    bool hasOwnerPassword = false;  // a password lifts the permissions
    platform::WideString userPassword;
    platform::WideString ownerPassword;
    Encryption type = Encryption::Rc4Bits40;
    bool allow40Printing = false;
    bool allow40Changing = false;
    bool allow40Copying = false;
    bool allow40Comments = false;
    bool allow128ContentAccess = false;  // for programs that read aloud
    bool allow128Copying = false;
    Changes changes128 = Changes::None;
    Printing printing128 = Printing::None;
    bool encryptMetadata128 = false;
};

/// What to start when the PDF is done.
struct RunApp {
    bool useCustomApp = false;  // else the system's own for PDF files
    platform::WideString appPath;
    platform::WideString appParameters;  // %f stands for the PDF
};

struct ExtraTexts {
    platform::WideString text[3];
};

struct Details {
    platform::WideString text[10];
    std::uint64_t value = 0;
};

struct Item {
    platform::WideString source;         // an address, or a path when sourceIsTemporary
    platform::WideString selectionHtml;  // empty: the whole page
    platform::WideString itemText;
    platform::WideString outputFile;
    std::vector<platform::WideString> attachments;
    bool sourceIsTemporary = false;
    bool attachmentsAreTemporary = false;
    std::optional<Details> details;
};

/// A job block, decoded.
struct Job {
    std::uint32_t blockSize = 0;  // bytes
    std::optional<Security> security;
    std::optional<RunApp> runApp;
    bool nameFlag = false;
    bool askOutputFile = false;
    platform::WideString suggestedName;
    bool optionFlag = false;
    std::uint64_t optionValue = 0;
    std::optional<ExtraTexts> extraTexts;
    std::vector<Item> items;
};

/// The block's length, as its first four bytes give it; 0 if there are fewer.
std::uint32_t ReadBlockSize(std::span<const std::uint8_t> bytes);

/// Decodes a block. The bytes are not trusted: a length counts only as far as there are bytes for
/// it, a flag is 0 or 1, a selection from a list is one of its rows, and nothing may stand behind
/// the last field.
/// \return where and why the block is malformed.
Result<Job> ReadJobBlock(std::span<const std::uint8_t> bytes);

}  // namespace converter
