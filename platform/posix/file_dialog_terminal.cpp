#include <cstdio>
#include <memory>

#include "platform/files.h"
#include "platform/posix/file_dialogs.h"
#include "platform/posix/module_table.h"
#include "platform/shell.h"

namespace platform {
namespace {

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};

/// Reads a line without its end; false at the end of input.
bool ReadLine(std::FILE* terminal, std::string& line) {
    line.clear();
    for (int unit = std::fgetc(terminal); unit != '\n'; unit = std::fgetc(terminal)) {
        if (unit == EOF) return false;
        line.push_back(static_cast<char>(unit));
    }
    return true;
}

bool Confirms(std::FILE* terminal, const std::string& path) {
    std::fprintf(terminal, "%s exists. Replace it? [y/N] ", path.c_str());
    std::fflush(terminal);
    std::string line;
    return ReadLine(terminal, line) && (line == "y" || line == "Y" || line == "yes");
}

/// Whether the answer can be used; says why not.
bool IsAcceptable(std::FILE* terminal, const OPENFILENAMEW& dialog, const WideString& typed) {
    WideString path;
    if (!CompleteSavePath(dialog, typed, path)) {
        std::fputs("That is no file name.\n", terminal);
        return false;
    }
    const WideString folder = path.substr(0, path.size() - BaseNameOf(path).size());
    if (!PathFileExistsW(folder.c_str())) {
        std::fprintf(terminal, "There is no folder %s.\n", ToUtf8(folder).c_str());
        return false;
    }
    const bool asks = (dialog.Flags & OFN_OVERWRITEPROMPT) && PathFileExistsW(path.c_str());
    return !asks || Confirms(terminal, ToUtf8(path));
}

}  // namespace

SaveAnswer TerminalAnswer(const OPENFILENAMEW& dialog) {
    const std::unique_ptr<std::FILE, CloseStream> terminal(std::fopen("/dev/tty", "r+e"));
    if (!terminal) return {};
    WideString suggestion;
    const bool hasSuggestion = CompleteSavePath(dialog, {}, suggestion);
    std::string line;
    for (;;) {
        std::fputs("Save as", terminal.get());
        if (hasSuggestion) std::fprintf(terminal.get(), " [%s]", ToUtf8(suggestion).c_str());
        std::fputs(": ", terminal.get());
        std::fflush(terminal.get());
        if (!ReadLine(terminal.get(), line)) return {SaveAnswer::Kind::Cancelled, {}};
        const WideString typed = FromUtf8(line);
        if (IsAcceptable(terminal.get(), dialog, typed)) return {SaveAnswer::Kind::Chosen, typed};
    }
}

}  // namespace platform
