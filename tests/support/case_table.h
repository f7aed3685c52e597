#pragma once

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "platform/text.h"

namespace test_support {

using CaseRow = std::vector<platform::WideString>;

/// Turns \n, \r, \t, \\ and \uXXXX into the characters that they stand for.
inline platform::WideString Unescape(const platform::WideString& text) {
    platform::WideString result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\\' || at + 1 == text.size()) {
            result += text[at];
        } else if (const WCHAR kind = text[++at]; kind == 'u') {
            const std::string digits = platform::ToUtf8(text.substr(at + 1, 4));
            result += static_cast<WCHAR>(std::strtoul(digits.c_str(), nullptr, 16));
            at += 4;
        } else {
            result += kind == 'n'   ? WCHAR{'\n'}
                      : kind == 'r' ? WCHAR{'\r'}
                      : kind == 't' ? WCHAR{'\t'}
                                    : kind;
        }
    }
    return result;
}

/// Reads a table of cases: UTF-8, one case a line, its fields parted by single tabs and unescaped.
/// Empty lines and lines that begin with '#' are left out. Each case has the given fields.
inline std::vector<CaseRow> ReadCases(const std::string& path, std::size_t fields) {
    std::vector<CaseRow> rows;
    std::ifstream in(path, std::ios::binary);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() || line[0] == '#') continue;
        CaseRow row(1);
        for (const WCHAR unit : platform::FromUtf8(line)) {
            if (unit == '\t') {
                row.emplace_back();
            } else {
                row.back() += unit;
            }
        }
        for (platform::WideString& field : row) field = Unescape(field);
        EXPECT_EQ(row.size(), fields) << line;
        row.resize(fields);
        rows.push_back(row);
    }
    EXPECT_FALSE(rows.empty()) << path;
    return rows;
}

}  // namespace test_support
