#include "host/terminal/ProgressLines.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>

#include "host/terminal/Report.h"
#include "host/terminal/TerminalText.h"
#include "host/terminal/TextColumns.h"

namespace {

constexpr auto kInterval = std::chrono::milliseconds(100);
constexpr size_t kLeastColumns = 20;
constexpr size_t kBarColumns = 60;  // of a window that has room for a bar
constexpr size_t kCells = 20;
constexpr size_t kLeastName = 8;  // columns

struct Window {
    size_t columns = 80;
    size_t rows = 24;
};

Window WindowSize() {
    winsize size{};
    Window window;
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 && size.ws_row != 0)
        window = {size.ws_col, size.ws_row};
    return window;
}

double SecondsSince(std::chrono::steady_clock::time_point begun) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
}

// "1:05", as far as it is worth telling.
std::string Short(double seconds) {
    const auto whole = static_cast<int64_t>(std::ceil(std::min(seconds, 359999.0)));
    if (whole < 3600) return fmt::format("{}:{:02}", whole / 60, whole % 60);
    return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

// The figures of a line, the most telling first; a narrow window has the first of them alone.
std::string Figures(double part, double seconds, double elapsed, size_t most) {
    std::string text;
    const auto add = [&](const std::string& figure) {
        if (TextColumns::Count(text) + figure.size() + 1 <= most) text += (text.empty() ? "" : " ") + figure;
    };
    if (part >= 0) add(fmt::format("{:3.0f} %", part * 100));
    if (part < 0) add(Short(seconds));
    constexpr double kSettled = 0.5;  // seconds, after which a speed says something
    if (seconds > 0 && elapsed > kSettled) add(fmt::format("{:.0f}x", seconds / elapsed));
    if (part > 0.01 && elapsed > kSettled) add(Short(elapsed / part - elapsed) + " left");
    return text;
}

}  // namespace

ProgressLines::ProgressLines(size_t files, uint64_t bytes)
    : m_files(files),
      m_bytes(bytes),
      m_visible(isatty(STDERR_FILENO) != 0 && !Report::TellsFailuresAlone()) {}

ProgressLines::~ProgressLines() {
    const std::lock_guard held(m_lock);
    Erase();
}

void ProgressLines::Show(size_t key, const std::string& name, uint64_t bytes, int64_t done, int64_t total,
                         uint32_t rate) {
    if (!m_visible) return;
    const std::lock_guard held(m_lock);
    Running& file = m_running[key];
    if (file.name.empty()) file = {TerminalText::Printable(name), bytes, -1, 0, Clock::now()};
    if (total > 0) file.part = std::min(1.0, static_cast<double>(done) / static_cast<double>(total));
    if (rate != 0) file.seconds = static_cast<double>(done) / rate;
    const auto now = Clock::now();
    if (now < m_next) return;
    m_next = now + kInterval;
    Erase();
    Draw();
}

void ProgressLines::End(size_t key, uint64_t bytes, double seconds, bool failed) {
    const std::lock_guard held(m_lock);
    m_running.erase(key);
    ++m_done;
    m_failed += failed ? 1 : 0;
    m_doneBytes += bytes;
    m_doneSeconds += seconds;
}

void ProgressLines::Erase() {
    if (m_drawn == 0) return;
    // Up to the first of them, and away with all that follows.
    std::fputs(fmt::format("\r\x1b[{}A\x1b[J", m_drawn).c_str(), stderr);
    m_drawn = 0;
}

void ProgressLines::Draw() {
    if (!m_visible) return;
    const Window window = WindowSize();
    if (window.columns < kLeastColumns) return;
    // The last column stays empty: some terminals go on in the next line after it.
    const size_t columns = window.columns - 1;
    std::string text;
    const size_t room = std::max<size_t>(window.rows, 3) - 2;
    for (const auto& [key, file] : m_running) {
        if (m_drawn >= room) break;
        text += LineOf(file, columns) + '\n';
        ++m_drawn;
    }
    if (m_files > 1) {
        text += TotalLine(columns) + '\n';
        ++m_drawn;
    }
    std::fputs(text.c_str(), stderr);
}

std::string ProgressLines::LineOf(const Running& file, size_t columns) const {
    const double elapsed = SecondsSince(file.begun);
    const std::string figures = Figures(file.part, file.seconds, elapsed, columns - kLeastName - 1);
    std::string bar;
    if (columns >= kBarColumns && file.part >= 0) {
        const auto cells = static_cast<size_t>(file.part * kCells);
        bar = fmt::format("[{:-<{}}] ", std::string(cells, '#'), kCells);
    }
    const size_t left = columns - figures.size() - bar.size() - 1;
    const std::string name = TextColumns::Shortened(file.name, left);
    return name + std::string(left - TextColumns::Count(name) + 1, ' ') + bar + figures;
}

std::string ProgressLines::TotalLine(size_t columns) const {
    double bytes = static_cast<double>(m_doneBytes);
    double seconds = m_doneSeconds;
    for (const auto& [key, file] : m_running) {
        bytes += std::max(file.part, 0.0) * static_cast<double>(file.bytes);
        seconds += file.seconds;
    }
    const double part = m_bytes == 0 ? -1 : std::min(1.0, bytes / static_cast<double>(m_bytes));
    std::string name = columns < kBarColumns ? fmt::format("{}/{}", m_done, m_files)
                                             : fmt::format("{} of {} files", m_done, m_files);
    if (m_failed != 0) name += fmt::format(", {} failed", m_failed);
    const std::string figures = Figures(part, seconds, SecondsSince(m_begun), columns - kLeastName - 1);
    const size_t left = columns - figures.size() - 1;
    name = TextColumns::Shortened(name, left);
    return name + std::string(left - TextColumns::Count(name) + 1, ' ') + figures;
}
