// The processor time and the memory that a piece of work takes in this process.
#pragma once

#include <malloc.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string>

class Measured {
public:
    // The peak begins at what is there now.
    Measured() {
        malloc_trim(0);
        std::ofstream("/proc/self/clear_refs") << "5";
        m_before = Peak();
        m_seconds = Used();
    }

    double Milliseconds() const { return (Used() - m_seconds) * 1000; }
    // Pages of programs and libraries that came in meanwhile don't count: they are everybody's.
    int64_t Bytes() const {
        const Pages now = Peak();
        return std::max<int64_t>((now.peak - m_before.peak) - (now.file - m_before.file), 0);
    }

private:
    struct Pages {
        int64_t peak = 0;
        int64_t file = 0;
    };

    static Pages Peak() {
        Pages pages;
        std::ifstream status("/proc/self/status");
        for (std::string word; status >> word;) {
            if (word == "VmHWM:") status >> pages.peak;
            if (word == "RssFile:") status >> pages.file;
        }
        return {pages.peak * 1024, pages.file * 1024};
    }
    static double Used() {
        rusage usage = {};
        getrusage(RUSAGE_SELF, &usage);
        const auto seconds = [](const timeval& time) {
            return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
        };
        return seconds(usage.ru_utime) + seconds(usage.ru_stime);
    }

    Pages m_before;
    double m_seconds = 0;
};
