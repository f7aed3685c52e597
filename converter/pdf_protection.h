#pragma once

#include <string>

#include "converter/job_block.h"

namespace converter {

/// What the holder of the opening password may do.
struct Permissions {
    bool accessibility = true;
    bool extract = true;
    bool assemble = true;
    bool annotate = true;
    bool form = true;
    bool modify = true;
    Printing print = Printing::Full;

    friend bool operator==(const Permissions&, const Permissions&) = default;
};

/// The protection of a PDF, decided: passwords are in the bytes that the cipher takes.
struct Protection {
    Encryption type = Encryption::Rc4Bits40;
    std::string userPassword;   // empty: opens without
    std::string ownerPassword;  // never empty
    Permissions permissions;
    bool encryptMetadata = true;
    int revision = 2;        // of the security handler
    int leastMinor = 3;      // the least PDF version 1.x that has the cipher
    int extensionLevel = 0;  // to that version
};

/// Decides the protection that a job asks for.
///
/// - The 40-bit level has its own four permissions. Above it, "assembly" allows just that, "forms"
///   filling in, "comments" filling in and comments, "general" all changes. Programs that read
///   aloud can be kept out at the 128-bit RC4 level only; the later ones always let them in.
/// - Permissions bind whoever can't lift them. With an opening password and no owner password
///   nobody asked for limits, so everything is allowed; in every other case the job's hold.
/// - Without an owner password the file gets a random one: with none, anyone could lift the
///   protection, and the 256-bit levels would open without any password.
/// \return an error when the protection can't be had as asked: an opening password is asked for
///         and empty, or a password holds characters that the levels below 256 bits can't carry.
Result<Protection> DecideProtection(const Security& security);

}  // namespace converter
