#pragma once

namespace host {

/// What the program gives to a script; --help tells the same.
enum class ExitCode : int {
    Ok = 0,            // the converter was started; with --wait it also ended well
    CommandEnded = 1,  // cancelled, nothing selected, no converter, or the job could not be stored
    Usage = 2,         // wrong options
    NoPage = 3,        // the page cannot be loaded, or lacks what is to be selected
    NoAddin = 4,       // the add-in, or a module for it, cannot be loaded
    ConverterFailed = 5,  // the converter ended with an error or was killed (--wait)
    TimedOut = 6,         // the converter has not ended in time (--wait); it goes on
    Interrupted = 130     // by a signal
};

}  // namespace host
