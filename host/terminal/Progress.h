// A bar on standard error that shows how far a file is; silent where standard error is no terminal.
#pragma once

#include <chrono>
#include <cstdint>

class Progress {
public:
    // `total` in frames; 0 where it isn't known, which shows frames without a bar.
    explicit Progress(int64_t total);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();  // takes the bar away

    // Draws at most ten times a second, so it may be called for each block.
    void Show(int64_t done /*frames*/);

private:
    int64_t m_total;
    bool m_visible;
    std::chrono::steady_clock::time_point m_next;
};
