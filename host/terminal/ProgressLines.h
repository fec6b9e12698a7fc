// Lines at the foot of a terminal on standard error that show how far the running files are, and all of them
// together. Silent where standard error is no terminal. Any threads.
//
// Decisions: drawn at most ten times a second; a line is never wider than the window, and there are never
// more lines than fit it: the one of all files stays. A window of less than 20 columns shows nothing.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

class ProgressLines {
public:
    // Of how many files, and their bytes all together, which the parts are weighed by; 0 bytes: not known.
    ProgressLines(size_t files, uint64_t bytes);
    ProgressLines(const ProgressLines&) = delete;
    ProgressLines& operator=(const ProgressLines&) = delete;
    ~ProgressLines();  // takes the lines away

    bool IsVisible() const { return m_visible; }
    // How far a file is, which `key` stands for. Of a length that isn't known, `total` is 0. `rate` 0: no
    // seconds are known.
    void Show(size_t key, const std::string& name, uint64_t bytes, int64_t done, int64_t total,
              uint32_t rate);
    // It is through, having given so many seconds of audio.
    void End(size_t key, uint64_t bytes, double seconds, bool failed);
    // Takes the lines away while `tell` writes others, and draws them again.
    template <class Tell>
    void Around(Tell&& tell) {
        const std::lock_guard held(m_lock);
        Erase();
        tell();
        Draw();
    }

private:
    using Clock = std::chrono::steady_clock;

    struct Running {
        std::string name;
        uint64_t bytes = 0;
        double part = -1;  // of all of it; negative where its length isn't known
        double seconds = 0;
        Clock::time_point begun;
    };

    void Erase();
    void Draw();
    std::string LineOf(const Running& file, size_t columns) const;
    std::string TotalLine(size_t columns) const;

    const size_t m_files;
    const uint64_t m_bytes;
    const bool m_visible;
    const Clock::time_point m_begun = Clock::now();
    std::mutex m_lock;  // of what follows
    Clock::time_point m_next = m_begun;
    std::map<size_t, Running> m_running;
    size_t m_drawn = 0;  // lines that are there
    size_t m_done = 0;
    size_t m_failed = 0;
    uint64_t m_doneBytes = 0;
    double m_doneSeconds = 0;
};
