#include "host/terminal/Progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace {

constexpr auto kInterval = std::chrono::milliseconds(100);
constexpr int64_t kCells = 40;
constexpr const char* kEraseLine = "\r\x1b[K";

}  // namespace

Progress::Progress(int64_t total)
    : m_total(total), m_visible(isatty(STDERR_FILENO) != 0), m_next(std::chrono::steady_clock::now()) {}

Progress::~Progress() {
    if (m_visible) std::fputs(kEraseLine, stderr);
}

void Progress::Show(int64_t done) {
    const auto now = std::chrono::steady_clock::now();
    if (!m_visible || now < m_next) return;
    m_next = now + kInterval;
    std::string line = fmt::format("{}{} frames", kEraseLine, done);
    if (m_total > 0) {
        const double part = std::min(1.0, static_cast<double>(done) / static_cast<double>(m_total));
        const auto cells = static_cast<size_t>(part * kCells);
        line = fmt::format("{}[{:-<{}}] {:3.0f} %", kEraseLine, std::string(cells, '#'), kCells, part * 100);
    }
    std::fputs(line.c_str(), stderr);
}
