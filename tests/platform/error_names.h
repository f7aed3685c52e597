#pragma once

/// The error codes that tables of cases name.

#include <gtest/gtest.h>
#include <string>

#include "platform/base.h"
#include "platform/text.h"

namespace platform {

inline DWORD ErrorNamed(const WideString& name) {
    static constexpr std::pair<const char*, DWORD> kNames[] = {
        {"", ERROR_SUCCESS},
        {"ACCESS_DENIED", ERROR_ACCESS_DENIED},
        {"ALREADY_EXISTS", ERROR_ALREADY_EXISTS},
        {"BAD_NETPATH", ERROR_BAD_NETPATH},
        {"BAD_PATHNAME", ERROR_BAD_PATHNAME},
        {"DIRECTORY", ERROR_DIRECTORY},
        {"DIR_NOT_EMPTY", ERROR_DIR_NOT_EMPTY},
        {"FILE_EXISTS", ERROR_FILE_EXISTS},
        {"FILE_NOT_FOUND", ERROR_FILE_NOT_FOUND},
        {"INVALID_NAME", ERROR_INVALID_NAME},
        {"INVALID_PARAMETER", ERROR_INVALID_PARAMETER},
        {"PATH_NOT_FOUND", ERROR_PATH_NOT_FOUND},
    };
    for (const auto& [known, error] : kNames) {
        if (ToUtf8(name) == known) return error;
    }
    ADD_FAILURE() << "no such error: " << ToUtf8(name);
    return ERROR_GEN_FAILURE;
}

}  // namespace platform
