// What came of all files of a conversion, for people at its end and for programs as JSON.
#pragma once

#include <string>
#include <vector>

struct FailedFile {
    std::string file;
    std::string error;   // a sentence
    std::string reason;  // a word
};

struct BatchSummary {
    size_t converted = 0;
    size_t skipped = 0;
    double seconds = 0;  // of audio that was made
    double elapsed = 0;  // seconds that it took
    bool dryRun = false;
    std::vector<FailedFile> failures;

    // How many seconds of audio came of one; 0 where none did.
    double RealTime() const { return elapsed > 0 && !dryRun ? seconds / elapsed : 0; }
    // "12 files converted, 3 up to date, 1 failed; 1:02.500 of audio in 0.4 s, 156 times real time".
    std::string Line() const;
    std::string Json() const;
};
